#pragma once

#include "VxBase/VxResult.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

namespace vxgrab {

/// A file that is being written.
///
/// Owner:  the writer of a picture or a film, by value.
/// Thread: one at a time.
class OutputFile final {
public:
    OutputFile() = default;
    ~OutputFile() { Close(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Creates the file, or empties the one that is there.
    /// @return  FAILED with the file's name and the system's reason
    [[nodiscard]] VxResult Create(const std::filesystem::path& file);

    /// Writes at the end of what was written before.
    [[nodiscard]] VxResult Append(std::span<const std::byte> bytes);

    /// Writes over what is already there; the end stays where it is.
    [[nodiscard]] VxResult Overwrite(std::uint64_t offset, std::span<const std::byte> bytes);

    [[nodiscard]] bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    [[nodiscard]] std::uint64_t Bytes() const { return m_bytes; }
    void Close();

private:
    [[nodiscard]] VxResult Write(std::uint64_t offset, std::span<const std::byte> bytes);

    HANDLE m_handle = INVALID_HANDLE_VALUE;
    std::filesystem::path m_file;
    std::uint64_t m_bytes = 0;
};

} // namespace vxgrab
