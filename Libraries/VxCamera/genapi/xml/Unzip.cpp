#include "VxCamera/genapi/xml/Unzip.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include <zlib.h>

#include "VxBase/VxByteReader.h"

namespace genapi {

namespace {

// Chosen: forty times the largest description known. It bounds what an archive of a few bytes can cost.
constexpr std::size_t kMaxUnpackedBytes = 64 * 1024 * 1024;

// Fixed by the zip format: the first bytes of a file's header, of its entry in the directory, and of the
// directory's end.
constexpr std::string_view kFileMark = "PK\x03\x04";
constexpr std::string_view kEntryMark = "PK\x01\x02";
constexpr std::string_view kEndMark = "PK\x05\x06";

// Fixed by the zip format.
constexpr std::uint16_t kEncryptedFlag = 1;
constexpr std::uint16_t kStored = 0;
constexpr std::uint16_t kDeflated = 8;

/// A file as the directory describes it.
struct Entry {
    std::string_view name;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t checksum = 0;
    std::uint32_t packedBytes = 0;
    std::uint32_t unpackedBytes = 0;
    std::uint32_t headerOffset = 0;
};

VxResult Damaged(const std::string& what)
{
    return VxResult(VxError::InvalidData,
                    "the zip archive with the camera's description is damaged: " + what);
}

VxResult NoMemory()
{
    return VxResult(VxError::OutOfMemory, "there is no memory for unzipping the camera's description");
}

std::span<const std::byte> BytesOf(std::string_view text)
{
    return std::as_bytes(std::span(text.data(), text.size()));
}

std::string_view TextOf(std::span<const std::byte> bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

VxByteReader ReaderAt(std::string_view archive, std::size_t offset)
{
    return VxByteReader(BytesOf(archive.substr(std::min(offset, archive.size()))));
}

bool TakeMark(VxByteReader& in, std::string_view mark)
{
    return TextOf(in.Bytes(mark.size())) == mark;
}

/// Where the directory is.
struct Directory {
    std::string_view bytes; ///< of its entries
    std::size_t base = 0;   ///< of the archive: what offsets count from
};

/// The directory, found by the record that ends the archive. It ends where that record begins, so that
/// whatever a camera has put before the archive can be told; only an archive that begins at the first byte
/// can have more between the two:
///
///   offset  bytes  field         (little endian)
///        0      4  mark
///       12      4  bytes of the directory
///       16      4  offset of the directory
///       22         comment, and whatever the camera has left behind the archive
std::optional<Directory> FindDirectory(std::string_view archive)
{
    constexpr std::size_t kBetweenMarkAndSize = 8;
    constexpr std::size_t kCommentLengthBytes = 2;
    std::size_t end = archive.rfind(kEndMark);
    for (; end != std::string_view::npos; end = end == 0 ? end - 1 : archive.rfind(kEndMark, end - 1)) {
        VxByteReader in = ReaderAt(archive, end + kEndMark.size());
        in.Skip(kBetweenMarkAndSize);
        const std::uint64_t size = in.U32le();
        const std::uint64_t offset = in.U32le();
        in.Skip(kCommentLengthBytes);
        // What only looks like the mark stands in a comment or in remains.
        if (!in.Ok() || size + offset > end)
            continue;
        const bool isAtItsOffset = archive.substr(offset).starts_with(kEntryMark);
        const std::size_t base = isAtItsOffset ? 0 : end - static_cast<std::size_t>(size + offset);
        return Directory{archive.substr(base + offset, size), base};
    }
    return std::nullopt;
}

/// Reads the next entry of the directory:
///
///   offset  bytes  field         (little endian)
///        0      4  mark
///        8      2  flags
///       10      2  method of packing
///       16      4  check sum (CRC-32) of the unpacked file
///       20      4  bytes of the packed file
///       24      4  bytes of the unpacked file
///       28      2  bytes of the name
///       30      2  bytes of further fields
///       32      2  bytes of the comment
///       42      4  offset of the file's header
///       46         name, further fields, comment
std::optional<Entry> ReadEntry(VxByteReader& in)
{
    if (!TakeMark(in, kEntryMark))
        return std::nullopt;
    Entry entry;
    in.Skip(4); // versions
    entry.flags = in.U16le();
    entry.method = in.U16le();
    in.Skip(4); // time
    entry.checksum = in.U32le();
    entry.packedBytes = in.U32le();
    entry.unpackedBytes = in.U32le();
    const std::size_t nameBytes = in.U16le();
    const std::size_t furtherBytes = in.U16le();
    const std::size_t commentBytes = in.U16le();
    in.Skip(8); // volume, attributes
    entry.headerOffset = in.U32le();
    entry.name = TextOf(in.Bytes(nameBytes));
    in.Skip(furtherBytes + commentBytes);
    return in.Ok() ? std::optional(entry) : std::nullopt;
}

bool IsXml(std::string_view name)
{
    constexpr std::string_view kSuffix = ".xml";
    const auto isSame = [](char c, char lower) {
        return (c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) == lower;
    };
    return name.size() >= kSuffix.size() &&
           std::ranges::equal(name.substr(name.size() - kSuffix.size()), kSuffix, isSame);
}

VxExpected<Entry> ChooseEntry(std::string_view directory)
{
    std::optional<Entry> first;
    VxByteReader in(BytesOf(directory));
    while (!in.Rest().empty()) {
        const auto entry = ReadEntry(in);
        if (!entry)
            return Damaged("its directory");
        if (IsXml(entry->name))
            return *entry;
        const bool isFolder = entry->name.ends_with('/');
        if (!first && !isFolder)
            first = entry;
    }
    if (!first)
        return VxResult(VxError::InvalidData,
                        "the zip archive with the camera's description contains no file");
    return *first;
}

/// The packed bytes of a file, behind its header:
///
///   offset  bytes  field         (little endian)
///        0      4  mark
///       26      2  bytes of the name
///       28      2  bytes of further fields
///       30         name, further fields, packed file
/// @param base  what the entry's offset counts from
std::optional<std::string_view> FindPacked(std::string_view archive, std::size_t base, const Entry& entry)
{
    constexpr std::size_t kBetweenMarkAndLengths = 22;
    VxByteReader in = ReaderAt(archive, base + entry.headerOffset);
    if (!TakeMark(in, kFileMark))
        return std::nullopt;
    in.Skip(kBetweenMarkAndLengths);
    const std::size_t nameBytes = in.U16le();
    const std::size_t furtherBytes = in.U16le();
    in.Skip(nameBytes + furtherBytes);
    const auto packed = in.Bytes(entry.packedBytes);
    return in.Ok() ? std::optional(TextOf(packed)) : std::nullopt;
}

/// zlib's state for one file.
///
/// Owner:  Inflate, for one call.
/// Thread: one.
class Inflater final {
public:
    Inflater()
    {
        constexpr int kRawDeflate = -MAX_WBITS; // no header of zlib's own around the data
        m_isReady = inflateInit2(&m_stream, kRawDeflate) == Z_OK;
    }
    ~Inflater()
    {
        if (m_isReady)
            inflateEnd(&m_stream);
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    [[nodiscard]] bool IsReady() const { return m_isReady; }
    [[nodiscard]] z_stream& Stream() { return m_stream; }

private:
    z_stream m_stream{};
    bool m_isReady = false;
};

/// @param size  what the directory says that comes out; below kMaxUnpackedBytes
VxExpected<std::string> Inflate(std::string_view packed, std::size_t size)
{
    // Chosen: a lying size costs little until the data are really there.
    constexpr std::size_t kFirstBytes = 1024 * 1024;
    Inflater inflater;
    if (!inflater.IsReady())
        return NoMemory();
    z_stream& stream = inflater.Stream();
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data())); // zlib only reads there
    stream.avail_in = static_cast<uInt>(packed.size()); // the directory's field has 32 bits
    std::string unpacked;
    int state = Z_OK;
    while (state == Z_OK && unpacked.size() <= size) {
        const std::size_t used = unpacked.size();
        // One byte more than wanted shows that there is more.
        unpacked.resize(std::min(size + 1, std::max(2 * used, kFirstBytes)));
        stream.next_out = reinterpret_cast<Bytef*>(unpacked.data() + used);
        stream.avail_out = static_cast<uInt>(unpacked.size() - used); // below kMaxUnpackedBytes
        state = inflate(&stream, Z_NO_FLUSH);
        unpacked.resize(unpacked.size() - stream.avail_out);
    }
    if (state == Z_MEM_ERROR)
        return NoMemory();
    if (unpacked.size() > size)
        return Damaged("its file is longer than it says");
    if (state != Z_STREAM_END)
        return Damaged("its packed file");
    return unpacked;
}

VxExpected<std::string> Unpack(std::string_view packed, const Entry& entry)
{
    if (entry.method == kDeflated)
        return Inflate(packed, entry.unpackedBytes);
    return std::string(packed);
}

} // namespace

bool IsZipArchive(std::string_view bytes)
{
    if (bytes.starts_with(kFileMark))
        return true;
    // A text in any encoding begins with a "<" behind blanks, zeros and byte order marks; an archive that is
    // left behind one is not meant.
    constexpr std::string_view kBeforeText("\0 \t\r\n\xEF\xBB\xBF\xFF\xFE", 10);
    const std::size_t first = bytes.find_first_not_of(kBeforeText);
    if (first == std::string_view::npos || bytes[first] == '<')
        return false;
    const auto directory = FindDirectory(bytes);
    return directory && directory->bytes.starts_with(kEntryMark);
}

VxExpected<std::string> Unzip(std::string_view archive)
{
    const auto directory = FindDirectory(archive);
    if (!directory)
        return Damaged("its end is missing");
    const auto entry = ChooseEntry(directory->bytes);
    if (!entry)
        return entry.Error();
    if ((entry->flags & kEncryptedFlag) != 0)
        return VxResult(VxError::NotSupported,
                        "the camera's description is encrypted inside of its zip archive");
    if (entry->method != kStored && entry->method != kDeflated)
        return VxResult(VxError::NotSupported, "the camera's description is packed with method " +
                                                   std::to_string(entry->method) +
                                                   " of the zip format, which this library does not unpack");
    if (entry->unpackedBytes > kMaxUnpackedBytes)
        return VxResult(VxError::InvalidData, "the camera's description has " +
                                                  std::to_string(entry->unpackedBytes) +
                                                  " bytes when it is unpacked; at most " +
                                                  std::to_string(kMaxUnpackedBytes) + " are accepted");
    const auto packed = FindPacked(archive, directory->base, *entry);
    if (!packed)
        return Damaged("its file is not where the directory says");
    auto unpacked = Unpack(*packed, *entry);
    if (!unpacked)
        return unpacked;
    if (unpacked->size() != entry->unpackedBytes)
        return Damaged("its file does not have the length that it should");
    const uLong checksum =
        crc32(0, reinterpret_cast<const Bytef*>(unpacked->data()), static_cast<uInt>(unpacked->size()));
    if (checksum != entry->checksum)
        return Damaged("its file does not have the check sum that it should");
    return unpacked;
}

} // namespace genapi
