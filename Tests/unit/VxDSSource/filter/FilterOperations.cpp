#include "FilterOperations.h"

#include "BaseClasses/VxComPtr.h"
#include "support/camera/CameraDouble.h"

#include <oleauto.h>

namespace {

/// Texts of the operations: longer than what a string holds without memory of its own.
constexpr wchar_t kText[] = L"a text that needs memory of its own";
constexpr wchar_t kInteger[] = L"AnIntegerWithALongName";
constexpr wchar_t kEnum[] = L"AnEnumerationWithALongName";
constexpr wchar_t kCommand[] = L"ACommandWithALongName";

/// An argument.
class Argument final {
public:
    explicit Argument(const wchar_t* text) : m_text(::SysAllocString(text)) {}
    ~Argument() { ::SysFreeString(m_text); }
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;
    operator BSTR() const { return m_text; } // NOLINT(google-explicit-constructor)

private:
    BSTR m_text;
};

/// A text that a method returns.
class Returned final {
public:
    ~Returned() { ::SysFreeString(m_text); }
    operator BSTR*() { return &m_text; } // NOLINT(google-explicit-constructor)

private:
    BSTR m_text = nullptr;
};

template <auto kMethod>
HRESULT ReadNumber(FilterUnderTest& filter)
{
    UINT value = 0;
    return (filter.control.*kMethod)(&value);
}

template <auto kMethod>
HRESULT WriteZero(FilterUnderTest& filter)
{
    return (filter.control.*kMethod)(0);
}

template <auto kMethod>
HRESULT ReadText(FilterUnderTest& filter)
{
    return (filter.control.*kMethod)(Returned());
}

template <auto kMethod>
HRESULT WriteText(FilterUnderTest& filter)
{
    return (filter.control.*kMethod)(Argument(kText));
}

template <auto kMethod>
HRESULT ReadFlag(FilterUnderTest& filter)
{
    BOOL value = FALSE;
    return (filter.control.*kMethod)(&value);
}

template <auto kMethod>
HRESULT Do(FilterUnderTest& filter)
{
    return (filter.control.*kMethod)();
}

HRESULT SaveToMemory(FilterUnderTest& filter, VxComPtr<IStream>& stream)
{
    const HRESULT made = ::CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    return FAILED(made) ? made : filter.persist.Save(stream.Get(), TRUE);
}

HRESULT Save(FilterUnderTest& filter)
{
    VxComPtr<IStream> stream;
    return SaveToMemory(filter, stream);
}

HRESULT Load(FilterUnderTest& filter)
{
    VxComPtr<IStream> stream;
    const HRESULT saved = SaveToMemory(filter, stream);
    if (FAILED(saved))
        return saved;
    const HRESULT sought = stream->Seek({}, STREAM_SEEK_SET, nullptr);
    return FAILED(sought) ? sought : filter.persist.Load(stream.Get());
}

HRESULT SetFeature(FilterUnderTest& filter, const wchar_t* name)
{
    return filter.control.SetParameterValue(Argument(name), Argument(L"320"), Returned());
}

HRESULT GetPages(FilterUnderTest& filter)
{
    CAUUID pages{};
    const HRESULT result = filter.pages.GetPages(&pages);
    ::CoTaskMemFree(pages.pElems);
    return result;
}

using I = IVxDSSource;
using F = FilterUnderTest;
constexpr auto kFrame = Beside::Frame;
constexpr auto kNone = Beside::None;

} // namespace

