#include "VxCamera/surface/LinkParameters.h"

#include <string>
#include <string_view>
#include <vector>

#include "VxCamera/control/ControlText.h"
#include "VxCamera/surface/ListedBoolean.h"
#include "VxCamera/surface/ListedEnum.h"
#include "VxCamera/surface/ListedInteger.h"
#include "VxCamera/surface/ListedString.h"
#include "VxCamera/wire/registers/BootstrapBits.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

namespace {

using control::CommandSettings;
using control::DeviceSession;
using std::chrono::milliseconds;
using transport::Ipv4Address;
using enum VxGenVisibility;

constexpr const char* kCamera = "root\\Communication\\Camera";
constexpr const char* kHost = "root\\Communication\\Host";
constexpr const char* kControl = "root\\Communication\\Control";
constexpr const char* kStream = "root\\Communication\\Stream";

constexpr std::int64_t kShortestAckTimeoutMs = 10;    // chosen: the slowest cameras known need a few
constexpr std::int64_t kLongestAckTimeoutMs = 10'000; // chosen: more is a hang to a user
constexpr std::int64_t kMostRetries = 20;             // chosen: as above
constexpr std::int64_t kShortestIntervalMs = 50;      // chosen: more often would only disturb the camera
constexpr std::int64_t kLongestIntervalMs = 1500;     // chosen: half of the usual time-out of cameras
constexpr std::int64_t kSmallestPacket = 576;         // fixed by IPv4: what every host takes
constexpr std::int64_t kLargestPacket = 65'535;       // fixed by IPv4

void AddText(ParameterList& list, const ParameterFacts& facts, std::string_view text)
{
    list.Add<ListedString>(facts, [value = VxString(text)] { return value; });
}

void AddNumber(ParameterList& list, const ParameterFacts& facts, std::int64_t number)
{
    list.Add<ListedInteger>(facts, ListedInteger::Access{[number] { return number; }, {}});
}

/// Register of the camera that never changes; 0 where the camera does not have it.
std::int64_t LinkSpeedOf(DeviceSession& session)
{
    if ((session.Facts().capability & bootstrap::kCapabilityLinkSpeed) == 0)
        return 0;
    return session.Client().ReadRegister(bootstrap::kLinkSpeed).ValueOr(0);
}

void ListCamera(const control::FoundCamera& found, DeviceSession& session, ParameterList& list)
{
    const gvcp::DiscoveryAck& camera = found.camera;
    AddText(list, {"DeviceIPAddress", kCamera}, found.device.address.ToString());
    AddText(list, {"DeviceSubnetMask", kCamera, Expert}, Ipv4Address(camera.subnetMask).ToString());
    AddText(list, {"DeviceDefaultGateway", kCamera, Expert}, Ipv4Address(camera.defaultGateway).ToString());
    AddText(list, {"DeviceMACAddress", kCamera}, control::MacText(camera.mac));
    AddText(list, {"DeviceManufacturerName", kCamera}, camera.manufacturerName);
    AddText(list, {"DeviceModelName", kCamera}, camera.modelName);
    AddText(list, {"DeviceSerialNumber", kCamera}, camera.serialNumber);
    AddText(list, {"DeviceUserDefinedName", kCamera}, camera.userDefinedName);
    AddText(list, {"DeviceProtocolVersion", kCamera, Expert},
            std::to_string(camera.majorVersion) + "." + std::to_string(camera.minorVersion));
    AddNumber(list, {"DeviceLinkSpeed", kCamera, Expert, "Mbit/s"}, LinkSpeedOf(session));
}

void ListHost(const transport::NetworkInterface& via, ParameterList& list)
{
    AddText(list, {"HostInterface", kHost}, via.name);
    AddText(list, {"HostIPAddress", kHost}, via.address.ToString());
    AddText(list, {"HostSubnetMask", kHost, Expert}, via.mask.ToString());
    AddText(list, {"HostMACAddress", kHost, Expert}, control::MacText(via.macAddress));
    AddNumber(list, {"HostLinkSpeed", kHost, Expert, "Mbit/s"}, via.linkSpeedMbps);
    AddNumber(list, {"HostMaximumPacketSize", kHost, Expert, "bytes"}, via.mtuBytes);
}

void ListCommands(DeviceSession& session, ParameterList& list)
{
    const auto change = [&session](const auto& how) {
        session.Client().UpdateSettings(how);
        return VxResult::Ok();
    };
    list.Add<ListedInteger>(ParameterFacts{"CommandAckTimeout", kControl, Guru, "ms"},
                            ListedInteger::Access{[&session]() -> std::int64_t {
                                                      return session.Client().Settings().ackTimeout.count();
                                                  },
                                                  [change](std::int64_t value) {
                                                      return change([value](CommandSettings& settings) {
                                                          settings.ackTimeout = milliseconds(value);
                                                      });
                                                  },
                                                  kShortestAckTimeoutMs, kLongestAckTimeoutMs});
    list.Add<ListedInteger>(
        ParameterFacts{"CommandRetries", kControl, Guru},
        ListedInteger::Access{[&session]() -> std::int64_t { return session.Client().Settings().retries; },
                              [change](std::int64_t value) {
                                  // 0 to 20, tested by the caller
                                  return change([value](CommandSettings& settings) {
                                      settings.retries = static_cast<unsigned>(value);
                                  });
                              },
                              0, kMostRetries});
}

void ListHeartbeat(DeviceSession& session, ParameterList& list)
{
    list.Add<ListedBoolean>(
        ParameterFacts{"HeartbeatEnabled", kControl, Guru}, [&session] { return session.IsHeartbeatOn(); },
        [&session](bool isOn) { session.SetHeartbeat(isOn); });
    list.Add<ListedInteger>(
        ParameterFacts{"HeartbeatInterval", kControl, Guru, "ms"},
        ListedInteger::Access{[&session]() -> std::int64_t { return session.HeartbeatInterval().count(); },
                              [&session](std::int64_t value) {
                                  session.SetHeartbeatInterval(milliseconds(value));
                                  return VxResult::Ok();
                              },
                              kShortestIntervalMs, kLongestIntervalMs});
    list.Add<ListedInteger>(
        ParameterFacts{"HeartbeatTimeout", kControl, Expert, "ms"},
        ListedInteger::Access{[&session]() -> std::int64_t { return session.HeartbeatTimeout().count(); },
                              {}});
}

// For cameras whose description is wrong about them.
void ListFeatures(const NodeMapAccess& map, ParameterList& list)
{
    const std::vector<std::string_view> orders{"AsDescribed", "Automatic", "BigEndian"}; // as RegisterOrder
    list.Add<ListedEnum>(
        ParameterFacts{"RegisterByteOrder", kControl, Guru}, orders,
        [map] {
            const genapi::NodeMap* const features = map();
            return static_cast<std::size_t>(
                features != nullptr ? features->Order() : genapi::RegisterOrder::BigEndianBelowSchema11);
        },
        [map](std::size_t index) {
            if (genapi::NodeMap* const features = map(); features != nullptr)
                features->SetRegisterOrder(static_cast<genapi::RegisterOrder>(index)); // below their number
            return VxResult::Ok();
        });
    list.Add<ListedBoolean>(
        ParameterFacts{"FeatureCaching", kControl, Guru},
        [map] {
            const genapi::NodeMap* const features = map();
            return features == nullptr || features->IsCaching();
        },
        [map](bool isOn) {
            if (genapi::NodeMap* const features = map(); features != nullptr)
                features->SetCaching(isOn);
        });
}

void ListStream(const PacketSizeAccess& access, ParameterList& list)
{
    const std::vector<std::string_view> modes{"Automatic", "Camera", "Fixed"}; // as PacketSizeMode
    list.Add<ListedEnum>(
        ParameterFacts{"PacketSizeMode", kStream, Expert}, modes,
        [access] { return static_cast<std::size_t>(access.get().mode); },
        [access](std::size_t index) {
            return access.update([index](PacketSizeSetting& setting) {
                setting.mode = static_cast<PacketSizeMode>(index); // below the number of modes
            });
        });
    list.Add<ListedInteger>(
        ParameterFacts{"PacketSize", kStream, Expert, "bytes"},
        ListedInteger::Access{[access]() -> std::int64_t { return access.inForce(); },
                              [access](std::int64_t value) {
                                  return access.update([value](PacketSizeSetting& setting) {
                                      // within the limits
                                      setting.fixedBytes = static_cast<std::uint32_t>(value);
                                  });
                              },
                              kSmallestPacket, kLargestPacket});
}

} // namespace

void ListLinkParameters(const control::FoundCamera& camera, DeviceSession& session,
                        const PacketSizeAccess& packetSize, const NodeMapAccess& map, ParameterList& list)
{
    ListCamera(camera, session, list);
    ListHost(camera.via, list);
    ListCommands(session, list);
    ListHeartbeat(session, list);
    ListFeatures(map, list);
    ListStream(packetSize, list);
}
