#include "vxgrab/Summary.h"

#include "VxBase/VxString.h"

#include <array>
#include <cstdio>

namespace vxgrab {
namespace {

// Chosen: the first files tell where they are and how they are named; hundreds of lines would hide the rest.
constexpr std::size_t kFilesNamed = 4;

std::string Line(const char* name, const std::string& value)
{
    return std::string(name) + ": " + value + "\n";
}

std::string TwoDecimals(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f", value);
    return text.data();
}

std::string FileList(const std::vector<std::filesystem::path>& files)
{
    if (files.empty())
        return "none";
    std::string text;
    for (std::size_t i = 0; i < files.size() && i < kFilesNamed; ++i)
        text += (i == 0 ? "" : ", ") + VxUtf8FromWide(files[i].wstring());
    if (files.size() > kFilesNamed)
        text += " and " + std::to_string(files.size() - kFilesNamed) + " more";
    return text;
}

} // namespace

std::string SummaryText(const GrabReport& report)
{
    const RecordingState& recording = report.recording;
    std::string text = "--- summary ---\n";
    text += Line("camera", report.camera);
    text += Line("format", SubtypeName(report.format.subtype) + " " + std::to_string(report.format.widthPx) +
                               " x " + std::to_string(report.format.heightPx));
    text += Line("frames delivered", std::to_string(recording.tally.Delivered()));
    text += Line("frames per second", TwoDecimals(recording.tally.FramesPerSecond()));
    text +=
        Line("frames dropped", report.framesDropped ? std::to_string(*report.framesDropped) : "not counted");
    text += Line("zero frames", std::to_string(recording.tally.ZeroFrames()));
    if (recording.skippedPictures > 0)
        text += Line("pictures not written",
                     std::to_string(recording.skippedPictures) + " (the disk was too slow)");
    text += Line("files written", FileList(report.files));
    return text;
}

} // namespace vxgrab
