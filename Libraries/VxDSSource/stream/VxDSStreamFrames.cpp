#include "VxDSSource/stream/VxDSStream.h"

#include "BaseClasses/CAutoLock.h"
#include "BaseClasses/VxTryLock.h"
#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxDSSource/stream/VxMediaTypes.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <tuple>

using namespace vxds;

namespace {

// Chosen: longer than a frame, shorter than a person notices. A reconnect may take longer: that costs frames,
// not the streaming thread.
constexpr DWORD kMutexTimeoutMs = 500;

constexpr REFERENCE_TIME kUnitsPerMillisecond = 10'000; // fixed by DirectShow: of 100 ns

// Fixed: the frame time that every media type names, in whole milliseconds. Frames for which nothing was
// waited (no camera is set, or acquisition did not start) come no faster; else they would take a whole core.
constexpr std::chrono::milliseconds kNominalFrameTime{kNominalTimePerFrame / kUnitsPerMillisecond};

/// The sample's own memory; empty when it has none.
std::span<std::uint8_t> MemoryOf(IMediaSample& sample)
{
    BYTE* memory = nullptr;
    const long bytes = sample.GetSize();
    if (FAILED(sample.GetPointer(&memory)) || memory == nullptr || bytes <= 0)
        return {};
    return {memory, static_cast<std::size_t>(bytes)}; // positive, tested above
}

/// What is drawn at least: the size in the settings, whose height may be negative. 0 where it cannot be
/// drawn.
PictureSize DrawnSize(PictureSize delivered)
{
    const auto width = static_cast<std::int32_t>(delivered.widthPx);
    const std::int64_t height = static_cast<std::int32_t>(delivered.heightPx);
    return {width > 0 ? delivered.widthPx : 0U, static_cast<std::uint32_t>(std::abs(height))};
}

/// Waits until a frame has taken its nominal time, or until a command to the streaming thread is pending.
void WaitOutFrame(std::chrono::steady_clock::time_point began, HANDLE command)
{
    const auto taken =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - began);
    if (taken < kNominalFrameTime)
        ::WaitForSingleObject(command, static_cast<DWORD>((kNominalFrameTime - taken).count())); // 33 at most
}

/// An allocator may hand out a sample with what it said of an earlier frame.
void RemoveStamps(IMediaSample& sample)
{
    sample.SetTime(nullptr, nullptr);
    sample.SetMediaTime(nullptr, nullptr);
    sample.SetSyncPoint(FALSE);
}

} // namespace

HRESULT VxDSStream::OnThreadCreate()
{
    const CAutoLock linkLock(m_link.Guard());
    m_acquisitionRunning = true;
    if (m_reconnects == 0)
        StartAcquisition(); // else the reconnect does, once the camera knows where to send
    return S_OK;
}

HRESULT VxDSStream::OnThreadStartPlay()
{
    std::ignore = m_pFilter->GetSyncSource(m_referenceClock.Put()); // empty without a clock
    return S_OK;
}

HRESULT VxDSStream::OnThreadDestroy()
{
    m_referenceClock.Reset(); // may end the clock, which is not ours: no lock is held
    const CAutoLock linkLock(m_link.Guard());
    m_acquisitionRunning = false;
    StopAcquisition();
    return S_OK;
}

HRESULT VxDSStream::FillBuffer(IMediaSample* sample)
{
    const auto began = std::chrono::steady_clock::now();
    const std::span<std::uint8_t> memory = MemoryOf(*sample);
    bool hasPicture = false;
    try {
        AdoptFormatOf(*sample);
        const AcquisitionMutex::Lock lock(m_acquisitionMutex, kMutexTimeoutMs);
        hasPicture = lock.IsHeld() && ProduceFrame(*sample, memory);
        if (!hasPicture)
            std::ranges::fill(memory, std::uint8_t{0});
        if (m_settings.Flag(Setting::DiagnosticsEnabled))
            ShowSummary(memory, lock.IsHeld());
    } catch (const std::exception&) {
        std::ranges::fill(memory, std::uint8_t{0}); // no memory
    }
    if (!hasPicture) {
        RemoveStamps(*sample);
        // Without the mutex: whoever wants to connect a camera need not wait for this.
        WaitOutFrame(began, GetRequestHandle());
    }
    return S_OK;
}

bool VxDSStream::ProduceFrame(IMediaSample& sample, std::span<std::uint8_t> memory)
{
    try {
        const HeldBuffer buffer = TakeBuffer();
        if (!buffer)
            return false;
        m_drawer.Draw(*buffer, TargetFor(*buffer, memory));
        Stamp(sample);
        return true;
    } catch (const std::exception&) {
        return false; // no memory, or settings that the picture library refuses
    }
}

