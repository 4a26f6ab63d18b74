#include "VxDSSource/pages/ParameterValues.h"

#include "VxDSSource/pages/ComString.h"

namespace pages {

namespace {

constexpr std::int64_t kKernelEntries = 3; // "0", "3", "5"

using NumberGetter = HRESULT (STDMETHODCALLTYPE IVxDSSource::*)(UINT*);
using TextGetter = HRESULT (STDMETHODCALLTYPE IVxDSSource::*)(BSTR*);
using TextSetter = HRESULT (STDMETHODCALLTYPE IVxDSSource::*)(BSTR);

/// The same 32 bits, with a sign: as people type them.
std::int32_t Signed(UINT value)
{
    return static_cast<std::int32_t>(value);
}

void Get(IVxDSSource& filter, NumberGetter getter, std::int32_t& value)
{
    auto read = static_cast<UINT>(value);
    if (SUCCEEDED((filter.*getter)(&read)))
        value = Signed(read);
}

void Get(IVxDSSource& filter, TextGetter getter, std::wstring& value)
{
    ComString text;
    if (SUCCEEDED((filter.*getter)(text.Put())))
        value = text.Text();
}

void Set(IVxDSSource& filter, TextSetter setter, const std::wstring& value)
{
    (filter.*setter)(ComString(value).Get());
}

} // namespace

void ParameterValues::Load(IVxDSSource& filter)
{
    Get(filter, &IVxDSSource::GetRole, role);
    Get(filter, &IVxDSSource::GetUnicastPort, unicastPort);
    Get(filter, &IVxDSSource::GetMulticastPort, multicastPort);
    BOOL isEnabled = isDiagnosticsEnabled ? TRUE : FALSE;
    filter.GetDiagnosticsEnabled(&isEnabled);
    isDiagnosticsEnabled = isEnabled != FALSE;
    Get(filter, &IVxDSSource::GetParamChannel, channel);
    Get(filter, &IVxDSSource::GetBufferCount, bufferCount);
    Get(filter, &IVxDSSource::GetDefaultBufferSize, defaultBufferBytes);
    Get(filter, &IVxDSSource::GetDropThreshold, dropThreshold);
    Get(filter, &IVxDSSource::GetWidth, deviceWidthPx);
    Get(filter, &IVxDSSource::GetHeight, deviceHeightPx);
    Get(filter, &IVxDSSource::GetOutputPixelType, outputPixelType);
    Get(filter, &IVxDSSource::GetKernelSize, kernelSize);
    Get(filter, &IVxDSSource::GetZoomValue, zoom);
    auto widthPx = static_cast<UINT>(outputWidthPx);
    auto heightPx = static_cast<UINT>(outputHeightPx);
    if (SUCCEEDED(filter.GetOutputSize(&widthPx, &heightPx))) {
        outputWidthPx = Signed(widthPx);
        outputHeightPx = Signed(heightPx);
    }
    LoadTexts(filter);
}

void ParameterValues::LoadTexts(IVxDSSource& filter)
{
    Get(filter, &IVxDSSource::GetMulticastAddress, multicastAddress);
    Get(filter, &IVxDSSource::GetDeviceId, deviceId);
    LoadSources(filter);
    Get(filter, &IVxDSSource::GetParamSource, source);
    Get(filter, &IVxDSSource::GetDefaultSummary, defaultSummary);
}

void ParameterValues::LoadSources(IVxDSSource& filter)
{
    sources.clear();
    UINT count = 0;
    filter.GetSourceCount(&count);
    for (UINT index = 0; index < count; ++index) {
        ComString name;
        if (SUCCEEDED(filter.GetSourceName(index, name.Put())))
            sources.push_back(name.Text());
    }
}

void ParameterValues::Store(IVxDSSource& filter) const
{
    filter.SetRole(static_cast<UINT>(role));
    filter.SetUnicastPort(static_cast<UINT>(unicastPort));
    filter.SetMulticastPort(static_cast<UINT>(multicastPort));
    filter.SetDiagnosticsEnabled(isDiagnosticsEnabled ? TRUE : FALSE);
    filter.SetParamChannel(static_cast<UINT>(channel));
    filter.SetBufferCount(static_cast<UINT>(bufferCount));
    filter.SetDefaultBufferSize(static_cast<UINT>(defaultBufferBytes));
    filter.SetDropThreshold(static_cast<UINT>(dropThreshold));
    filter.SetZoomValue(zoom);
    filter.SetOutputSize(outputWidthPx, outputHeightPx);
    filter.SetOutputPixelType(static_cast<UINT>(outputPixelType));
    filter.SetKernelSize(kernelSize);
    Set(filter, &IVxDSSource::SetMulticastAddress, multicastAddress);
    Set(filter, &IVxDSSource::SetDeviceId, deviceId);
    Set(filter, &IVxDSSource::SetParamSource, source);
}

std::optional<std::size_t> KernelEntryOf(std::int32_t kernelSize)
{
    if (kernelSize == 0)
        return 0;
    const std::int64_t entry = (std::int64_t{kernelSize} - 1) / 2;
    if (kernelSize < 0 || entry >= kKernelEntries)
        return std::nullopt;
    return static_cast<std::size_t>(entry);
}

std::int32_t KernelSizeOf(std::size_t entry)
{
    return entry == 0 ? 0 : static_cast<std::int32_t>(2 * entry + 1); // 3 or 5
}

} // namespace pages
