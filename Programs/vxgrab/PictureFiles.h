#pragma once

#include "vxgrab/PictureQueue.h"

#include "VxBase/VxResult.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace vxgrab {

/// @return  "dir/shot-000012.png" for "dir/shot.png" and 12
[[nodiscard]] std::filesystem::path NumberedFile(const std::filesystem::path& file, std::uint64_t number);

/// Writes pictures to files and remembers which.
///
/// Owner:  the session.
/// Thread: main thread.
class PictureFiles final {
public:
    enum class Naming {
        Single,   ///< one picture, under the name as given
        Numbered, ///< the picture's number is put before the suffix
    };

    PictureFiles(std::filesystem::path file, Naming naming) : m_file(std::move(file)), m_naming(naming) {}

    [[nodiscard]] VxResult Write(const QueuedPicture& picture);

    [[nodiscard]] const std::vector<std::filesystem::path>& Written() const { return m_written; }

private:
    const std::filesystem::path m_file;
    const Naming m_naming;
    std::vector<std::filesystem::path> m_written;
};

} // namespace vxgrab
