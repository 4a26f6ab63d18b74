#include "vxgrab/OutputFile.h"

#include "VxBase/VxString.h"

#include "vxgrab/ComFailure.h"

#include <algorithm>
#include <string>
#include <utility>

namespace vxgrab {
namespace {

// Chosen: one call of the system takes at most 4 GB.
constexpr std::size_t kLargestWrite = std::size_t{1} << 30;

VxResult Failure(const std::filesystem::path& file, DWORD error)
{
    return ComFailure("write '" + VxUtf8FromWide(file.wstring()) + "'", HRESULT_FROM_WIN32(error));
}

} // namespace

VxResult OutputFile::Create(const std::filesystem::path& file)
{
    Close();
    m_file = file;
    m_bytes = 0;
    m_handle = ::CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    return IsOpen() ? VxResult::Ok() : Failure(file, ::GetLastError());
}

VxResult OutputFile::Append(std::span<const std::byte> bytes)
{
    VxResult result = Write(m_bytes, bytes);
    if (result.IsOK())
        m_bytes += bytes.size();
    return result;
}

VxResult OutputFile::Overwrite(std::uint64_t offset, std::span<const std::byte> bytes)
{
    return Write(offset, bytes);
}

VxResult OutputFile::Write(std::uint64_t offset, std::span<const std::byte> bytes)
{
    LARGE_INTEGER place{};
    place.QuadPart = static_cast<LONGLONG>(offset); // no disk is larger
    if (!::SetFilePointerEx(m_handle, place, nullptr, FILE_BEGIN))
        return Failure(m_file, ::GetLastError());
    while (!bytes.empty()) {
        const auto part = bytes.first(std::min(bytes.size(), kLargestWrite));
        DWORD written = 0;
        if (!::WriteFile(m_handle, part.data(), static_cast<DWORD>(part.size()), &written, nullptr))
            return Failure(m_file, ::GetLastError());
        if (written == 0)
            return Failure(m_file, ERROR_DISK_FULL);
        bytes = bytes.subspan(written);
    }
    return VxResult::Ok();
}

void OutputFile::Close()
{
    if (const HANDLE handle = std::exchange(m_handle, INVALID_HANDLE_VALUE); handle != INVALID_HANDLE_VALUE)
        ::CloseHandle(handle);
}

} // namespace vxgrab
