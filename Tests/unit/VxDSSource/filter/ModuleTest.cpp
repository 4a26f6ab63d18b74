#include "BaseClasses/VxComPtr.h"
#include "VxDSSource/filter/IVxDSSource.h"
#include "VxDSSource/filter/Identifiers.h"
#include "support/directshow/ComApartment.h"
#include "support/registry/PrivateUserRegistry.h"

#include <strmif.h>
#include <tlhelp32.h>
#include <uuids.h>

#include <gtest/gtest.h>

#include <string>

namespace {

std::wstring ModulePath()
{
    std::wstring path(MAX_PATH, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    path.resize(path.find_last_of(L'\\')); // the tests' folder
    return path + L"\\..\\bin\\VxDSSource.dll";
}

bool HasClassesKey(const std::wstring& path)
{
    HKEY key = nullptr;
    const bool isThere = ::RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS;
    if (isThere)
        ::RegCloseKey(key);
    return isThere;
}

std::wstring TextOf(const GUID& id)
{
    WCHAR text[39] = {};
    EXPECT_GT(::StringFromGUID2(id, text, 39), 0);
    return text;
}

int ThreadsOfThisProcess()
{
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    EXPECT_NE(snapshot, INVALID_HANDLE_VALUE);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    int threads = 0;
    for (BOOL more = ::Thread32First(snapshot, &entry); more; more = ::Thread32Next(snapshot, &entry))
        threads += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
    ::CloseHandle(snapshot);
    EXPECT_GT(threads, 0);
    return threads;
}

/// The module as it was built, with the camera library inside.
class ModuleTest : public testing::Test {
protected:
    using NoArguments = HRESULT(STDAPICALLTYPE*)();
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);

    ModuleTest() : m_module(::LoadLibraryW(ModulePath().c_str()))
    {
        EXPECT_NE(m_module, nullptr) << "system error " << ::GetLastError();
    }
    ~ModuleTest() override
    {
        EXPECT_EQ(Call("DllCanUnloadNow"), S_OK) << "an object is left";
        EXPECT_TRUE(::FreeLibrary(m_module));
    }

    template <typename Function>
    Function Find(const char* name) const
    {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(m_module, name)));
    }

    HRESULT Call(const char* name) const { return Find<NoArguments>(name)(); }

    VxComPtr<IClassFactory> Factory() const
    {
        VxComPtr<IClassFactory> factory;
        EXPECT_EQ(
            Find<GetClassObject>("DllGetClassObject")(CLSID_VxDSSource, IID_IClassFactory, factory.PutVoid()),
            S_OK);
        return factory;
    }

    static void Set(IVxDSSource& control, HRESULT (STDMETHODCALLTYPE IVxDSSource::*setter)(BSTR),
                    const std::wstring& text)
    {
        BSTR copy = ::SysAllocString(text.c_str());
        EXPECT_EQ((control.*setter)(copy), S_OK);
        ::SysFreeString(copy);
    }

    static std::wstring Get(IVxDSSource& control, HRESULT (STDMETHODCALLTYPE IVxDSSource::*getter)(BSTR*))
    {
        BSTR text = nullptr;
        EXPECT_EQ((control.*getter)(&text), S_OK);
        std::wstring copy(text, ::SysStringLen(text));
        ::SysFreeString(text);
        return copy;
    }

    ComApartment m_com;
    PrivateUserRegistry m_registry; // no saved default
    HMODULE m_module;
};

TEST_F(ModuleTest, MayBeUnloadedWhenItsLastObjectIsGone)
{
    EXPECT_EQ(Call("DllCanUnloadNow"), S_OK);
    VxComPtr<IClassFactory> factory = Factory();
    EXPECT_EQ(Call("DllCanUnloadNow"), S_FALSE);
    VxComPtr<IVxDSSource> control;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IVxDSSource, control.PutVoid()), S_OK);
    factory.Reset();
    EXPECT_EQ(Call("DllCanUnloadNow"), S_FALSE);
    VxComPtr<IEnumPins> pins;
    ASSERT_EQ(control.As<IBaseFilter>()->EnumPins(pins.Put()), S_OK);
    control.Reset();
    EXPECT_EQ(Call("DllCanUnloadNow"), S_FALSE) << "the enumerator holds the filter";
    pins.Reset();
    EXPECT_EQ(Call("DllCanUnloadNow"), S_OK);
}

