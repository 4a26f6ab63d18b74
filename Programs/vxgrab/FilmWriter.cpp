#include "vxgrab/FilmWriter.h"

#include "vxgrab/PictureFiles.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vxgrab {
namespace {

// Chosen: 30 frames a second, for a film of one frame, which has no rate.
constexpr std::chrono::microseconds kNominalInterval{33333};
// Fixed by the file format: the interval has 32 bits and must not be 0.
constexpr std::int64_t kLongestIntervalUs = 0xFFFFFFFF;

bool IsSameShape(const FrameFormat& a, const FrameFormat& b)
{
    return ::IsEqualGUID(a.subtype, b.subtype) && a.widthPx == b.widthPx && a.heightPx == b.heightPx;
}

} // namespace

FilmExtent FilmWriter::Extent() const
{
    auto interval = kNominalInterval;
    if (m_frames > 1)
        interval = std::chrono::duration_cast<std::chrono::microseconds>(m_lastArrival - m_firstArrival) /
                   (m_frames - 1);
    return {m_frames,
            static_cast<std::uint32_t>(std::clamp<std::int64_t>(interval.count(), 1, kLongestIntervalUs))};
}

bool FilmWriter::IsRoomFor(const FrameFormat& format) const
{
    const std::uint64_t frame = kAviChunkHeadBytes + FilmFrameBytes(format);
    const std::uint64_t index = kAviChunkHeadBytes + (m_frames + std::uint64_t{1}) * kAviIndexEntryBytes;
    return m_output.Bytes() + frame + index <= m_largestBytes;
}

VxResult FilmWriter::Start(const FrameFormat& format, FrameTally::TimePoint arrival)
{
    const std::filesystem::path file = m_files.empty() ? m_file : NumberedFile(m_file, m_files.size() + 1);
    VxResult result = m_output.Create(file);
    if (!result.IsOK())
        return result;
    m_format = format;
    m_frames = 0;
    m_firstArrival = arrival;
    m_files.push_back(file);
    return m_output.Append(AviHeader(format, {})); // its place; what it says comes at the end
}

VxResult FilmWriter::Add(const FrameFormat& format, std::span<const std::byte> frame,
                         FrameTally::TimePoint arrival)
{
    if (m_hasFailed || RowBytes(format, frame.size()) == 0)
        return VxResult::Ok(); // told before, or a frame cut short, which no film can hold
    VxResult result = VxResult::Ok();
    if (m_output.IsOpen() && (!IsSameShape(format, m_format) || !IsRoomFor(format)))
        result = Finish();
    if (result.IsOK() && !m_output.IsOpen())
        result = Start(format, arrival);
    if (result.IsOK()) {
        AviFrameChunk(format, frame, m_chunk);
        result = m_output.Append(m_chunk);
    }
    m_hasFailed = !result.IsOK();
    if (result.IsOK()) {
        ++m_frames;
        m_lastArrival = arrival;
    }
    return result;
}

VxResult FilmWriter::Finish()
{
    if (!m_output.IsOpen())
        return VxResult::Ok();
    VxResult result = m_output.Append(AviIndex(m_format, m_frames));
    if (result.IsOK())
        result = m_output.Overwrite(0, AviHeader(m_format, Extent()));
    m_output.Close();
    return result;
}

} // namespace vxgrab
