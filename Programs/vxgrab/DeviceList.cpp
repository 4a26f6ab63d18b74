#include "vxgrab/DeviceList.h"

#include "VxBase/VxString.h"
#include "VxDSSource/filter/Identifiers.h"

#include "vxgrab/ComFailure.h"
#include "vxgrab/ComText.h"

#include <dshow.h>

#include <algorithm>
#include <charconv>
#include <optional>

namespace vxgrab {
namespace {

constexpr const char* kRegisterHint =
    "run 'regsvr32 VxDSSource.dll' as administrator, or name the file with --dll";

std::string ReadText(IPropertyBag& bag, const wchar_t* property)
{
    VARIANT value;
    ::VariantInit(&value);
    std::string text;
    if (SUCCEEDED(bag.Read(property, &value, nullptr)) && value.vt == VT_BSTR && value.bstrVal != nullptr)
        text = VxUtf8FromWide({value.bstrVal, ::SysStringLen(value.bstrVal)});
    ::VariantClear(&value);
    return text;
}

bool IsOurClass(const std::string& classText)
{
    CLSID classId{};
    return SUCCEEDED(::CLSIDFromString(VxWideFromUtf8(classText).c_str(), &classId)) &&
           ::IsEqualGUID(classId, CLSID_VxDSSource);
}

std::string DisplayName(IMoniker& moniker)
{
    ComPtr<IBindCtx> context;
    LPOLESTR name = nullptr;
    if (FAILED(::CreateBindCtx(0, context.Put())) ||
        FAILED(moniker.GetDisplayName(context.Get(), nullptr, &name)))
        return {};
    std::string text = VxUtf8FromWide(name);
    ::CoTaskMemFree(name);
    return text;
}

CaptureDevice ReadDevice(ComPtr<IMoniker> moniker)
{
    CaptureDevice device;
    device.displayName = DisplayName(*moniker.Get());
    ComPtr<IPropertyBag> bag;
    if (SUCCEEDED(moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, bag.PutVoid()))) {
        device.friendlyName = ReadText(*bag.Get(), L"FriendlyName");
        device.devicePath = ReadText(*bag.Get(), L"DevicePath");
        device.isOurs = IsOurClass(ReadText(*bag.Get(), L"CLSID"));
    }
    device.moniker = std::move(moniker);
    return device;
}

std::wstring Lower(const std::string& utf8)
{
    std::wstring text = VxWideFromUtf8(utf8);
    ::CharLowerBuffW(text.data(), static_cast<DWORD>(text.size())); // device names are short
    return text;
}

std::optional<std::size_t> NumberIn(std::string_view text)
{
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

VxExpected<std::size_t> OnlyMatch(const std::vector<CaptureDevice>& devices,
                                  const std::vector<std::size_t>& matches, const std::string& wish)
{
    if (matches.size() == 1)
        return matches.front();
    if (matches.empty())
        return VxResult(VxError::InvalidParameter,
                        "no capture device is called '" + wish + "': vxgrab --list shows them");
    std::string text = "'" + wish + "' fits several capture devices; give the number of one:";
    for (const std::size_t match : matches)
        text += "\n  " + std::to_string(match) + "  " + devices[match].friendlyName;
    return VxResult(VxError::InvalidParameter, text);
}

template <typename Matches>
std::vector<std::size_t> AllThat(const std::vector<CaptureDevice>& devices, Matches matches)
{
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        if (matches(devices[i]))
            found.push_back(i);
    }
    return found;
}

VxExpected<std::size_t> ChooseOurs(const std::vector<CaptureDevice>& devices)
{
    const auto ours =
        std::find_if(devices.begin(), devices.end(), [](const auto& device) { return device.isOurs; });
    if (ours == devices.end())
        return VxResult(VxError::NotFound, "the filter \"" + VxUtf8FromWide(kFilterName) +
                                               "\" is not registered: " + kRegisterHint +
                                               ". Another device is chosen with --device");
    return static_cast<std::size_t>(ours - devices.begin());
}

} // namespace

VxExpected<std::vector<CaptureDevice>> ListCaptureDevices()
{
    ComPtr<ICreateDevEnum> system;
    HRESULT result = ::CoCreateInstance(CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC_SERVER,
                                        IID_ICreateDevEnum, system.PutVoid());
    if (FAILED(result))
        return ComFailure("list the capture devices", result);

    ComPtr<IEnumMoniker> monikers;
    result = system->CreateClassEnumerator(CLSID_VideoInputDeviceCategory, monikers.Put(), 0);
    if (FAILED(result))
        return ComFailure("list the capture devices", result);
    std::vector<CaptureDevice> devices;
    if (result != S_OK) // S_FALSE: the category is empty, and there is no enumerator
        return devices;

    ComPtr<IMoniker> moniker;
    while (monikers->Next(1, moniker.Put(), nullptr) == S_OK)
        devices.push_back(ReadDevice(std::move(moniker)));
    return devices;
}

VxExpected<std::size_t> ChooseDevice(const std::vector<CaptureDevice>& devices, std::string_view wish)
{
    if (wish.empty())
        return ChooseOurs(devices);
    if (const auto number = NumberIn(wish); number && *number < devices.size())
        return *number;

    const std::string wanted(wish);
    const auto exact = AllThat(devices, [&](const CaptureDevice& device) {
        return device.friendlyName == wanted || device.displayName == wanted;
    });
    if (!exact.empty())
        return OnlyMatch(devices, exact, wanted);
    const std::wstring part = Lower(wanted);
    return OnlyMatch(devices,
                     AllThat(devices,
                             [&](const CaptureDevice& device) {
                                 return Lower(device.friendlyName).find(part) != std::wstring::npos;
                             }),
                     wanted);
}

VxExpected<ComPtr<IBaseFilter>> CreateFilter(const CaptureDevice& device)
{
    ComPtr<IBaseFilter> filter;
    const HRESULT result = device.moniker->BindToObject(nullptr, nullptr, IID_IBaseFilter, filter.PutVoid());
    if (FAILED(result))
        return ComFailure("open the device \"" + device.friendlyName + "\"", result);
    return filter;
}

std::string DescribeDevices(const std::vector<CaptureDevice>& devices)
{
    if (devices.empty())
        return std::string("no capture device is registered; for the filter \"") +
               VxUtf8FromWide(kFilterName) + "\" " + kRegisterHint + "\n";
    std::string text;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const CaptureDevice& device = devices[i];
        text += (device.isOurs ? "* " : "  ") + std::to_string(i) + "  " + device.friendlyName + "\n       " +
                device.displayName + "\n";
        if (!device.devicePath.empty())
            text += "       " + device.devicePath + "\n";
    }
    return text;
}

} // namespace vxgrab
