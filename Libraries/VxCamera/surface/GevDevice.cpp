#include "VxCamera/surface/GevDevice.h"

#include <limits>
#include <string>
#include <tuple>
#include <utility>

#include "VxCamera/control/ConnectionId.h"
#include "VxCamera/control/DescriptionLoader.h"
#include "VxCamera/surface/KnownDescriptions.h"
#include "VxCamera/surface/ListedBoolean.h"
#include "VxCamera/surface/ListedInteger.h"
#include "VxCamera/surface/ListedString.h"
#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

namespace {

using std::chrono::milliseconds;

// Chosen: a user who named a camera that is not there learns it within half a second; that includes a stream
// which is opened all the same, and looks for the camera, too.
constexpr milliseconds kFindTimeout{350};

// Chosen for loopback, where a packet costs the same whatever its size: half of the largest IP packet, a
// multiple of 4.
constexpr std::uint32_t kLoopbackPacketBytes = 32000;

// Fixed by the naming convention of camera features.
constexpr const char* kLockFeature = "TLParamsLocked";
constexpr const char* kPayloadFeature = "PayloadSize";

constexpr std::int64_t kLongestAckTimeoutMs = 10'000; // chosen: more is a hang to a user
constexpr std::int64_t kMostRetries = 20;             // chosen: as above

} // namespace

GevDevice::GevDevice(std::unique_ptr<CameraNetwork> network) : m_network(std::move(network)) {}

GevDevice::~GevDevice()
{
    std::ignore = Disconnect(); // nothing left to undo
}

VxExpected<std::unique_ptr<GevDevice>> GevDevice::Connect(const VxString& connectionId)
{
    auto network = std::make_unique<CameraNetwork>();
    const auto found = control::CameraFinder(network->Parts())
                           .Find(control::ConnectionId(connectionId.Narrow()), kFindTimeout);
    if (!found)
        return found.Error();

    std::unique_ptr<GevDevice> device(new GevDevice(std::move(network)));
    if (const VxResult taken = device->TakeControl(*found); !taken.IsOK())
        return taken;
    if (const VxResult loaded = device->LoadFeatures(); !loaded.IsOK())
        return loaded; // the destructor gives control back
    return device;
}

VxResult GevDevice::TakeControl(const control::FoundCamera& found)
{
    m_found = found;
    auto session = control::DeviceSession::Connect({m_network->Sockets(), m_network->Clock()}, found.device,
                                                   found.via.address);
    if (!session)
        return session.Error();
    m_session = *std::move(session);
    m_heartbeat = std::make_unique<control::HeartbeatThread>(*m_session);
    ListLink();
    return m_heartbeat->Start();
}

VxResult GevDevice::LoadFeatures()
{
    const auto file = control::DescriptionLoader(m_session->Client()).Load();
    if (!file)
        return file.Error();
    auto description = KnownDescriptions().Get(*file);
    if (!description)
        return description.Error();
    auto map = genapi::NodeMap::Create(*std::move(description), *m_session,
                                       genapi::RegisterOrder::BigEndianBelowSchema11, &m_network->Clock());
    if (!map)
        return map.Error();
    m_features = NodeParameterArray::Create(*std::move(map));
    return VxResult::Ok();
}

void GevDevice::ListLink()
{
    control::DeviceSession& session =
        *m_session; // outlives the list: both are members, the list is declared later
    const auto facts = [](const char* name, VxGenVisibility visibility) {
        return ParameterFacts{name, "root\\Communication", visibility};
    };
    m_link.Add<ListedString>(facts("DeviceIPAddress", VxGenVisibility::Beginner),
                             [this] { return VxString(m_found.device.address.ToString()); });
    m_link.Add<ListedString>(facts("HostIPAddress", VxGenVisibility::Beginner),
                             [this] { return VxString(m_found.via.address.ToString()); });
    m_link.Add<ListedString>(facts("HostInterface", VxGenVisibility::Beginner),
                             [this] { return VxString(m_found.via.name); });
    m_link.Add<ListedBoolean>(
        facts("HeartbeatEnabled", VxGenVisibility::Guru), [&session] { return session.IsHeartbeatOn(); },
        [&session](bool isOn) { session.SetHeartbeat(isOn); });
    m_link.Add<ListedInteger>(
        facts("HeartbeatTimeout", VxGenVisibility::Expert),
        ListedInteger::Access{[&session]() -> std::int64_t { return session.HeartbeatTimeout().count(); },
                              {}});
    m_link.Add<ListedInteger>(facts("CommandAckTimeout", VxGenVisibility::Guru),
                              ListedInteger::Access{[&session]() -> std::int64_t {
                                                        return session.Client().Settings().ackTimeout.count();
                                                    },
                                                    [&session](std::int64_t value) {
                                                        control::CommandSettings settings =
                                                            session.Client().Settings();
                                                        settings.ackTimeout = milliseconds(value);
                                                        session.Client().SetSettings(settings);
                                                    },
                                                    1, kLongestAckTimeoutMs});
    m_link.Add<ListedInteger>(
        facts("CommandRetries", VxGenVisibility::Guru),
        ListedInteger::Access{[&session]() -> std::int64_t { return session.Client().Settings().retries; },
                              [&session](std::int64_t value) {
                                  control::CommandSettings settings = session.Client().Settings();
                                  settings.retries = static_cast<unsigned>(value); // 0 to 20
                                  session.Client().SetSettings(settings);
                              },
                              0, kMostRetries});
}

