#include "VxSimulator/device/CameraModel.h"

#include "VxCamera/wire/gvsp/BlockLayout.h"
#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include "VxSimulator/device/SimulatedRegisters.h"
#include "VxSimulator/stream/ChunkList.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace simulator {

using gvcp::Status;

CameraModel::CameraModel(const VxSimulatorOptions& options, const NetworkFacts& network, Time now)
    : m_options(options),
      m_streamSourcePort(network.streamSourcePort),
      m_memory(MakeInitialMemory(options, network)),
      m_ticksBegin(now)
{
    KeepPayloadSize();
}

AcquisitionState CameraModel::State() const
{
    return m_pacer.IsActive() ? AcquisitionState::Active : AcquisitionState::Idle;
}

Status CameraModel::Read(std::uint32_t address, std::span<std::byte> out, Time now)
{
    RefreshVolatile(now);
    return m_memory.Read(address, out);
}

Status CameraModel::Write(std::uint32_t address, std::span<const std::byte> bytes, Time now)
{
    Status status = m_memory.CheckWrite(address, bytes.size());
    if (status == Status::Success)
        status = CheckFeatures(m_memory, address, bytes, State());
    if (status != Status::Success)
        return status;
    m_memory.Store(address, bytes);
    for (std::size_t done = 0; done < bytes.size(); done += gvcp::kAlignment)
        AfterWrite(address + static_cast<std::uint32_t>(done), now); // one datagram's bytes
    return Status::Success;
}

void CameraModel::ShowPrivilege(std::uint32_t value, std::uint32_t address, std::uint16_t port)
{
    m_memory.Store32(bootstrap::kControlChannelPrivilege, value);
    m_memory.Store32(bootstrap::kPrimaryApplicationIp, address);
    m_memory.Store32(bootstrap::kPrimaryApplicationPort, port);
}

void CameraModel::ShowAddress(const gvcp::ForceIpCommand& address, std::uint16_t streamSourcePort)
{
    m_streamSourcePort = streamSourcePort;
    m_memory.Store32(bootstrap::kCurrentIpAddress, address.ipAddress);
    m_memory.Store32(bootstrap::kCurrentSubnetMask, address.subnetMask);
    m_memory.Store32(bootstrap::kCurrentDefaultGateway, address.defaultGateway);
}

void CameraModel::ControlLost()
{
    using namespace bootstrap;
    if ((m_memory.Load32(kStreamChannelConfiguration) & kUnconditionalStreaming) != 0)
        return;
    m_pacer.Stop();
    m_memory.Store32(kStreamChannelPort, 0);
}

std::chrono::milliseconds CameraModel::HeartbeatTimeout() const
{
    return std::chrono::milliseconds(m_memory.Load32(bootstrap::kHeartbeatTimeout));
}

bool CameraModel::IsHeartbeatDisabled() const
{
    return (m_memory.Load32(bootstrap::kGvcpConfiguration) & bootstrap::kGvcpHeartbeatDisable) != 0;
}

void CameraModel::KeepBits(std::uint32_t address, std::uint32_t mask)
{
    m_memory.Store32(address, m_memory.Load32(address) & mask);
}

void CameraModel::AfterWrite(std::uint32_t address, Time now)
{
    using namespace bootstrap;
    switch (address) {
    case kCurrentIpConfiguration:
        KeepBits(address, m_memory.Load32(kSupportedIpConfiguration));
        m_memory.Store32(address, m_memory.Load32(address) | kIpLinkLocal); // always on
        break;
    case kHeartbeatTimeout:
        m_memory.Store32(address, std::max(m_memory.Load32(address), kHeartbeatMinMs));
        break;
    case kTimestampControl:
        WriteTimestampControl(now);
        break;
    case kGvcpConfiguration:
        KeepBits(address, kGvcpHeartbeatDisable);
        break;
    case kGvspConfiguration:
        KeepBits(address, kGvspExtendedIds);
        break;
    case kStreamChannelPort:
        KeepBits(address, kStreamPortMask);
        break;
    case kStreamChannelPacketSize:
        KeepPacketSize();
        break;
    case kStreamChannelPacketDelay:
        m_memory.Store32(address, std::min(m_memory.Load32(address), kPacketDelayMaxTicks));
        break;
    case kStreamChannelConfiguration:
        KeepBits(address, kUnconditionalStreaming | kExtendedChunks);
        break;
    default:
        AfterFeatureWrite(address, now);
        break;
    }
}

