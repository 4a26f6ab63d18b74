#pragma once

#include "vxgrab/AviLayout.h"
#include "vxgrab/FrameTally.h"
#include "vxgrab/OutputFile.h"

#include "VxBase/VxResult.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace vxgrab {

/// Writes frames to AVI files that play at the rate at which the frames came.
///
/// A file that gets too large, or a picture that changes its size, ends the file; the next one has a number
/// before its suffix.
///
/// Owner:  the session.
/// Thread: one at a time: the streaming thread while the graph runs, the main thread after it has stopped.
class FilmWriter final {
public:
    /// Chosen: players and file systems that count in 31 bits can take the file.
    static constexpr std::uint64_t kLargestFileBytes = 2'000'000'000;

    /// @param file          name of the first file
    /// @param largestBytes  no file gets larger than this, if at least one frame fits
    explicit FilmWriter(std::filesystem::path file, std::uint64_t largestBytes = kLargestFileBytes)
        : m_file(std::move(file)), m_largestBytes(largestBytes)
    {
    }

    /// Adds a frame.
    /// @return  what went wrong; afterwards nothing more is added
    [[nodiscard]] VxResult Add(const FrameFormat& format, std::span<const std::byte> frame,
                               FrameTally::TimePoint arrival);

    /// Ends the file: without this it cannot be played.
    [[nodiscard]] VxResult Finish();

    /// @return  the files that hold at least one frame
    [[nodiscard]] const std::vector<std::filesystem::path>& Files() const { return m_files; }

private:
    [[nodiscard]] VxResult Start(const FrameFormat& format, FrameTally::TimePoint arrival);
    [[nodiscard]] bool IsRoomFor(const FrameFormat& format) const;
    [[nodiscard]] FilmExtent Extent() const;

    const std::filesystem::path m_file;
    const std::uint64_t m_largestBytes;
    OutputFile m_output;
    FrameFormat m_format;
    std::uint32_t m_frames = 0; // in the present file
    FrameTally::TimePoint m_firstArrival{};
    FrameTally::TimePoint m_lastArrival{};
    std::vector<std::byte> m_chunk; // used again for every frame
    std::vector<std::filesystem::path> m_files;
    bool m_hasFailed = false;
};

} // namespace vxgrab