bool GevDevice::IsConnected() const
{
    return m_session != nullptr && m_session->IsAlive();
}

VxResult GevDevice::Disconnect()
{
    m_streamControl.Disconnect();
    if (m_session == nullptr || !m_session->IsAlive()) {
        if (m_heartbeat != nullptr)
            m_heartbeat->Stop();
        return VxResult::Ok();
    }
    std::ignore = Lock(false); // a camera without the feature has nothing to unlock
    for (std::uint32_t channel = 0; channel < m_session->Facts().streamChannelCount; ++channel)
        std::ignore = m_session->Client().WriteRegister(
            bootstrap::StreamChannelRegister(bootstrap::kStreamChannelPort, channel),
            0); // control ends all the same
    m_heartbeat->Stop();
    return m_session->Release();
}

std::uint32_t GevDevice::GetPayloadSize()
{
    std::int64_t bytes = 0;
    if (!m_features->GetIntegerValue(kPayloadFeature, bytes).IsOK())
        return 0;
    const bool isPlausible = bytes > 0 && bytes <= std::numeric_limits<std::uint32_t>::max();
    return isPlausible ? static_cast<std::uint32_t>(bytes) : 0;
}

VxResult GevDevice::Lock(bool isLocked)
{
    if (m_features == nullptr || m_features->GetInteger(kLockFeature) == nullptr)
        return VxResult::Ok();
    return m_features->SetIntegerValue(kLockFeature, isLocked ? 1 : 0);
}

VxResult GevDevice::StreamEnable(std::uint32_t)
{
    return Lock(true);
}

VxResult GevDevice::StreamDisable(std::uint32_t)
{
    return Lock(false);
}

VxResult GevDevice::ChoosePacketSize(std::uint32_t channel)
{
    if (!m_found.via.isLoopback)
        return VxResult::Ok(); // the camera's own choice passes every network between it and us
    const std::uint32_t address =
        bootstrap::StreamChannelRegister(bootstrap::kStreamChannelPacketSize, channel);
    const auto present = m_session->Client().ReadRegister(address);
    if (!present)
        return present.Error();
    return m_session->Client().WriteRegister(address,
                                             (*present & ~bootstrap::kPacketSizeMask) | kLoopbackPacketBytes);
}

VxResult GevDevice::SetStreamDestination(const VxString& ipAddress, std::uint16_t port, std::uint32_t channel)
{
    const auto address = transport::Ipv4Address::Parse(ipAddress.Narrow());
    if (!address)
        return VxResult(VxError::InvalidParameter, "\"" + ipAddress.Narrow() + "\" is no IPv4 address");
    const std::uint32_t channels = m_session->Facts().streamChannelCount;
    if (channel >= channels)
        return VxResult(VxError::InvalidParameter, "stream channel " + std::to_string(channel) +
                                                       ": the camera has " + std::to_string(channels));
    std::ignore = ChoosePacketSize(channel); // a camera that refuses keeps its own size, which works too

    auto& client = m_session->Client();
    const auto destination = bootstrap::StreamChannelRegister(bootstrap::kStreamChannelDestination, channel);
    // A receiver that listens on every interface is reached through the one that leads to the camera.
    const auto target = address->IsUnspecified() ? m_found.via.address : *address;
    if (const VxResult written = client.WriteRegister(destination, target.Value()); !written.IsOK())
        return written;
    // Before the camera sends, so that the way through a firewall is open.
    m_streamControl.Connect({*m_session, m_network->Sockets(), m_found.via.address}, {target, port}, channel,
                            [] {});
    // The port comes last: the camera starts to send once it is set.
    return client.WriteRegister(bootstrap::StreamChannelRegister(bootstrap::kStreamChannelPort, channel),
                                port);
}
