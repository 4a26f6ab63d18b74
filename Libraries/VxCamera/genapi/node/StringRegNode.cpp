#include "VxCamera/genapi/node/StringRegNode.h"

#include <algorithm>

#include "VxCamera/genapi/xml/Utf8.h"

namespace genapi {

VxExpected<std::string> StringRegNode::DoGetString()
{
    const auto bytes = Load();
    if (!bytes)
        return bytes.Error();
    std::string text;
    for (const std::byte byte : *bytes) {
        if (byte == std::byte{0})
            break;
        text.push_back(static_cast<char>(byte));
    }
    return Utf8FromCamera(text);
}

VxResult StringRegNode::DoSetString(std::string_view value)
{
    const auto length = Length();
    if (!length)
        return length.Error();
    if (value.size() > *length)
        return Error(VxError::OutOfRange, "the text has " + std::to_string(value.size()) +
                                              " bytes; there is room for " + std::to_string(*length));
    if (value.find('\0') != std::string_view::npos)
        return Error(VxError::InvalidData, "the text contains a zero character");
    std::vector<std::byte> bytes(*length);
    std::transform(value.begin(), value.end(), bytes.begin(),
                   [](char c) { return static_cast<std::byte>(c); });
    return Store(bytes);
}

} // namespace genapi
