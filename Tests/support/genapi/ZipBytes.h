#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Zip archives put together by hand, field by field, so that any field can lie.

namespace zip {

constexpr std::uint16_t kStored = 0;
constexpr std::uint16_t kDeflated = 8;

/// CRC-32 as the zip format defines it, bit by bit.
inline std::uint32_t Checksum(std::string_view bytes)
{
    std::uint32_t sum = 0xFFFFFFFF;
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xEDB88320u : 0u);
    }
    return ~sum;
}

/// Bits in the order of the deflate format: from the least significant bit of each byte.
class BitWriter {
public:
    void Add(std::uint32_t value, int count)
    {
        for (int i = 0; i < count; ++i) {
            if (m_used % 8 == 0)
                m_bytes.push_back('\0');
            m_bytes.back() = static_cast<char>(m_bytes.back() | (value >> i & 1) << (m_used % 8));
            ++m_used;
        }
    }

    /// Huffman codes begin with their most significant bit.
    void AddCode(std::uint32_t code, int count)
    {
        for (int i = count; i > 0; --i)
            Add(code >> (i - 1) & 1, 1);
    }

    [[nodiscard]] const std::string& Bytes() const { return m_bytes; }

private:
    std::string m_bytes;
    unsigned m_used = 0;
};

/// One zero and `repeats` times 258 more, deflated with the fixed codes: 13 bits for 258 bytes.
inline std::string DeflatedZeros(std::size_t repeats)
{
    BitWriter out;
    out.Add(1, 1);        // the last block
    out.Add(1, 2);        // fixed codes
    out.AddCode(0x30, 8); // literal 0
    for (std::size_t i = 0; i < repeats; ++i) {
        out.AddCode(0xC5, 8); // a match of 258 bytes
        out.AddCode(0, 5);    // one byte back
    }
    out.AddCode(0, 7); // end
    return out.Bytes();
}

/// A file of an archive. What is not set follows from the rest.
struct File {
    explicit File(std::string fileName, std::string content = {})
        : name(std::move(fileName)),
          packed(content),
          checksum(Checksum(content)),
          unpackedBytes(static_cast<std::uint32_t>(content.size()))
    {
    }

    std::string name;
    std::string packed;
    std::uint32_t checksum;
    std::uint32_t unpackedBytes;
    std::uint16_t method = kStored;
    std::uint16_t flags = 0;
};

inline void Append(std::string& bytes, std::uint64_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

inline std::string Archive(const std::vector<File>& files)
{
    std::string bytes;
    std::string directory;
    for (const File& file : files) {
        const std::size_t offset = bytes.size();
        std::string common; // of the file's header and its entry in the directory
        Append(common, 20, 2);
        Append(common, file.flags, 2);
        Append(common, file.method, 2);
        Append(common, 0, 4); // time
        Append(common, file.checksum, 4);
        Append(common, file.packed.size(), 4);
        Append(common, file.unpackedBytes, 4);
        Append(common, file.name.size(), 2);
        Append(common, 0, 2); // further fields
        bytes += "PK\x03\x04" + common + file.name + file.packed;
        directory += "PK\x01\x02";
        Append(directory, 20, 2);
        directory += common;
        Append(directory, 0, 2); // comment
        Append(directory, 0, 8); // volume, attributes
        Append(directory, offset, 4);
        directory += file.name;
    }
    const std::size_t start = bytes.size();
    bytes += directory + "PK\x05\x06";
    Append(bytes, 0, 4); // volumes
    Append(bytes, files.size(), 2);
    Append(bytes, files.size(), 2);
    Append(bytes, directory.size(), 4);
    Append(bytes, start, 4);
    Append(bytes, 0, 2); // comment
    return bytes;
}

} // namespace zip