void CameraModel::AfterFeatureWrite(std::uint32_t address, Time now)
{
    switch (address) {
    case kAcquisitionStart:
        StartAcquisition(now);
        break;
    case kAcquisitionStop:
        m_pacer.Stop();
        break;
    case kTriggerSoftware:
        m_pacer.Trigger();
        break;
    case kTriggerMode:
        m_pacer.SetMode(m_memory.Load32(address) != 0 ? FramePacer::Mode::Triggered
                                                      : FramePacer::Mode::FreeRunning);
        break;
    case kAcquisitionFrameRate:
    case kExposureTime:
        m_pacer.SetPeriod(FramePeriod());
        break;
    case kWidth:
    case kHeight:
    case kPixelFormat:
    case kChunkModeActive:
    case kChunkEnable + 4:
    case kChunkEnable + 8:
        KeepPayloadSize();
        break;
    case kChunkEnable:
        // The picture always comes. Clients are not refused who switch everything off before they begin.
        m_memory.Store32(address, 1);
        break;
    case kUserSetLoad:
        if (m_memory.Load32(address) != 0)
            StoreDefaultFeatures(m_memory, m_options);
        m_memory.Store32(address, 0); // done
        m_pacer.SetMode(FramePacer::Mode::FreeRunning);
        KeepPayloadSize();
        break;
    default:
        break;
    }
}

void CameraModel::StartAcquisition(Time now)
{
    if (m_pacer.IsActive())
        return;
    std::optional<std::uint64_t> frames;
    const std::uint32_t mode = m_memory.Load32(kAcquisitionMode);
    if (mode == kModeSingleFrame)
        frames = 1;
    if (mode == kModeMultiFrame)
        frames = m_memory.Load32(kAcquisitionFrameCount);
    m_pacer.SetPeriod(FramePeriod());
    m_pacer.Start(now, frames);
    m_blockId = 1;
}

std::uint64_t CameraModel::Ticks(Time now) const
{
    // A tick is a nanosecond; the clock does not run backwards.
    const auto elapsed = std::chrono::duration_cast<std::chrono::nanoseconds>(now - m_ticksBegin).count();
    return static_cast<std::uint64_t>(std::max<std::int64_t>(elapsed, 0));
}

void CameraModel::WriteTimestampControl(Time now)
{
    using namespace bootstrap;
    constexpr unsigned kHighShift = 32;
    const std::uint32_t control = m_memory.Load32(kTimestampControl);
    if ((control & kTimestampReset) != 0)
        m_ticksBegin = now;
    if ((control & kTimestampLatch) != 0) {
        const std::uint64_t ticks = Ticks(now);
        m_memory.Store32(kTimestampValueHigh, static_cast<std::uint32_t>(ticks >> kHighShift)); // both halves
        m_memory.Store32(kTimestampValueLow, static_cast<std::uint32_t>(ticks));
    }
}

void CameraModel::KeepPacketSize()
{
    using namespace bootstrap;
    const std::uint32_t written = m_memory.Load32(kStreamChannelPacketSize);
    const std::uint32_t wanted = written & kPacketSizeMask;
    const std::uint32_t size =
        std::clamp(wanted - wanted % kPacketSizeStep, kPacketSizeMin, m_memory.Load32(kPacketSizeMax));
    m_memory.Store32(kStreamChannelPacketSize, (written & kDoNotFragment) | size);
    const bool isAsked = m_options.hasTestPackets && (written & kFireTestPacket) != 0;
    m_isTestPacketWanted = m_isTestPacketWanted || isAsked;
}

void CameraModel::KeepPayloadSize()
{
    const PictureFormat* format = FindPictureFormat(m_memory.Load32(kPixelFormat));
    const std::size_t bytes =
        format != nullptr ? PictureBytes(*format, m_memory.Load32(kWidth), m_memory.Load32(kHeight)) : 0;
    m_memory.Store32(kPayloadSize, static_cast<std::uint32_t>(bytes + ChunkBytes(Chunks()))); // below 2^31
}

ChunkOrder CameraModel::Chunks() const
{
    ChunkOrder chunks;
    if (m_memory.Load32(kChunkModeActive) == 0)
        return chunks;
    const bool isExtended =
        (m_memory.Load32(bootstrap::kStreamChannelConfiguration) & bootstrap::kExtendedChunks) != 0;
    chunks.way = isExtended ? ChunkOrder::Way::BehindImage : ChunkOrder::Way::AsPayload;
    chunks.hasFrameId = m_memory.Load32(kChunkEnable + 4) != 0;
    chunks.hasTimestamp = m_memory.Load32(kChunkEnable + 8) != 0;
    return chunks;
}

