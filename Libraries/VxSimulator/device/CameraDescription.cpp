#include "VxSimulator/device/CameraDescription.h"

#include "VxCamera/wire/gvcp/Command.h"

namespace simulator {

namespace {

constexpr std::string_view kSectionBegin = "<!--[source]-->";
constexpr std::string_view kSectionEnd = "<!--[/source]-->";

} // namespace

std::string CameraDescription(SourceFeatures sources, std::size_t leastBytes)
{
    std::string text(WholeCameraDescription());
    for (auto begin = text.find(kSectionBegin); begin != std::string::npos;
         begin = text.find(kSectionBegin)) {
        const auto end = text.find(kSectionEnd, begin);
        if (sources == SourceFeatures::Absent) {
            text.erase(begin, end + kSectionEnd.size() - begin);
        } else {
            text.erase(end, kSectionEnd.size());
            text.erase(begin, kSectionBegin.size());
        }
    }
    constexpr std::string_view kCommentBegin = "<!--";
    constexpr std::string_view kCommentEnd = "-->\n";
    if (const std::size_t marks = kCommentBegin.size() + kCommentEnd.size();
        text.size() + marks < leastBytes) {
        text += kCommentBegin;
        text.resize(leastBytes - kCommentEnd.size(), '.');
        text += kCommentEnd;
    }
    // Applications read whole words, and not all of them cut off what they did not ask for.
    text.resize((text.size() + gvcp::kAlignment - 1) / gvcp::kAlignment * gvcp::kAlignment, '\n');
    return text;
}

} // namespace simulator
