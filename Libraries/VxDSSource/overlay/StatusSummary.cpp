#include "VxDSSource/overlay/StatusSummary.h"

#include "VxDSSource/camera/VxGenInteger.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/filter/SettingsTable.h"
#include "VxDSSource/overlay/OverlayText.h"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <sstream>
#include <tuple>

namespace vxds {

namespace {

constexpr wchar_t kLineEnd[] = L"\r\n";
constexpr wchar_t kNotAvailable[] = L"N/A";
constexpr double kBitsPerMegabit = 1e6;
constexpr double kWholePercent = 100.0;
constexpr std::int64_t kNoCount = -1;

/// The stream's counters, at what is shown when one cannot be read.
struct StreamStatistics {
    double rateHz = 0.0;
    double bandwidthBitsPerSecond = 0.0;
    std::int64_t blocksDropped = kNoCount;
    std::int64_t pipelineBlocksDropped = 0;
    std::int64_t errorCount = 0;
    VxString lastError = kNotAvailable;
};

StreamStatistics ReadStatistics(const VxGenParameterArray* features)
{
    StreamStatistics statistics;
    if (features == nullptr)
        return statistics;
    // A value that cannot be read stays as it is.
    std::ignore = features->GetFloatValue("AcquisitionRate", statistics.rateHz);
    std::ignore = features->GetFloatValue("Bandwidth", statistics.bandwidthBitsPerSecond);
    const VxGenInteger* const blocksDropped = features->GetInteger("BlocksDropped");
    if (blocksDropped != nullptr && blocksDropped->IsReadable())
        std::ignore = blocksDropped->GetValue(statistics.blocksDropped);
    std::ignore = features->GetIntegerValue("PipelineBlocksDropped", statistics.pipelineBlocksDropped);
    std::ignore = features->GetIntegerValue("ErrorCount", statistics.errorCount);
    std::ignore = features->GetEnumValue("LastError", statistics.lastError);
    return statistics;
}

/// The result of an attempt, if one was made.
void AddLastResult(std::wostream& text, const wchar_t* attempt, const VxResult& result)
{
    if (result.GetCode() != VxResult().GetCode())
        text << L", last " << attempt << L" " << result.GetCodeString().GetUnicode();
}

void AddRole(std::wostream& text, const SummaryValues& pin)
{
    text << L"Role: ";
    switch (pin.role) {
    case kRoleController:
        text << L"controller and data receiver";
        break;
    case kRoleUnicast:
        text << L"unicast receiver, port " << pin.unicastPort;
        break;
    case kRoleMulticast:
        text << L"multicast receiver, " << pin.multicastAddress << L":" << pin.multicastPort;
        break;
    default:
        text << L"Unexpected role";
    }
    text << kLineEnd;
}

void AddController(std::wostream& text, const LinkStatus& link)
{
    text << L"Device controller: ";
    if (link.device == LinkEnd::Absent) {
        text << L"not allocated";
        AddLastResult(text, L"connect", link.lastConnectResult);
    } else {
        text << (link.device == LinkEnd::Open ? L"connected" : L"not connected");
    }
    text << kLineEnd;
}

void AddReceiver(std::wostream& text, const LinkStatus& link)
{
    text << L"Stream receiver: ";
    if (link.stream == LinkEnd::Absent) {
        text << L"not allocated";
        AddLastResult(text, L"open", link.lastOpenResult);
    } else if (link.stream == LinkEnd::Open) {
        text << L"opened";
    } else {
        text << L"not opened, result " << link.lastOpenResult.GetCodeString().GetUnicode(); // of any code
    }
    text << kLineEnd;
}

void AddSizes(std::wostream& text, const SummaryValues& pin)
{
    text << L"Render size: " << pin.renderWidthPx << L" x " << pin.renderHeightPx << kLineEnd
         << L"Last image size: ";
    if (pin.lastImageWidthPx != 0 && pin.lastImageHeightPx != 0)
        text << pin.lastImageWidthPx << L" x " << pin.lastImageHeightPx;
    else
        text << kNotAvailable;
    text << kLineEnd;
}

void AddStatistics(std::wostream& text, const SummaryValues& pin)
{
    const StreamStatistics statistics = ReadStatistics(pin.statistics);
    text << L"Acquisition rate: " << statistics.rateHz << L" FPS" << kLineEnd << L"Bandwidth: "
         << statistics.bandwidthBitsPerSecond / kBitsPerMegabit << L" Mb/s" << kLineEnd
         << L"Blocks dropped by device: ";
    if (statistics.blocksDropped < 0)
        text << kNotAvailable;
    else
        text << statistics.blocksDropped;
    text << kLineEnd << L"Blocks dropped by acquisition pipeline: " << statistics.pipelineBlocksDropped
         << kLineEnd << L"Blocks dropped by filter: " << pin.blocksDroppedByFilter << kLineEnd
         << L"Error count: " << statistics.errorCount << kLineEnd << L"Last error: "
         << statistics.lastError.GetUnicode() << kLineEnd;
}

/// Share of the pixels that stand out, in percent.
double VariationScore(const SummaryValues& pin)
{
    // Fixed: the product is one of signed 32-bit numbers.
    const auto pixels = static_cast<std::int32_t>(pin.sourceWidthPx * pin.sourceHeightPx);
    return std::min(pin.pixelVariationCount * kWholePercent / static_cast<double>(pixels), kWholePercent);
}

} // namespace

std::wstring StatusSummary(const SummaryValues& pin)
{
    std::wostringstream text;
    text.imbue(std::locale::classic());
    text << L"Device: " << (pin.deviceId.empty() ? kNotAvailable : pin.deviceId.c_str()) << kLineEnd;
    AddRole(text, pin);
    AddController(text, pin.link);
    AddReceiver(text, pin.link);
    AddSizes(text, pin);
    text << std::fixed << std::setprecision(1); // fixed: one digit behind the point
    AddStatistics(text, pin);
    text << L"Last warning: " << (pin.lastErrorText.empty() ? kNotAvailable : pin.lastErrorText.c_str())
         << kLineEnd;
    if (pin.pixelVariationCount > 0)
        text << L"Pixel variation score(%): " << VariationScore(pin) << kLineEnd;
    return text.str();
}

void DrawStatusSummary(GdiPlusSession& gdiPlus, const SummaryValues& pin, const OverlayFrame& frame)
{
    // Without text the frame is delivered all the same.
    std::ignore = DrawOverlayText(gdiPlus, frame, StatusSummary(pin));
}

} // namespace vxds