TEST_F(ModuleTest, StaysLoadedWhileAClientLocksIt)
{
    ASSERT_EQ(Factory()->LockServer(TRUE), S_OK);
    EXPECT_EQ(Call("DllCanUnloadNow"), S_FALSE);
    ASSERT_EQ(Factory()->LockServer(FALSE), S_OK);
}

TEST_F(ModuleTest, StartsNoThreadWhileItIsLookedAt)
{
    const int before = ThreadsOfThisProcess();
    VxComPtr<IVxDSSource> control;
    ASSERT_EQ(Factory()->CreateInstance(nullptr, IID_IVxDSSource, control.PutVoid()), S_OK);
    VxComPtr<IPin> pin;
    ASSERT_EQ(control.As<IBaseFilter>()->FindPin(L"1", pin.Put()), S_OK);
    AM_MEDIA_TYPE* type = nullptr;
    VIDEO_STREAM_CONFIG_CAPS caps{};
    ASSERT_EQ(pin.As<IAMStreamConfig>()->GetStreamCaps(0, &type, reinterpret_cast<BYTE*>(&caps)), S_OK);
    ::CoTaskMemFree(type->pbFormat);
    ::CoTaskMemFree(type);

    EXPECT_EQ(ThreadsOfThisProcess(), before);
}

TEST_F(ModuleTest, OffersNoOtherClass)
{
    VxComPtr<IClassFactory> factory;
    EXPECT_EQ(
        Find<GetClassObject>("DllGetClassObject")(IID_IVxDSSource, IID_IClassFactory, factory.PutVoid()),
        CLASS_E_CLASSNOTAVAILABLE);
}

TEST_F(ModuleTest, AnswersForACameraThatIsNotThere)
{
    VxComPtr<IVxDSSource> control;
    ASSERT_EQ(Factory()->CreateInstance(nullptr, IID_IVxDSSource, control.PutVoid()), S_OK);
    BSTR id = ::SysAllocString(L"127.255.255.1"); // an address at which nobody answers
    EXPECT_EQ(control->SetDeviceId(id), S_OK);
    ::SysFreeString(id);
    UINT count = 7;

    EXPECT_EQ(control->GetSourceCount(&count), S_OK);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(control->GetParameterCount(&count), E_UNEXPECTED);
}

TEST_F(ModuleTest, KeepsASavedDefaultForTheNextFilter)
{
    VxComPtr<IVxDSSource> control;
    ASSERT_EQ(Factory()->CreateInstance(nullptr, IID_IVxDSSource, control.PutVoid()), S_OK);
    EXPECT_EQ(control->SetZoomValue(6), S_OK);
    ASSERT_EQ(control->SaveDefault(), 0);
    control.Reset();

    ASSERT_EQ(Factory()->CreateInstance(nullptr, IID_IVxDSSource, control.PutVoid()), S_OK);

    UINT zoom = 0;
    EXPECT_EQ(control->GetZoomValue(&zoom), S_OK);
    EXPECT_EQ(zoom, 6u);
    BSTR summary = nullptr;
    EXPECT_EQ(control->GetDefaultSummary(&summary), S_OK);
    EXPECT_EQ(std::wstring(summary), L"Controlling and receiving from ");
    ::SysFreeString(summary);
}