void VxDSStream::ShowSummary(std::span<std::uint8_t> memory, bool hasAcquisitionMutex)
{
    try {
        const OverlayFrame frame{memory, CurrentFrameFormat().bitmap};
        if (hasAcquisitionMutex) {
            DrawStatusSummary(m_gdiPlus, ValuesForSummary(true), frame);
            return;
        }
        // Somebody else has the mutex: the link is asked only if it can be had at once; else what is known of
        // it is shown, and its statistics count as unreadable. It is held while the text is drawn, which
        // calls nobody but GDI+.
        const VxTryLock linkLock(*m_link.Guard());
        DrawStatusSummary(m_gdiPlus, ValuesForSummary(linkLock.IsHeld()), frame);
    } catch (const std::exception&) {
        // No memory for the text: the frame goes out without it.
    }
}

SummaryValues VxDSStream::ValuesForSummary(bool canAskLink)
{
    SummaryValues values;
    values.deviceId = m_settings.Text(Setting::DeviceId);
    values.role = m_settings.Number(Setting::Role);
    values.unicastPort = m_settings.Number(Setting::UnicastPort);
    values.multicastAddress = m_settings.Text(Setting::MulticastAddress);
    values.multicastPort = m_settings.Number(Setting::MulticastPort);
    values.renderWidthPx = m_settings.Number(Setting::Width);
    values.renderHeightPx = m_settings.Number(Setting::Height);
    values.link = canAskLink ? m_link.Status() : m_link.LastStatus();
    if (canAskLink && m_link.Stream() != nullptr)
        values.statistics = m_link.Stream()->GetParameters();
    values.lastImageWidthPx = m_statistics.LastImageSize().widthPx;
    values.lastImageHeightPx = m_statistics.LastImageSize().heightPx;
    values.blocksDroppedByFilter = m_statistics.BlocksDroppedByFilter();
    values.lastErrorText = m_statistics.LastErrorText();
    values.sourceWidthPx = m_statistics.AnalysedSize().widthPx;
    values.sourceHeightPx = m_statistics.AnalysedSize().heightPx;
    values.pixelVariationCount = m_statistics.PixelVariationCount();
    return values;
}

void VxDSStream::AdoptFormatOf(IMediaSample& sample)
{
    AM_MEDIA_TYPE* changed = nullptr;
    if (sample.GetMediaType(&changed) != S_OK || changed == nullptr)
        return;
    HRESULT copied = S_OK;
    const CMediaType type(*changed, &copied);
    DeleteMediaType(changed);
    if (SUCCEEDED(copied))
        std::ignore = SetMediaType(&type); // without memory, here or there, the old type stays
}

HeldBuffer VxDSStream::TakeBuffer()
{
    VxPipeline* const pipeline = m_link.Pipeline();
    if (m_link.Stream() == nullptr || pipeline == nullptr)
        return {};
    const auto isWantedElsewhere = [this] {
        return m_acquisitionMutex.IsWanted() || CAMThread::CheckRequest(nullptr) != FALSE;
    };
    return ChooseBuffer(*pipeline, m_settings.Number(Setting::DropThreshold), m_statistics,
                        isWantedElsewhere);
}

FrameTarget VxDSStream::TargetFor(const VxBuffer& camera, std::span<std::uint8_t> memory)
{
    FrameTarget target;
    target.memory = memory;
    target.format = CurrentFrameFormat();
    target.delivered = DrawnSize(DeliveredSize());
    target.outputPixelType = m_settings.Number(Setting::OutputPixelType);
    target.kernelSize = m_settings.SignedNumber(Setting::KernelSize);
    target.zoomValue = m_settings.SignedNumber(Setting::ZoomValue);
    target.hasDiagnostics = m_settings.Flag(Setting::DiagnosticsEnabled);
    target.source = m_source;
    target.zoom = m_zoomTable;
    const VxImage* const image = camera.GetImage();
    if (m_source == PictureSize{} && image != nullptr) {
        // A receiver that never saw the camera itself: the picture is as large as it arrives.
        target.source = {image->GetWidth(), image->GetHeight()};
        target.zoom = ZoomTable(target.source);
    }
    return target;
}

void VxDSStream::Stamp(IMediaSample& sample)
{
    REFERENCE_TIME now = 0;
    if (m_referenceClock)
        std::ignore = m_referenceClock->GetTime(&now); // S_FALSE repeats the last time
    FrameTimes times = m_statistics.StampFrame(now);
    std::ignore = sample.SetMediaTime(&times.mediaStart, &times.mediaStop);
    std::ignore = sample.SetTime(&times.start, &times.stop);
    std::ignore = sample.SetSyncPoint(TRUE);
}