void CameraModel::RefreshVolatile(Time now)
{
    // Up and down between 35 and 45 degrees in two minutes.
    constexpr double kColdest = 35;
    constexpr double kSpan = 10;
    constexpr double kPeriodSeconds = 120;
    const double phase =
        std::fmod(std::chrono::duration<double>(now - m_ticksBegin).count() / kPeriodSeconds, 1.0);
    const double rise = phase < 0.5 ? 2 * phase : 2 - 2 * phase;
    m_memory.StoreFloat(kDeviceTemperature, static_cast<float>(kColdest + kSpan * rise)); // precise enough

    const bool isPortHidden =
        m_options.isSourcePortToldLate && m_memory.Load32(bootstrap::kStreamChannelPort) == 0;
    m_memory.Store32(bootstrap::kStreamChannelSourcePort,
                     isPortHidden ? std::uint16_t{0} : m_streamSourcePort);

    constexpr unsigned kRefusalsShift = 16;
    const auto refusals = static_cast<std::uint32_t>(std::min<std::uint64_t>(m_refusals, UINT16_MAX));
    m_memory.Store32(kDeviceStatus, refusals << kRefusalsShift | (m_pacer.IsActive() ? 1u : 0u));
}

std::optional<CameraModel::TestPacket> CameraModel::TakeTestPacket()
{
    using namespace bootstrap;
    const bool isWanted = std::exchange(m_isTestPacketWanted, false);
    const auto destination = StreamDestination();
    if (!isWanted || destination.port == 0 || destination.address.IsUnspecified())
        return std::nullopt;
    return TestPacket{destination, m_memory.Load32(kStreamChannelPacketSize) & kPacketSizeMask};
}

transport::Ipv4Endpoint CameraModel::StreamDestination() const
{
    using namespace bootstrap;
    const auto port =
        static_cast<std::uint16_t>(m_memory.Load32(kStreamChannelPort) & kStreamPortMask); // 16 bits
    return {transport::Ipv4Address(m_memory.Load32(kStreamChannelDestination)), port};
}

std::chrono::nanoseconds CameraModel::FramePeriod() const
{
    using Nanoseconds = std::chrono::nanoseconds;
    const std::chrono::duration<double> byRate(1.0 / m_memory.LoadDouble(kAcquisitionFrameRate));
    const std::chrono::duration<double, std::micro> exposure(m_memory.LoadDouble(kExposureTime));
    return std::max(std::chrono::duration_cast<Nanoseconds>(byRate),
                    std::chrono::duration_cast<Nanoseconds>(exposure));
}

bool CameraModel::IsBeyondLimit() const
{
    return m_options.frameLimit && m_frameNumber >= *m_options.frameLimit;
}

std::optional<CameraModel::Time> CameraModel::NextFrameDue() const
{
    const auto destination = StreamDestination();
    if (destination.port == 0 || destination.address.IsUnspecified() || IsBeyondLimit())
        return std::nullopt;
    return m_pacer.NextDue();
}

std::optional<FrameOrder> CameraModel::TakeFrame(Time now)
{
    if (!NextFrameDue() || !m_pacer.Take(now))
        return std::nullopt;
    const FrameOrder order = MakeOrder(now);
    m_blockId = gvsp::NextBlockId(m_blockId, order.idMode);
    ++m_frameNumber;
    return order;
}

FrameOrder CameraModel::MakeOrder(Time now) const
{
    using namespace bootstrap;
    FrameOrder order;
    order.frameNumber = m_frameNumber;
    order.blockId = m_blockId;
    order.timestampTicks = Ticks(now);
    order.format = *FindPictureFormat(m_memory.Load32(kPixelFormat));        // only known ones can be written
    order.pattern = static_cast<TestPattern>(m_memory.Load32(kTestPattern)); // and here
    order.widthPx = m_memory.Load32(kWidth);
    order.heightPx = m_memory.Load32(kHeight);
    order.offsetXPx = m_memory.Load32(kOffsetX);
    order.offsetYPx = m_memory.Load32(kOffsetY);
    order.idMode = (m_memory.Load32(kGvspConfiguration) & kGvspExtendedIds) != 0 ? gvsp::IdMode::Extended
                                                                                 : gvsp::IdMode::Standard;
    order.packetSizeBytes = m_memory.Load32(kStreamChannelPacketSize) & kPacketSizeMask;
    order.packetDelay =
        std::chrono::nanoseconds(m_memory.Load32(kStreamChannelPacketDelay)); // a tick is 1 ns
    order.destination = StreamDestination();
    order.chunks = Chunks();
    return order;
}

} // namespace simulator
