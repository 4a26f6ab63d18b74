#include "vxgrab/FilterControl.h"

#include "vxgrab/ComFailure.h"
#include "vxgrab/ComText.h"

#include <optional>

namespace vxgrab {
namespace {

// Fixed by the control interface.
constexpr UINT kControllerRole = 0;
constexpr UINT kCameraArray = 1;

/// Collects the first failure of a row of setters.
class SettingWriter final {
public:
    explicit SettingWriter(IVxDSSource& filter) : m_filter(filter) {}

    template <typename Value, typename Argument>
    void Write(const char* name, const std::optional<Value>& value, HRESULT (IVxDSSource::*setter)(Argument))
    {
        if (value)
            Note(name, (m_filter.*setter)(static_cast<Argument>(*value)));
    }

    void Write(const char* name, const std::optional<std::string>& value,
               HRESULT (IVxDSSource::*setter)(BSTR))
    {
        if (value)
            Note(name, (m_filter.*setter)(ComText(*value).Get()));
    }

    void Note(const char* name, HRESULT result)
    {
        if (FAILED(result) && m_result.IsOK())
            m_result = ComFailure(std::string("set ") + name, result);
    }

    [[nodiscard]] const VxResult& Result() const { return m_result; }

private:
    IVxDSSource& m_filter; // borrowed: held by the caller for the writer's whole life
    VxResult m_result = VxResult::Ok();
};

} // namespace

VxResult FilterControl::Apply(const FilterSettings& settings)
{
    SettingWriter writer(*m_filter.Get());
    writer.Write("--role", settings.role, &IVxDSSource::SetRole);
    writer.Write("--unicast-port", settings.unicastPort, &IVxDSSource::SetUnicastPort);
    writer.Write("--multicast-ip", settings.multicastAddress, &IVxDSSource::SetMulticastAddress);
    writer.Write("--multicast-port", settings.multicastPort, &IVxDSSource::SetMulticastPort);
    writer.Write("--diagnostics", settings.diagnostics, &IVxDSSource::SetDiagnosticsEnabled);
    writer.Write("--device-id", settings.deviceId, &IVxDSSource::SetDeviceId);
    writer.Write("--source", settings.source, &IVxDSSource::SetParamSource);
    writer.Write("--channel", settings.channel, &IVxDSSource::SetParamChannel);
    writer.Write("--buffer-count", settings.bufferCount, &IVxDSSource::SetBufferCount);
    writer.Write("--buffer-size", settings.bufferBytes, &IVxDSSource::SetDefaultBufferSize);
    writer.Write("--drop-threshold", settings.dropThreshold, &IVxDSSource::SetDropThreshold);
    writer.Write("--kernel", settings.kernelSize, &IVxDSSource::SetKernelSize);
    writer.Write("--zoom", settings.zoom, &IVxDSSource::SetZoomValue);
    // The pixel type disconnects the camera, so it comes before everything that needs one.
    writer.Write("--pixel-type", settings.pixelType, &IVxDSSource::SetOutputPixelType);
    if (settings.outputWidthPx && settings.outputHeightPx)
        writer.Note("--output-size",
                    m_filter->SetOutputSize(*settings.outputWidthPx, *settings.outputHeightPx));
    return writer.Result();
}

VxResult FilterControl::Connect()
{
    const std::string deviceId = DeviceId();
    if (deviceId.empty())
        return VxResult(VxError::InvalidParameter,
                        "no camera is set: name one with --device-id (its MAC address, IP "
                        "address, serial number or name)");
    HRESULT result = m_filter->Connect();
    if (FAILED(result))
        return ComFailure("connect to camera '" + deviceId + "'", result);

    UINT role = kControllerRole;
    BOOL isAvailable = FALSE;
    result = m_filter->GetRole(&role);
    if (SUCCEEDED(result))
        result = m_filter->SetParameterArray(kCameraArray);
    if (SUCCEEDED(result))
        result = m_filter->IsParameterArrayAvailable(&isAvailable);
    if (FAILED(result))
        return ComFailure("ask whether the camera is connected", result);
    if (role == kControllerRole && !isAvailable)
        return VxResult(
            VxError::NotConnected,
            "no connection to camera '" + deviceId +
                "': check that it is switched on and in this network, and that no other program controls it");
    return VxResult::Ok();
}

std::string FilterControl::DeviceId() const
{
    ComText deviceId;
    std::ignore = m_filter->GetDeviceId(deviceId.Put()); // an empty text says as much as a failure
    return deviceId.Utf8();
}

std::string FilterControl::CameraModel()
{
    const std::string maker = ReadCameraText("DeviceVendorName");
    const std::string model = ReadCameraText("DeviceModelName");
    return maker.empty() || model.empty() ? maker + model : maker + " " + model;
}

std::string FilterControl::ReadCameraText(const char* feature)
{
    ComText value;
    if (FAILED(m_filter->SetParameterArray(kCameraArray)) ||
        FAILED(m_filter->GetParameterValue(ComText(feature).Get(), value.Put())))
        return {};
    return value.Utf8();
}

VxResult FilterControl::SaveDefault()
{
    // S_FALSE is how the interface says that the registry cannot be written.
    const HRESULT result = m_filter->SaveDefault();
    if (result == S_OK)
        return VxResult::Ok();
    return FAILED(result) ? ComFailure("save the default", result)
                          : VxResult(VxError::Failed,
                                     "the default cannot be saved: this user's registry cannot be written");
}

VxResult FilterControl::ClearDefault()
{
    // S_FALSE says that there never was a default: what is wanted is the case already.
    const HRESULT result = m_filter->ClearDefault();
    return FAILED(result) ? ComFailure("delete the default", result) : VxResult::Ok();
}

} // namespace vxgrab