const std::vector<FilterOperation>& FilterOperations()
{
    static const std::vector<FilterOperation> operations = {
        {"GetRole", kFrame, ReadNumber<&I::GetRole>},
        {"SetRole", kFrame, WriteZero<&I::SetRole>},
        {"GetUnicastPort", kFrame, ReadNumber<&I::GetUnicastPort>},
        {"SetUnicastPort", kFrame, WriteZero<&I::SetUnicastPort>},
        {"GetMulticastAddress", kFrame, ReadText<&I::GetMulticastAddress>},
        {"SetMulticastAddress", kFrame, WriteText<&I::SetMulticastAddress>},
        {"GetMulticastPort", kFrame, ReadNumber<&I::GetMulticastPort>},
        {"SetMulticastPort", kFrame, WriteZero<&I::SetMulticastPort>},
        {"GetDiagnosticsEnabled", kFrame, ReadFlag<&I::GetDiagnosticsEnabled>},
        {"SetDiagnosticsEnabled", kNone, WriteZero<&I::SetDiagnosticsEnabled>},
        {"GetDeviceId", kFrame, ReadText<&I::GetDeviceId>},
        {"SetDeviceId", kFrame, WriteText<&I::SetDeviceId>},
        {"Disconnect", kNone, Do<&I::Disconnect>},
        {"Connect", kNone, Do<&I::Connect>},
        {"GetSourceCount", kFrame, ReadNumber<&I::GetSourceCount>},
        {"GetSourceName", kFrame, [](F& f) { return f.control.GetSourceName(1, Returned()); }},
        {"GetParamSource", kFrame, ReadText<&I::GetParamSource>},
        {"SetParamSource", kFrame, [](F& f) { return f.control.SetParamSource(Argument(L"")); }},
        {"GetParamChannel", kFrame, ReadNumber<&I::GetParamChannel>},
        {"SetParamChannel", kFrame, WriteZero<&I::SetParamChannel>},
        {"GetBufferCount", kFrame, ReadNumber<&I::GetBufferCount>},
        {"SetBufferCount", kFrame, WriteZero<&I::SetBufferCount>},
        {"GetDefaultBufferSize", kFrame, ReadNumber<&I::GetDefaultBufferSize>},
        {"SetDefaultBufferSize", kFrame, WriteZero<&I::SetDefaultBufferSize>},
        {"GetDropThreshold", kFrame, ReadNumber<&I::GetDropThreshold>},
        {"SetDropThreshold", kFrame, WriteZero<&I::SetDropThreshold>},
        {"GetWidth", kFrame, ReadNumber<&I::GetWidth>},
        {"SetWidth", kNone, [](F& f) { return f.control.SetWidth(320); }},
        {"GetHeight", kFrame, ReadNumber<&I::GetHeight>},
        {"SetHeight", kNone, [](F& f) { return f.control.SetHeight(240); }},
        {"GetParameterArray", kFrame, ReadNumber<&I::GetParameterArray>},
        {"SetParameterArray", kFrame, [](F& f) { return f.control.SetParameterArray(1); }},
        {"IsParameterArrayAvailable", kFrame, ReadFlag<&I::IsParameterArrayAvailable>},
        {"GetParameterCount", kFrame, ReadNumber<&I::GetParameterCount>},
        {"GetParameterName", kFrame, [](F& f) { return f.control.GetParameterName(5, Returned()); }},
        {"GetParameterCategory", kFrame,
         [](F& f) { return f.control.GetParameterCategory(Argument(kInteger), Returned()); }},
        {"GetParameterValue", kFrame,
         [](F& f) { return f.control.GetParameterValue(Argument(kInteger), Returned()); }},
        {"SetParameterValue", kFrame, [](F& f) { return SetFeature(f, kInteger); }},
        {"SetParameterValue of the size", kNone, [](F& f) { return SetFeature(f, L"Width"); }},
        {"GetParameterType", kFrame,
         [](F& f) { return f.control.GetParameterType(Argument(kInteger), Returned()); }},
        {"GetParameterAccess", kFrame,
         [](F& f) {
             BOOL flags[3] = {};
             return f.control.GetParameterAccess(Argument(kInteger), &flags[0], &flags[1], &flags[2]);
         }},
        {"ExecuteCommand", kFrame,
         [](F& f) { return f.control.ExecuteCommand(Argument(kCommand), Returned()); }},
        {"GetEnumEntryCount", kFrame,
         [](F& f) {
             UINT count = 0;
             return f.control.GetEnumEntryCount(Argument(kEnum), &count);
         }},
        {"GetEnumEntryName", kFrame,
         [](F& f) { return f.control.GetEnumEntryName(Argument(kEnum), 0, Returned()); }},
        {"GetParameterVisibility", kFrame,
         [](F& f) {
             UINT level = 0;
             return f.control.GetParameterVisibility(Argument(kInteger), &level);
         }},
        {"GetOutputPixelType", kFrame, ReadNumber<&I::GetOutputPixelType>},
        {"SetOutputPixelType", kNone, WriteZero<&I::SetOutputPixelType>},
        {"GetKernelSize", kFrame, ReadNumber<&I::GetKernelSize>},
        {"SetKernelSize", kFrame, WriteZero<&I::SetKernelSize>},
        {"GetZoomValue", kFrame, ReadNumber<&I::GetZoomValue>},
        {"SetZoomValue", kFrame, WriteZero<&I::SetZoomValue>},
        {"GetOutputSize", kFrame,
         [](F& f) {
             UINT width = 0;
             UINT height = 0;
             return f.control.GetOutputSize(&width, &height);
         }},
        {"SetOutputSize", kNone, [](F& f) { return f.control.SetOutputSize(320, 240); }},
        {"SaveDefault", kNone, Do<&I::SaveDefault>},
        {"ClearDefault", kFrame, Do<&I::ClearDefault>},
        {"GetDefaultSummary", kFrame, ReadText<&I::GetDefaultSummary>},
        {"GetNumDropped", kFrame,
         [](F& f) {
             long count = 0;
             return f.frames.GetNumDropped(&count);
         }},
        {"GetNumNotDropped", kFrame,
         [](F& f) {
             long count = 0;
             return f.frames.GetNumNotDropped(&count);
         }},
        {"GetDroppedInfo", kFrame,
         [](F& f) {
             long copied = 0;
             return f.frames.GetDroppedInfo(0, nullptr, &copied);
         }},
        {"GetAverageFrameSize", kFrame,
         [](F& f) {
             long bytes = 0;
             return f.frames.GetAverageFrameSize(&bytes);
         }},
        {"GetPages", kFrame, GetPages},
        {"IsDirty", kFrame, [](F& f) { return f.persist.IsDirty() == S_FALSE ? S_OK : E_FAIL; }},
        {"Save", kNone, Save},
        {"Load", kNone, Load},
        {"GetSizeMax", kFrame,
         [](F& f) {
             ULARGE_INTEGER bytes{};
             return f.persist.GetSizeMax(&bytes);
         }},
    };
    return operations;
}

void AddFeaturesOfOperations()
{
    ScriptedFeatures& device = *TheCamera().device;
    device.AddInteger("AnIntegerWithALongName", 1).category = "ACategory\\WithALongPath";
    device.AddEnum("AnEnumerationWithALongName", {"AnEntryWithALongName", "AnotherEntryWithALongName"});
    device.Add<ScriptedCommand>("ACommandWithALongName");
    device.AddEnum("SourceSelector", {"AnEntryWithALongName", "AnotherEntryWithALongName"});
}
