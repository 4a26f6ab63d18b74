#include "VxDSSource/filter/VxDSSource.h"

#include "VxDSSource/filter/ComText.h"
#include "VxDSSource/filter/SettingsRecord.h"
#include "VxDSSource/stream/VxDSStream.h"

#include <string>
#include <tuple>

using vxds::Setting;

namespace {

BOOL ToBool(bool value)
{
    return value ? TRUE : FALSE;
}

/// Result of work on the saved default: 0, and 1 for whatever went wrong, which is no failure code.
HRESULT DoneOrOne(HRESULT result)
{
    return result == S_OK ? S_OK : S_FALSE;
}

/// Hands a text out when the call that fills it succeeds.
template <typename Call>
HRESULT FillText(BSTR* target, Call&& call)
{
    std::wstring text;
    const HRESULT result = call(text);
    return SUCCEEDED(result) ? ReturnText(text, target) : result;
}

} // namespace

HRESULT VxDSSource::ReadNumber(Setting setting, UINT* value)
{
    return OnPin([&](VxDSStream& pin) {
        *value = pin.Settings().Number(setting);
        return S_OK;
    });
}

HRESULT VxDSSource::WriteNumber(Setting setting, UINT value)
{
    return OnPin([&](VxDSStream& pin) {
        const bool isTaken = pin.Settings().Set(setting, static_cast<INT>(value)); // the same 32 bits
        return isTaken ? S_OK : E_INVALIDARG;
    });
}

HRESULT VxDSSource::ReadText(Setting setting, BSTR* value)
{
    return OnPin([&](VxDSStream& pin) { return ReturnText(pin.Settings().Text(setting), value); });
}

