#include "VxCamera/surface/GevDevice.h"

#include <string>
#include <tuple>
#include <utility>

#include "VxCamera/control/ConnectionId.h"
#include "VxCamera/control/DescriptionLoader.h"
#include "VxCamera/control/PacketSizeFinder.h"
#include "VxCamera/control/StreamChannel.h"
#include "VxCamera/surface/KnownDescriptions.h"
#include "VxCamera/surface/NoThrow.h"
#include "VxCamera/surface/PayloadSize.h"

namespace {

using std::chrono::milliseconds;

// Chosen: a user who named a camera that is not there learns it within half a second; that includes a stream
// which is opened all the same and looks for the camera for another 100 ms, and 100 ms for all the rest.
constexpr milliseconds kFindTimeout{300};

// Chosen: a camera that is well gives control back within milliseconds, and one that is not must not keep an
// application from closing.
constexpr milliseconds kDisconnectTime{2000};

// Chosen: what was sent in packets of the old size has arrived by then, and every receiver of a group has
// noticed the same.
constexpr milliseconds kSettlingTime{100};

// Fixed by the naming convention of camera features.
constexpr const char* kLockFeature = "TLParamsLocked";

/// Adds which camera it is, where the failure does not tell: a description is read without knowing whose it
/// is.
VxResult Named(const VxResult& failure, const control::FoundCamera& camera)
{
    const std::string address = camera.device.address.ToString();
    const std::string& text = failure.GetDescription().Narrow();
    if (text.find(address) != std::string::npos)
        return failure;
    return {failure.Code(), "camera " + address + ": " + text};
}

} // namespace

GevDevice::GevDevice(std::unique_ptr<CameraNetwork> network) : m_network(std::move(network)) {}

GevDevice::~GevDevice()
{
    std::ignore = Disconnect(); // nothing left to undo
}

VxExpected<std::unique_ptr<GevDevice>> GevDevice::Connect(const VxString& connectionId,
                                                          const std::string& descriptionFile)
{
    auto network = std::make_unique<CameraNetwork>();
    const auto found = control::CameraFinder(network->Parts())
                           .Find(control::ConnectionId(connectionId.Narrow()), kFindTimeout);
    if (!found)
        return found.Error();

    std::unique_ptr<GevDevice> device(new GevDevice(std::move(network)));
    if (const VxResult taken = device->TakeControl(*found); !taken.IsOK())
        return taken;
    if (const VxResult loaded = device->LoadFeatures(descriptionFile); !loaded.IsOK())
        return Named(loaded, *found); // the destructor gives control back
    return device;
}

VxResult GevDevice::TakeControl(const control::FoundCamera& found)
{
    m_found = found;
    auto session =
        control::DeviceSession::Connect({m_network->Sockets(), m_network->Clock()}, found.device, found.via);
    if (!session)
        return session.Error();
    m_session = *std::move(session);
    m_heartbeat = std::make_unique<control::HeartbeatThread>(*m_session);
    ListLink();
    return m_heartbeat->Start();
}

VxResult GevDevice::LoadFeatures(const std::string& ownFile)
{
    const control::CommandLimit limit(m_session->Client(), m_session->ConnectEnd());
    std::shared_ptr<const genapi::Description> description;
    const auto use = [&](const std::string& file) {
        auto read = KnownDescriptions().Get(file);
        if (read)
            description = *std::move(read);
        return read ? VxResult::Ok() : read.Error();
    };
    const VxResult used =
        ownFile.empty() ? control::DescriptionLoader(m_session->Client()).Load(use).Result() : use(ownFile);
    if (!used.IsOK())
        return used;
    auto map = genapi::NodeMap::Create(std::move(description), *m_session,
                                       genapi::RegisterOrder::BigEndianBelowSchema11, &m_network->Clock());
    if (!map)
        return map.Error();
    m_features = NodeParameterArray::Create(*std::move(map));
    return VxResult::Ok();
}

