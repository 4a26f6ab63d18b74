#include "vxctl/Camera.h"

#include "VxCamera/surface/GevDevice.h"

#include "vxctl/Text.h"
#include "vxctl/TextFile.h"

#include <utility>
#include <vector>

namespace vxctl {
namespace {

const char* RemedyFor(VxError code)
{
    switch (code) {
    case VxError::NotFound:
        return "; 'vxctl list' shows the cameras that answer";
    case VxError::Ambiguous:
        return "; name it by its MAC address, which 'vxctl list' shows";
    case VxError::AccessDenied:
        return "; end the program that controls it";
    case VxError::InvalidConfiguration:
        return "; 'vxctl force-ip' gives it another address";
    case VxError::InvalidData:
    case VxError::NotSupported:
        return "; '--xml FILE' uses another description";
    default:
        return "";
    }
}

Failure ConnectFailure(const std::string& camera, const VxResult& result)
{
    return {ExitCode::Camera, "cannot connect to camera '" + camera + "': " +
                                  Printable(result.GetDescription().Narrow()) + RemedyFor(result.Code())};
}

/// How the camera's features are read, where its description is wrong about it.
VxResult MendReading(VxGenParameterArray& link, const Request& request)
{
    VxGenParameter* const order = link.Get(VxString("RegisterByteOrder"));
    VxGenParameter* const caching = link.Get(VxString("FeatureCaching"));
    if (order == nullptr || caching == nullptr)
        return VxResult(VxError::NotSupported, "the link to this camera does not offer it");
    if (request.registers)
        if (VxResult set = order->FromString(VxString(*request.registers)); !set.IsOK())
            return set;
    return caching->FromString(VxString(request.isCaching ? "true" : "false"));
}

} // namespace

std::optional<Failure> Camera::Connect(const Request& request)
{
    VxResult result;
    if (request.xml) {
        const auto xml = ReadTextFile(*request.xml);
        if (!xml)
            return Failure{ExitCode::File, xml.Error().GetDescription().Narrow()};
        if (xml->empty()) // which would mean the camera's own
            return Failure{ExitCode::File, "cannot use the description '" + *request.xml + "': it is empty"};
        auto device = GevDevice::Connect(VxString(request.camera), *xml);
        if (!device && device.Error().Code() == VxError::InvalidData)
            return Failure{ExitCode::File, "cannot use the description '" + *request.xml +
                                               "': " + Printable(device.Error().GetDescription().Narrow())};
        if (!device)
            return ConnectFailure(request.camera, device.Error());
        m_device.reset(std::exchange(*device, nullptr).release());
    } else {
        m_device.reset(VxDevice::CreateAndConnect(VxString(request.camera), &result));
        if (m_device == nullptr || !result.IsOK())
            return ConnectFailure(request.camera, result);
    }
    if (const VxResult set = MendReading(*m_device->GetCommunicationParameters(), request); !set.IsOK())
        return FailureOf("--registers, --no-cache", set);
    m_features =
        request.subject == Subject::Link ? m_device->GetCommunicationParameters() : m_device->GetParameters();
    return std::nullopt;
}

std::optional<Failure> Camera::Find(const std::string& name, VxGenParameter*& feature)
{
    feature = m_features->Get(VxString(name));
    if (feature != nullptr)
        return std::nullopt;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < m_features->GetCount(); ++i)
        names.push_back(m_features->Get(i)->GetName().Narrow());
    const std::string nearest = NearestName(name, names);
    const std::string remedy =
        nearest.empty() ? "'vxctl features CAMERA' shows all" : "did you mean '" + Printable(nearest) + "'?";
    return Failure{ExitCode::Refused, "there is no feature '" + name + "': " + remedy};
}

Failure Camera::FailureOf(const std::string& feature, const VxResult& result) const
{
    const std::string text = Printable(result.GetDescription().Narrow());
    const std::string sentence = text.starts_with(feature) ? text : feature + ": " + text;
    return {m_device->IsConnected() ? ExitCode::Refused : ExitCode::Camera, sentence};
}

} // namespace vxctl