HRESULT VxDSSource::WriteText(Setting setting, BSTR value)
{
    return OnPin([&](VxDSStream& pin) {
        pin.Settings().Store(setting, TextOf(value));
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::GetRole(UINT* role)
{
    return ReadNumber(Setting::Role, role);
}

STDMETHODIMP VxDSSource::SetRole(UINT role)
{
    return WriteNumber(Setting::Role, role);
}

STDMETHODIMP VxDSSource::GetUnicastPort(UINT* port)
{
    return ReadNumber(Setting::UnicastPort, port);
}

STDMETHODIMP VxDSSource::SetUnicastPort(UINT port)
{
    return WriteNumber(Setting::UnicastPort, port);
}

STDMETHODIMP VxDSSource::GetMulticastAddress(BSTR* address)
{
    return ReadText(Setting::MulticastAddress, address);
}

STDMETHODIMP VxDSSource::SetMulticastAddress(BSTR address)
{
    return WriteText(Setting::MulticastAddress, address);
}

STDMETHODIMP VxDSSource::GetMulticastPort(UINT* port)
{
    return ReadNumber(Setting::MulticastPort, port);
}

STDMETHODIMP VxDSSource::SetMulticastPort(UINT port)
{
    return WriteNumber(Setting::MulticastPort, port);
}

STDMETHODIMP VxDSSource::GetDiagnosticsEnabled(BOOL* enabled)
{
    return OnPin([&](VxDSStream& pin) {
        *enabled = ToBool(pin.Settings().Flag(Setting::DiagnosticsEnabled));
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::SetDiagnosticsEnabled(BOOL enabled)
{
    return OnPin([&](VxDSStream& pin) {
        pin.SetDiagnosticsEnabled(enabled != FALSE);
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::GetDeviceId(BSTR* deviceId)
{
    return ReadText(Setting::DeviceId, deviceId);
}

STDMETHODIMP VxDSSource::SetDeviceId(BSTR deviceId)
{
    return WriteText(Setting::DeviceId, deviceId);
}

STDMETHODIMP VxDSSource::Disconnect()
{
    return OnPin([](VxDSStream& pin) {
        pin.CloseConnection();
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::Connect()
{
    return OnPin([](VxDSStream& pin) {
        pin.ApplyConnection();
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::GetSourceCount(UINT* count)
{
    return OnPin([&](VxDSStream& pin) {
        *count = pin.SourceCount();
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::GetSourceName(UINT index, BSTR* name)
{
    return OnPin([&](VxDSStream& pin) {
        return FillText(name, [&](std::wstring& text) { return pin.GetSourceName(index, text); });
    });
}

STDMETHODIMP VxDSSource::GetParamSource(BSTR* source)
{
    return ReadText(Setting::ParamSource, source);
}

STDMETHODIMP VxDSSource::SetParamSource(BSTR source)
{
    return WriteText(Setting::ParamSource, source);
}

STDMETHODIMP VxDSSource::GetParamChannel(UINT* channel)
{
    return ReadNumber(Setting::ParamChannel, channel);
}

STDMETHODIMP VxDSSource::SetParamChannel(UINT channel)
{
    return WriteNumber(Setting::ParamChannel, channel);
}

STDMETHODIMP VxDSSource::GetBufferCount(UINT* count)
{
    return ReadNumber(Setting::BufferCount, count);
}

STDMETHODIMP VxDSSource::SetBufferCount(UINT count)
{
    return WriteNumber(Setting::BufferCount, count);
}

STDMETHODIMP VxDSSource::GetDefaultBufferSize(UINT* bytes)
{
    return ReadNumber(Setting::DefaultBufferSize, bytes);
}

STDMETHODIMP VxDSSource::SetDefaultBufferSize(UINT bytes)
{
    return WriteNumber(Setting::DefaultBufferSize, bytes);
}

STDMETHODIMP VxDSSource::GetDropThreshold(UINT* threshold)
{
    return ReadNumber(Setting::DropThreshold, threshold);
}

STDMETHODIMP VxDSSource::SetDropThreshold(UINT threshold)
{
    return WriteNumber(Setting::DropThreshold, threshold);
}

STDMETHODIMP VxDSSource::GetWidth(UINT* widthPx)
{
    return OnPin([&](VxDSStream& pin) {
        *widthPx = pin.Statistics().LastImageSize().widthPx;
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::SetWidth(INT widthPx)
{
    return OnPin([&](VxDSStream& pin) { return pin.SetCameraSize("Width", widthPx); });
}

STDMETHODIMP VxDSSource::GetHeight(UINT* heightPx)
{
    return OnPin([&](VxDSStream& pin) {
        *heightPx = pin.Statistics().LastImageSize().heightPx;
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::SetHeight(INT heightPx)
{
    return OnPin([&](VxDSStream& pin) { return pin.SetCameraSize("Height", heightPx); });
}

STDMETHODIMP VxDSSource::GetParameterArray(UINT* selector)
{
    return OnPin([&](VxDSStream& pin) {
        *selector = pin.FeatureSelector();
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::SetParameterArray(UINT selector)
{
    return OnPin([&](VxDSStream& pin) { return pin.SetFeatureSelector(selector); });
}

STDMETHODIMP VxDSSource::IsParameterArrayAvailable(BOOL* available)
{
    return OnPin([&](VxDSStream& pin) {
        *available = ToBool(pin.AreFeaturesAvailable());
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::GetParameterCount(UINT* count)
{
    return OnPin([&](VxDSStream& pin) { return pin.GetFeatureCount(*count); });
}

STDMETHODIMP VxDSSource::GetParameterName(UINT index, BSTR* name)
{
    return OnPin([&](VxDSStream& pin) {
        return FillText(name, [&](std::wstring& text) { return pin.GetFeatureName(index, text); });
    });
}

STDMETHODIMP VxDSSource::GetParameterCategory(BSTR name, BSTR* category)
{
    return OnPin([&](VxDSStream& pin) {
        return FillText(category,
                        [&](std::wstring& text) { return pin.GetFeatureCategory(TextOf(name), text); });
    });
}

STDMETHODIMP VxDSSource::GetParameterValue(BSTR name, BSTR* value)
{
    return OnPin([&](VxDSStream& pin) {
        return FillText(value, [&](std::wstring& text) { return pin.GetFeatureValue(TextOf(name), text); });
    });
}

STDMETHODIMP VxDSSource::SetParameterValue(BSTR name, BSTR value, BSTR* error)
{
    std::wstring reason;
    const HRESULT result =
        OnPin([&](VxDSStream& pin) { return pin.SetFeatureValue(TextOf(name), TextOf(value), reason); });
    if (FAILED(result) && !reason.empty())
        std::ignore = ReturnText(reason, error); // without memory there is no reason to read
    return result;
}

STDMETHODIMP VxDSSource::GetParameterType(BSTR name, BSTR* type)
{
    return OnPin([&](VxDSStream& pin) {
        return FillText(type, [&](std::wstring& text) { return pin.GetFeatureType(TextOf(name), text); });
    });
}

STDMETHODIMP VxDSSource::GetParameterAccess(BSTR name, BOOL* available, BOOL* readable, BOOL* writable)
{
    return OnPin([&](VxDSStream& pin) {
        bool isAvailable = false;
        bool isReadable = false;
        bool isWritable = false;
        const HRESULT result = pin.GetFeatureAccess(TextOf(name), isAvailable, isReadable, isWritable);
        if (FAILED(result))
            return result;
        *available = ToBool(isAvailable);
        *readable = ToBool(isReadable);
        *writable = ToBool(isWritable);
        return result;
    });
}

STDMETHODIMP VxDSSource::ExecuteCommand(BSTR name, BSTR* error)
{
    std::wstring reason;
    const HRESULT result = OnPin([&](VxDSStream& pin) { return pin.ExecuteFeature(TextOf(name), reason); });
    if (result == E_FAIL)
        std::ignore = ReturnText(reason, error); // empty where the camera gave none
    return result;
}

STDMETHODIMP VxDSSource::GetEnumEntryCount(BSTR name, UINT* count)
{
    return OnPin([&](VxDSStream& pin) { return pin.GetEnumEntryCount(TextOf(name), *count); });
}

STDMETHODIMP VxDSSource::GetEnumEntryName(BSTR name, UINT index, BSTR* entry)
{
    return OnPin([&](VxDSStream& pin) {
        return FillText(entry,
                        [&](std::wstring& text) { return pin.GetEnumEntryName(TextOf(name), index, text); });
    });
}

STDMETHODIMP VxDSSource::GetParameterVisibility(BSTR name, UINT* visibility)
{
    return OnPin([&](VxDSStream& pin) { return pin.GetFeatureVisibility(TextOf(name), *visibility); });
}

STDMETHODIMP VxDSSource::GetOutputPixelType(UINT* type)
{
    return ReadNumber(Setting::OutputPixelType, type);
}

STDMETHODIMP VxDSSource::SetOutputPixelType(UINT type)
{
    return OnPin([&](VxDSStream& pin) { return pin.SetOutputPixelType(type); });
}

STDMETHODIMP VxDSSource::GetKernelSize(UINT* size)
{
    return ReadNumber(Setting::KernelSize, size);
}

STDMETHODIMP VxDSSource::SetKernelSize(INT size)
{
    return WriteNumber(Setting::KernelSize, static_cast<UINT>(size)); // the same 32 bits
}

STDMETHODIMP VxDSSource::GetZoomValue(UINT* zoom)
{
    return ReadNumber(Setting::ZoomValue, zoom);
}

STDMETHODIMP VxDSSource::SetZoomValue(INT zoom)
{
    return WriteNumber(Setting::ZoomValue, static_cast<UINT>(zoom)); // the same 32 bits
}

STDMETHODIMP VxDSSource::GetOutputSize(UINT* widthPx, UINT* heightPx)
{
    return OnPin([&](VxDSStream& pin) {
        *widthPx = pin.Settings().Number(Setting::OutputWidth);
        *heightPx = pin.Settings().Number(Setting::OutputHeight);
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::SetOutputSize(INT widthPx, INT heightPx)
{
    return OnPin([&](VxDSStream& pin) { return pin.SetOutputSize(widthPx, heightPx); });
}

STDMETHODIMP VxDSSource::SaveDefault()
{
    return DoneOrOne(OnPin([](VxDSStream& pin) { return pin.SaveDefault() ? S_OK : S_FALSE; }));
}

STDMETHODIMP VxDSSource::ClearDefault()
{
    return DoneOrOne(OnPin([](VxDSStream& pin) { return pin.ClearDefault() ? S_OK : S_FALSE; }));
}

STDMETHODIMP VxDSSource::GetDefaultSummary(BSTR* summary)
{
    return OnPin([&](VxDSStream& pin) { return ReturnText(pin.DefaultSummary(), summary); });
}