TEST_F(ModuleTest, SavesAndLoadsItselfThroughAStream)
{
    VxComPtr<IVxDSSource> control;
    ASSERT_EQ(Factory()->CreateInstance(nullptr, IID_IVxDSSource, control.PutVoid()), S_OK);
    EXPECT_EQ(control->SetBufferCount(0xFFFFFFFF), S_OK);
    EXPECT_EQ(control->SetKernelSize(5), S_OK);
    VxComPtr<IStream> stream;
    ASSERT_EQ(::CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    ASSERT_EQ(control.As<IPersistStream>()->Save(stream.Get(), TRUE), S_OK);
    ASSERT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
    control.Reset();
    ASSERT_EQ(Factory()->CreateInstance(nullptr, IID_IVxDSSource, control.PutVoid()), S_OK);

    ASSERT_EQ(control.As<IPersistStream>()->Load(stream.Get()), S_OK);

    UINT number = 0;
    EXPECT_EQ(control->GetBufferCount(&number), S_OK);
    EXPECT_EQ(number, 0xFFFFFFFFu);
    EXPECT_EQ(control->GetKernelSize(&number), S_OK);
    EXPECT_EQ(number, 5u);
}

TEST_F(ModuleTest, IsCreatedByItsClassOnceItIsRegisteredAndLeavesNoKeyBehind)
{
    const std::wstring classKey = L"CLSID\\" + TextOf(CLSID_VxDSSource);
    const std::wstring captureKey =
        L"CLSID\\" + TextOf(CLSID_VideoInputDeviceCategory) + L"\\Instance\\" + TextOf(CLSID_VxDSSource);
    const std::wstring filterKey =
        L"CLSID\\" + TextOf(CLSID_LegacyAmFilterCategory) + L"\\Instance\\" + TextOf(CLSID_VxDSSource);
    ASSERT_FALSE(HasClassesKey(classKey)) << "something else registered the module here";

    ASSERT_EQ(Call("DllRegisterServer"), S_OK);
    EXPECT_TRUE(HasClassesKey(captureKey));
    EXPECT_TRUE(HasClassesKey(filterKey));
    VxComPtr<IBaseFilter> filter;
    EXPECT_EQ(::CoCreateInstance(CLSID_VxDSSource, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                 filter.PutVoid()),
              S_OK);
    filter.Reset();

    EXPECT_EQ(Call("DllUnregisterServer"), S_OK);
    EXPECT_FALSE(HasClassesKey(classKey));
    EXPECT_FALSE(HasClassesKey(captureKey));
    EXPECT_FALSE(HasClassesKey(filterKey));
    EXPECT_TRUE(FAILED(Call("DllUnregisterServer"))) << "there is nothing left to unregister";
}

TEST_F(ModuleTest, StaysRegisteredWhenItIsNoCaptureDeviceAnyMore)
{
    const std::wstring classKey = L"CLSID\\" + TextOf(CLSID_VxDSSource);
    ASSERT_EQ(Call("DllRegisterServer"), S_OK);
    VxComPtr<IFilterMapper2> mapper;
    ASSERT_EQ(::CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper2,
                                 mapper.PutVoid()),
              S_OK);
    ASSERT_EQ(mapper->UnregisterFilter(&CLSID_VideoInputDeviceCategory, nullptr, CLSID_VxDSSource), S_OK);

    EXPECT_EQ(Call("DllUnregisterServer"), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_TRUE(HasClassesKey(classKey)) << "the server's keys were not touched";

    ASSERT_EQ(Call("DllRegisterServer"), S_OK) << "registering again mends it";
    EXPECT_EQ(Call("DllUnregisterServer"), S_OK);
    EXPECT_FALSE(HasClassesKey(classKey));
}

TEST_F(ModuleTest, KeepsADefaultWithLongTexts)
{
    // As long as the texts may be: the summary's words leave 97 of its 128 characters to the device id.
    const std::wstring id(97, L'd');
    const std::wstring source(100, L's');
    VxComPtr<IVxDSSource> control;
    ASSERT_EQ(Factory()->CreateInstance(nullptr, IID_IVxDSSource, control.PutVoid()), S_OK);
    Set(*control.Get(), &IVxDSSource::SetParamSource, source);
    Set(*control.Get(), &IVxDSSource::SetDeviceId, id);
    EXPECT_EQ(control->SetBufferCount(0x80000000), S_OK);
    ASSERT_EQ(control->SaveDefault(), 0);
    control.Reset();

    ASSERT_EQ(Factory()->CreateInstance(nullptr, IID_IVxDSSource, control.PutVoid()), S_OK);

    EXPECT_EQ(Get(*control.Get(), &IVxDSSource::GetDeviceId), id);
    EXPECT_EQ(Get(*control.Get(), &IVxDSSource::GetParamSource), source);
    EXPECT_EQ(Get(*control.Get(), &IVxDSSource::GetDefaultSummary), L"Controlling and receiving from " + id);
    UINT count = 0;
    EXPECT_EQ(control->GetBufferCount(&count), S_OK);
    EXPECT_EQ(count, 0x80000000u);

    // One character more makes the summary one that is not loaded.
    Set(*control.Get(), &IVxDSSource::SetDeviceId, id + L'd');
    ASSERT_EQ(control->SaveDefault(), 0);
    control.Reset();
    ASSERT_EQ(Factory()->CreateInstance(nullptr, IID_IVxDSSource, control.PutVoid()), S_OK);
    EXPECT_EQ(Get(*control.Get(), &IVxDSSource::GetDeviceId), L"");
}

} // namespace
