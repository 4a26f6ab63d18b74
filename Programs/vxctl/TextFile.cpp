#include "vxctl/TextFile.h"

#include "console/Console.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>

namespace vxctl {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Chosen: many times the largest configuration or description there is.
constexpr std::size_t kMaxBytes = 64 * 1024 * 1024;

std::filesystem::path PathFrom(const std::string& utf8)
{
    return {std::u8string(utf8.begin(), utf8.end())};
}

VxResult Failed(const char* attempt, const std::string& file, const std::string& reason)
{
    return VxResult(VxError::Failed, "cannot " + std::string(attempt) + " '" + file + "': " + reason);
}

std::string LastError()
{
    return errno == 0 ? "the system does not say why" : std::generic_category().message(errno);
}

VxExpected<std::string> ReadAll(std::istream& in, const std::string& file)
{
    std::string text;
    char part[4096];
    while (in.read(part, sizeof(part)) || in.gcount() > 0) {
        text.append(part, static_cast<std::size_t>(in.gcount()));
        if (text.size() > kMaxBytes)
            return Failed("read", file, "it is larger than " + std::to_string(kMaxBytes) + " bytes");
    }
    if (in.bad())
        return Failed("read", file, LastError());
    if (text.starts_with(kByteOrderMark))
        text.erase(0, kByteOrderMark.size());
    return text;
}

VxResult WriteInto(const std::filesystem::path& path, const std::string& file, std::string_view text)
{
    errno = 0;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.close();
    return out ? VxResult::Ok() : Failed("write", file, LastError());
}

} // namespace

VxExpected<std::string> ReadTextFile(const std::string& file)
{
    if (file == kStandardStream)
        return ReadAll(std::cin, "standard input");
    const std::filesystem::path path = PathFrom(file);
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        return Failed("read", file, "it is a folder");
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return Failed("read", file, LastError());
    return ReadAll(in, file);
}

VxResult WriteTextFile(const std::string& file, std::string_view text)
{
    if (file == kStandardStream) {
        console::PrintOutput(text);
        return VxResult::Ok();
    }
    const std::filesystem::path path = PathFrom(file);
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        return Failed("write", file, "it is a folder");
    // A device, a pipe or a link stays what it is: it is written into and not replaced.
    const auto present = std::filesystem::symlink_status(path, error);
    if (std::filesystem::exists(present) && !std::filesystem::is_regular_file(present))
        return WriteInto(path, file, text);
    std::filesystem::path part = path;
    part += ".part";
    if (VxResult written = WriteInto(part, file, text); !written.IsOK()) {
        std::filesystem::remove(part, error);
        return written;
    }
    std::filesystem::rename(part, path, error);
    if (!error)
        return VxResult::Ok();
    std::error_code ignored;
    std::filesystem::remove(part, ignored);
    return Failed("write", file, error.message());
}

} // namespace vxctl
