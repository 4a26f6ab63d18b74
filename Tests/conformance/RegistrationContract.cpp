#include "conformance/FilterConformanceTest.h"

#include <objbase.h>
#include <strmif.h>
#include <uuids.h>

#include <algorithm>
#include <cwctype>
#include <optional>
#include <string>

namespace {

constexpr HRESULT kNoEntry = static_cast<HRESULT>(0x80070002);
constexpr LPCWSTR kVideoInputInstances = L"CLSID\\{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\Instance\\";
constexpr LPCWSTR kGeneralInstances = L"CLSID\\{083863F1-70DE-11D0-BD40-00A0C911CE86}\\Instance\\";

std::wstring Text(REFGUID guid)
{
    WCHAR text[39] = {};
    ::StringFromGUID2(guid, text, 39);
    return text;
}

std::optional<std::wstring> Value(const std::wstring& key, LPCWSTR name)
{
    WCHAR text[1024] = {};
    DWORD bytes = sizeof(text);
    if (::RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &bytes) !=
        ERROR_SUCCESS)
        return std::nullopt;
    return text;
}

bool HasKey(const std::wstring& key)
{
    HKEY opened = nullptr;
    if (::RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS)
        return false;
    ::RegCloseKey(opened);
    return true;
}

/// Keys below a key, at any depth, whose name contains a text; case does not count.
std::vector<std::wstring> KeysThatContain(HKEY root, const std::wstring& path, const std::wstring& text)
{
    std::vector<std::wstring> found;
    HKEY key = nullptr;
    if (::RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return found;
    WCHAR name[256] = {};
    for (DWORD index = 0; ::RegEnumKeyW(key, index, name, 256) == ERROR_SUCCESS; ++index) {
        std::wstring upper(name);
        std::transform(upper.begin(), upper.end(), upper.begin(),
                       [](wchar_t unit) { return static_cast<wchar_t>(std::towupper(unit)); });
        const std::wstring child = path.empty() ? name : path + L"\\" + name;
        if (upper.find(text) != std::wstring::npos)
            found.push_back(child);
        const auto below = KeysThatContain(root, child, text);
        found.insert(found.end(), below.begin(), below.end());
    }
    ::RegCloseKey(key);
    return found;
}

/// A listed capture device.
struct Device {
    VxComPtr<IMoniker> moniker;
    std::wstring displayName;
};

std::vector<Device> VideoInputDevices()
{
    std::vector<Device> devices;
    VxComPtr<ICreateDevEnum> creator;
    EXPECT_EQ(::CoCreateInstance(CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC_SERVER, IID_ICreateDevEnum,
                                 creator.PutVoid()),
              S_OK);
    VxComPtr<IEnumMoniker> monikers;
    if (creator->CreateClassEnumerator(CLSID_VideoInputDeviceCategory, monikers.Put(), 0) != S_OK)
        return devices; // S_FALSE: the category is empty
    VxComPtr<IMoniker> moniker;
    while (monikers->Next(1, moniker.Put(), nullptr) == S_OK) {
        LPOLESTR name = nullptr;
        EXPECT_EQ(moniker->GetDisplayName(nullptr, nullptr, &name), S_OK);
        devices.push_back({moniker, name});
        ::CoTaskMemFree(name);
    }
    return devices;
}

/// Devices whose display name ends with a class.
std::vector<Device> DevicesOf(REFCLSID clsid)
{
    std::vector<Device> devices = VideoInputDevices();
    std::erase_if(devices, [&](const Device& device) { return !device.displayName.ends_with(Text(clsid)); });
    return devices;
}

} // namespace

RegistrationConformanceTest::RegistrationConformanceTest()
{
    EXPECT_EQ(RunRegsvr32(L"/s"), 0u);
}

RegistrationConformanceTest::~RegistrationConformanceTest()
{
    module.Call("DllUnregisterServer"); // whatever a failed test left
}