void GevDevice::ListLink()
{
    const PacketSizeAccess packetSize{
        [this] { return PacketSizeAsSet(); },
        [this](const PacketSizeAccess::Change& change) { return UpdatePacketSize(change); },
        [this] { return PacketSizeInForce(); }};
    const NodeMapAccess map = [this] { return m_features != nullptr ? m_features->Map() : nullptr; };
    // Session and features outlive the list: all are members, the list is declared later.
    ListLinkParameters(m_found, *m_session, packetSize, map, m_link);
}

bool GevDevice::IsConnected() const
{
    return m_session != nullptr && m_session->IsAlive();
}

VxResult GevDevice::Disconnect()
{
    return NoThrow([this] {
        // The first of two that come at once does it; the other returns when it is done.
        const VxLock lock(m_disconnectMutex);
        return DisconnectOnce();
    });
}

VxResult GevDevice::DisconnectOnce()
{
    const bool wasAlive = IsConnected();
    if (m_session != nullptr)
        m_session->EndWithin(kDisconnectTime); // also what others are waiting for, whose locks come next
    {
        const VxLock lock(m_streamMutex);
        m_isClosing = true;
        m_streamControl.Disconnect();
    }
    if (!wasAlive) {
        if (m_heartbeat != nullptr)
            m_heartbeat->Stop();
        return VxResult::Ok();
    }
    // A camera without the feature has nothing to unlock; and whatever happens, control is given back.
    std::ignore = NoThrow([this] { return Lock(false); });
    {
        const VxLock lock(m_streamMutex);
        if (m_destination) // control ends all the same
            std::ignore = control::StreamChannel(m_session->Client(), m_destination->channel).Close();
        m_destination.reset();
        m_sizeInForce = 0;
    }
    if (m_heartbeat != nullptr)
        m_heartbeat->Stop();
    return m_session->Release();
}

std::uint32_t GevDevice::GetPayloadSize()
{
    std::uint32_t bytes = 0;
    const auto computed = NoThrow([&] {
        if (m_features->Map() != nullptr)
            bytes = PayloadSizeOf(*m_features->Map());
        return VxResult::Ok();
    });
    return computed.IsOK() ? bytes : 0;
}

VxResult GevDevice::Lock(bool isLocked)
{
    if (m_features == nullptr || m_features->GetInteger(kLockFeature) == nullptr)
        return VxResult::Ok();
    return m_features->SetIntegerValue(kLockFeature, isLocked ? 1 : 0);
}

VxResult GevDevice::StreamEnable(std::uint32_t)
{
    return NoThrow([this] {
        if (auto ended = m_session->Client().EndReason(); !ended.IsOK())
            return ended;
        {
            const VxLock lock(m_streamMutex);
            if (m_isPacketSizeNew) // what was set while the camera was streaming
                if (auto opened = Direct().opened; !opened.IsOK())
                    return opened;
            m_isStreaming = true;
            if (m_features != nullptr && m_features->Map() != nullptr)
                m_streamControl.TellPicture(PictureInChunksOf(*m_features->Map()));
        }
        return Lock(true);
    });
}

VxResult GevDevice::StreamDisable(std::uint32_t)
{
    return NoThrow([this] {
        {
            const VxLock lock(m_streamMutex);
            m_isStreaming = false;
        }
        if (auto ended = m_session->Client().EndReason(); !ended.IsOK())
            return ended;
        return Lock(false);
    });
}

PacketSizeSetting GevDevice::PacketSizeAsSet()
{
    const VxLock lock(m_packetSizeMutex);
    return m_packetSize;
}

VxResult GevDevice::UpdatePacketSize(const PacketSizeAccess::Change& change)
{
    return NoThrow([&] {
        const VxLock lock(m_streamMutex);
        {
            const VxLock settingLock(m_packetSizeMutex);
            change(m_packetSize);
        }
        m_isPacketSizeNew = true;
        if (m_isStreaming)
            return VxResult::Ok();
        auto directed = Direct();
        return directed.opened.IsOK() ? directed.packetSize : directed.opened;
    });
}

std::uint32_t GevDevice::PacketSizeInForce()
{
    const std::uint32_t known = m_sizeInForce;
    return known != 0 ? known : PacketSizeAsSet().fixedBytes;
}

