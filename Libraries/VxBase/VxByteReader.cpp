#include "VxBase/VxByteReader.h"

std::string VxByteReader::Text(std::size_t size)
{
    std::string text;
    for (const std::byte byte : Bytes(size)) {
        if (byte == std::byte{0})
            break;
        text.push_back(static_cast<char>(byte));
    }
    return text;
}