DWORD RegistrationConformanceTest::RunRegsvr32(const std::wstring& options) const
{
    std::wstring command =
        L"regsvr32 " + options + L" \"" + ConformanceModule::FullPath(GetParam().dll) + L"\"";
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                          &process)) {
        ADD_FAILURE() << "regsvr32 cannot be started, system error " << ::GetLastError();
        return MAXDWORD;
    }
    constexpr DWORD kPatienceMs = 60000;
    DWORD code = MAXDWORD;
    if (::WaitForSingleObject(process.hProcess, kPatienceMs) == WAIT_OBJECT_0)
        ::GetExitCodeProcess(process.hProcess, &code);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return code;
}

namespace {

TEST_P(RegistrationConformanceTest, EveryClassIsAnInProcessServer)
{
    for (const auto& [clsid, name] : GetParam().classes) {
        const std::wstring key = L"CLSID\\" + Text(clsid);
        EXPECT_EQ(Value(key, nullptr), name);
        EXPECT_EQ(Value(key + L"\\InprocServer32", nullptr), ConformanceModule::FullPath(GetParam().dll));
        EXPECT_EQ(Value(key + L"\\InprocServer32", L"ThreadingModel"), L"Both");
    }
}

TEST_P(RegistrationConformanceTest, FilterIsInBothCategories)
{
    for (const LPCWSTR instances : {kVideoInputInstances, kGeneralInstances}) {
        const std::wstring key = instances + Text(GetParam().clsid);
        EXPECT_EQ(Value(key, L"FriendlyName"), GetParam().name);
        EXPECT_EQ(Value(key, L"CLSID"), Text(GetParam().clsid));
    }
}

TEST_P(RegistrationConformanceTest, DeviceIsListedOnceUnderItsName)
{
    const auto devices = DevicesOf(GetParam().clsid);
    ASSERT_EQ(devices.size(), 1u);

    EXPECT_EQ(devices[0].displayName,
              L"@device:sw:{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\" + Text(GetParam().clsid));
    VxComPtr<IPropertyBag> bag;
    ASSERT_EQ(devices[0].moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, bag.PutVoid()), S_OK);
    VARIANT name = {};
    ASSERT_EQ(bag->Read(L"FriendlyName", &name, nullptr), S_OK);
    EXPECT_EQ(name.vt, VT_BSTR);
    EXPECT_EQ(std::wstring(name.bstrVal), GetParam().name);
    ::VariantClear(&name);
}

TEST_P(RegistrationConformanceTest, RegisteringTwiceListsOneDevice)
{
    EXPECT_EQ(RunRegsvr32(L"/s"), 0u);

    EXPECT_EQ(DevicesOf(GetParam().clsid).size(), 1u);
}

TEST_P(RegistrationConformanceTest, DeviceBindsToTheFilter)
{
    const auto devices = DevicesOf(GetParam().clsid);
    ASSERT_EQ(devices.size(), 1u);
    VxComPtr<IBaseFilter> bound;

    ASSERT_EQ(devices[0].moniker->BindToObject(nullptr, nullptr, IID_IBaseFilter, bound.PutVoid()), S_OK);

    CLSID clsid = {};
    EXPECT_EQ(bound->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, GetParam().clsid);
    EXPECT_EQ(bound.Detach()->Release(), 0u);
}

TEST_P(RegistrationConformanceTest, UnregisteringLeavesNothing)
{
    EXPECT_EQ(RunRegsvr32(L"/s /u"), 0u);

    for (const auto& [clsid, name] : GetParam().classes) {
        EXPECT_FALSE(HasKey(L"CLSID\\" + Text(clsid)));
        const auto left = KeysThatContain(HKEY_CLASSES_ROOT, L"", Text(clsid).substr(1, 36));
        EXPECT_TRUE(left.empty()) << left.size() << " keys are left";
    }
    EXPECT_TRUE(DevicesOf(GetParam().clsid).empty());
}

TEST_P(RegistrationConformanceTest, SecondUnregistrationFindsNoDevice)
{
    EXPECT_EQ(module.Call("DllUnregisterServer"), S_OK);

    EXPECT_EQ(module.Call("DllUnregisterServer"), kNoEntry);
}

} // namespace