/// On a thread of m_streamControl, which is ended under m_streamMutex: so that lock is not taken here.
VxResult GevDevice::StepPacketSizeDown(std::uint32_t channel)
{
    if (m_network->Clock().Now() < m_packetsSettleAt)
        return VxResult::Ok(); // still about packets of the old size; whoever receives none asks again
    const auto set = control::StreamChannel(m_session->Client(), channel).StepPacketSizeDown();
    if (set)
        m_sizeInForce = *set;
    m_packetsSettleAt = m_network->Clock().Now() + kSettlingTime;
    ForgetValues();
    return set.Result();
}

/// The camera's features show registers that were written past them.
void GevDevice::ForgetValues()
{
    if (m_features != nullptr && m_features->Map() != nullptr)
        m_features->Map()->InvalidateAll();
}

/// @return  the size in force
VxExpected<std::uint32_t> GevDevice::ChoosePacketSize(control::StreamChannel& channel,
                                                      transport::Ipv4Address receiver)
{
    using Fragments = control::StreamChannel::Fragments;
    const bool isHere = receiver == m_found.via.address || receiver.IsMulticast();
    const PacketSizeSetting setting = PacketSizeAsSet();
    switch (setting.mode) {
    case PacketSizeMode::Fixed:
        return channel.SetPacketSize(setting.fixedBytes, Fragments::AsBefore);
    case PacketSizeMode::Automatic:
        if (!isHere)
            return channel.PacketSize(); // a way that cannot be tried from here
        return control::PacketSizeFinder(
                   channel, {m_network->Sockets(), m_network->Clock(), m_found.via, m_found.device.address})
            .Find();
    default:
        return channel.PacketSize();
    }
}

GevDevice::Directed GevDevice::Direct()
{
    if (m_isClosing)
        return {{VxError::NotConnected, "camera " + m_found.device.address.ToString() + " is disconnected"},
                VxResult::Ok()};
    if (!m_destination)
        return {VxResult::Ok(), VxResult::Ok()};
    m_streamControl.Disconnect(); // nobody else changes the packet size meanwhile
    control::StreamChannel channel(m_session->Client(), m_destination->channel);
    const auto size = ChoosePacketSize(channel, m_destination->receiver.address);
    m_sizeInForce = size ? *size : channel.PacketSize().ValueOr(0);
    m_isPacketSizeNew = false;
    auto opened = channel.Open(m_destination->receiver);
    // Behind Open: not before it do all cameras know the port from which they send. Nothing is sent before
    // the acquisition starts, so the way through a firewall is open in time.
    if (opened.IsOK())
        m_streamControl.Connect({*m_session, m_network->Sockets(), m_found.via}, m_destination->receiver,
                                m_destination->channel, [this, number = m_destination->channel] {
                                    std::ignore = StepPacketSizeDown(number); // else it stays as it is
                                });
    ForgetValues();
    return {std::move(opened), size.Result()};
}

VxResult GevDevice::SetStreamDestination(const VxString& ipAddress, std::uint16_t port, std::uint32_t channel)
{
    return NoThrow([&] { return DirectTo(ipAddress, port, channel); });
}

VxResult GevDevice::DirectTo(const VxString& ipAddress, std::uint16_t port, std::uint32_t channel)
{
    if (auto ended = m_session->Client().EndReason(); !ended.IsOK())
        return ended;
    const auto address = transport::Ipv4Address::Parse(ipAddress.Narrow());
    if (!address)
        return VxResult(VxError::InvalidParameter, "\"" + ipAddress.Narrow() + "\" is no IPv4 address");
    const std::uint32_t channels = m_session->Facts().streamChannelCount;
    if (channel >= channels)
        return VxResult(VxError::InvalidParameter, "stream channel " + std::to_string(channel) +
                                                       ": the camera " + m_found.device.address.ToString() +
                                                       " has " + std::to_string(channels));
    // A receiver that listens on every interface is reached through the one that leads to the camera.
    const auto target = address->IsUnspecified() ? m_found.via.address : *address;
    const VxLock lock(m_streamMutex);
    m_destination = {{target, port}, channel};
    return Direct().opened;
}
