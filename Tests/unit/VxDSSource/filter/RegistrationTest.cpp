#include "VxDSSource/filter/Registration.h"

#include "BaseClasses/CFactoryTemplate.h"
#include "VxDSSource/filter/Identifiers.h"
#include "support/directshow/TestObject.h"

#include <uuids.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr wchar_t kClassKey[] = L"CLSID\\{939C9A55-207C-4024-8B29-38D22449994D}";

/// The registry of classes of this process alone, empty at first and gone at the end.
class PrivateClassesRoot {
public:
    PrivateClassesRoot() : m_path(L"Software\\VxTests\\classes" + std::to_wstring(::GetCurrentProcessId()))
    {
        EXPECT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_CURRENT_USER, m_path.c_str(), 0, nullptr, 0,
                                                   KEY_ALL_ACCESS, nullptr, &m_root, nullptr));
        EXPECT_EQ(ERROR_SUCCESS, ::RegOverridePredefKey(HKEY_CLASSES_ROOT, m_root));
    }
    ~PrivateClassesRoot()
    {
        EXPECT_EQ(ERROR_SUCCESS, ::RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr));
        ::RegCloseKey(m_root);
        EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str()));
    }
    PrivateClassesRoot(const PrivateClassesRoot&) = delete;
    PrivateClassesRoot& operator=(const PrivateClassesRoot&) = delete;

private:
    std::wstring m_path;
    HKEY m_root = nullptr;
};

bool HasCom()
{
    APTTYPE apartment{};
    APTTYPEQUALIFIER qualifier{};
    return SUCCEEDED(::CoGetApartmentType(&apartment, &qualifier));
}

/// What a mapper gives out for a registration: only to be let go.
class FakeMoniker final : public TestObject<IMoniker> {
public:
    STDMETHODIMP GetClassID(CLSID*) override { return E_NOTIMPL; }
    STDMETHODIMP IsDirty() override { return E_NOTIMPL; }
    STDMETHODIMP Load(IStream*) override { return E_NOTIMPL; }
    STDMETHODIMP Save(IStream*, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER*) override { return E_NOTIMPL; }
    STDMETHODIMP BindToObject(IBindCtx*, IMoniker*, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP BindToStorage(IBindCtx*, IMoniker*, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP Reduce(IBindCtx*, DWORD, IMoniker**, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP ComposeWith(IMoniker*, BOOL, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP Enum(BOOL, IEnumMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP IsEqual(IMoniker*) override { return E_NOTIMPL; }
    STDMETHODIMP Hash(DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP IsRunning(IBindCtx*, IMoniker*, IMoniker*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTimeOfLastChange(IBindCtx*, IMoniker*, FILETIME*) override { return E_NOTIMPL; }
    STDMETHODIMP Inverse(IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP CommonPrefixWith(IMoniker*, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP RelativePathTo(IMoniker*, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP GetDisplayName(IBindCtx*, IMoniker*, LPOLESTR*) override { return E_NOTIMPL; }
    STDMETHODIMP ParseDisplayName(IBindCtx*, IMoniker*, LPOLESTR, ULONG*, IMoniker**) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP IsSystemMoniker(DWORD*) override { return E_NOTIMPL; }

    bool hadCom = true; ///< whether COM was there when it was let go
    int given = 0;      ///< how often it was given out

private:
    void OnLastRelease() override { hadCom = hadCom && HasCom(); }
};

/// A filter mapper that records what is registered and fails where it is told to.
class FakeMapper final : public TestObject<IFilterMapper2> {
public:
    std::vector<std::string> calls;
    std::string failing; ///< the call that fails
    HRESULT failure = E_ACCESSDENIED;
    std::vector<std::wstring> problems; ///< what a registration got wrong
    FakeMoniker entry;                  ///< given out to who asks for one
    bool hadComAtTheEnd = true;         ///< whether COM was there whenever it was let go

    STDMETHODIMP CreateCategory(REFCLSID, DWORD, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP UnregisterFilter(const CLSID* category, LPCOLESTR instance, REFCLSID filter) override
    {
        if (filter != CLSID_VxDSSource || instance != nullptr)
            problems.emplace_back(L"unregister");
        return Answer("unregister", category);
    }
    STDMETHODIMP RegisterFilter(REFCLSID filter, LPCWSTR name, IMoniker** moniker, const CLSID* category,
                                LPCOLESTR instance, const REGFILTER2* data) override
    {
        if (filter != CLSID_VxDSSource || std::wstring(name) != L"Vexa DirectShow Source" ||
            instance != nullptr)
            problems.emplace_back(L"identity");
        if (category != nullptr && moniker == nullptr)
            problems.emplace_back(L"moniker");
        Check(*data);
        const HRESULT answer = Answer("register", category);
        if (moniker != nullptr && SUCCEEDED(answer)) {
            entry.AddRef();
            ++entry.given;
            *moniker = &entry;
        }
        return answer;
    }
    STDMETHODIMP EnumMatchingFilters(IEnumMoniker**, DWORD, BOOL, DWORD, BOOL, DWORD, const GUID*,
                                     const REGPINMEDIUM*, const CLSID*, BOOL, BOOL, DWORD, const GUID*,
                                     const REGPINMEDIUM*, const CLSID*) override
    {
        return E_NOTIMPL;
    }

private:
    void OnLastRelease() override { hadComAtTheEnd = hadComAtTheEnd && HasCom(); }

    void Check(const REGFILTER2& data)
    {
        if (data.dwVersion != 1 || data.dwMerit != 0x200000 || data.cPins != 1) {
            problems.emplace_back(L"filter");
            return;
        }
        const REGFILTERPINS& pin = data.rgPins[0];
        if (std::wstring(pin.strName) != L"Output" || pin.bRendered || !pin.bOutput || pin.bZero ||
            pin.bMany || *pin.clsConnectsToFilter != CLSID_NULL || pin.strConnectsToPin != nullptr)
            problems.emplace_back(L"pin");
        if (pin.nMediaTypes != 1 || *pin.lpMediaType[0].clsMajorType != MEDIATYPE_Video ||
            *pin.lpMediaType[0].clsMinorType != GUID_NULL)
            problems.emplace_back(L"type");
    }

    HRESULT Answer(const std::string& call, const CLSID* category)
    {
        std::string text = call;
        if (category != nullptr)
            text += *category == CLSID_VideoInputDeviceCategory ? " capture" : " unknown category";
        calls.push_back(text);
        return text == failing ? failure : S_OK;
    }
};

class FakeMappers final : public IVxFilterMapperFactory {
public:
    FakeMapper mapper;
    int working = 100;  ///< how many mappers can be created
    int created = 0;    ///< how many were asked for
    bool hadCom = true; ///< whether COM was there each time

    HRESULT CreateMapper2(IFilterMapper2** result) override
    {
        *result = nullptr;
        ++created;
        hadCom = hadCom && HasCom();
        if (working-- <= 0)
            return REGDB_E_CLASSNOTREG;
        mapper.AddRef();
        *result = &mapper;
        return S_OK;
    }
    HRESULT CreateMapper(IFilterMapper** result) override
    {
        *result = nullptr;
        return REGDB_E_CLASSNOTREG;
    }
};

class RegistrationTest : public testing::Test {
protected:
    using Calls = std::vector<std::string>;

    static bool IsServerRegistered()
    {
        HKEY key = nullptr;
        const bool isThere =
            ::RegOpenKeyExW(HKEY_CLASSES_ROOT, kClassKey, 0, KEY_READ, &key) == ERROR_SUCCESS;
        if (isThere)
            ::RegCloseKey(key);
        return isThere;
    }

    PrivateClassesRoot m_classes;
    FakeMappers m_mappers;
};

TEST_F(RegistrationTest, OffersTheFilterAndItsThreePagesInTheClassTable)
{
    struct Row {
        const wchar_t* name;
        CLSID clsid;
    };
    constexpr Row kRows[] = {{L"Vexa DirectShow Source", CLSID_VxDSSource},
                             {L"Vexa DirectShow Source Parameters", CLSID_ParametersPage},
                             {L"Vexa DirectShow Source Browser", CLSID_BrowserPage},
                             {L"Vexa DirectShow Source About", CLSID_AboutPage}};
    ASSERT_EQ(g_cTemplates, 4);
    for (int i = 0; i < g_cTemplates; ++i) {
        EXPECT_STREQ(g_Templates[i].m_Name, kRows[i].name);
        EXPECT_EQ(*g_Templates[i].m_ClsID, kRows[i].clsid);
        EXPECT_EQ(g_Templates[i].m_lpfnInit, nullptr);
        EXPECT_EQ(g_Templates[i].m_pAMovieSetup_Filter != nullptr, i == 0) << "a page is no filter";
    }
}

TEST_F(RegistrationTest, DescribesTheFilterInTheClassTable)
{
    EXPECT_EQ(g_Templates[0].m_pAMovieSetup_Filter->dwMerit, 0x200000u);
}

TEST_F(RegistrationTest, RegistersServerThenFilterThenCaptureDevice)
{
    EXPECT_EQ(vxds::RegisterModule(m_mappers), S_OK);

    EXPECT_TRUE(IsServerRegistered());
    EXPECT_EQ(m_mappers.mapper.calls, (Calls{"unregister", "register", "register capture"}));
    EXPECT_TRUE(m_mappers.mapper.problems.empty());
}

TEST_F(RegistrationTest, UnregistersCaptureDeviceThenFilterThenServer)
{
    ASSERT_EQ(vxds::RegisterModule(m_mappers), S_OK);
    m_mappers.mapper.calls.clear();

    EXPECT_EQ(vxds::UnregisterModule(m_mappers), S_OK);

    EXPECT_FALSE(IsServerRegistered());
    EXPECT_EQ(m_mappers.mapper.calls, (Calls{"unregister capture", "unregister"}));
    EXPECT_TRUE(m_mappers.mapper.problems.empty());
}

TEST_F(RegistrationTest, RegistersNoCaptureDeviceWhenTheFilterCannotBeRegistered)
{
    m_mappers.mapper.failing = "register";

    EXPECT_EQ(vxds::RegisterModule(m_mappers), E_ACCESSDENIED);

    EXPECT_EQ(m_mappers.mapper.calls, (Calls{"unregister", "register"}));
}

TEST_F(RegistrationTest, ReturnsWhyTheCaptureDeviceCouldNotBeRegistered)
{
    m_mappers.mapper.failing = "register capture";
    m_mappers.mapper.failure = E_UNEXPECTED;

    EXPECT_EQ(vxds::RegisterModule(m_mappers), E_UNEXPECTED);

    EXPECT_TRUE(IsServerRegistered()) << "what precedes it stays";
}

TEST_F(RegistrationTest, RegistersNoCaptureDeviceWhenNoMapperCanBeCreated)
{
    m_mappers.working = 0;

    EXPECT_EQ(vxds::RegisterModule(m_mappers), REGDB_E_CLASSNOTREG);

    EXPECT_TRUE(IsServerRegistered()) << "the server was registered before";
    EXPECT_EQ(m_mappers.created, 1) << "for the filter; none was tried for the capture device";
}

TEST_F(RegistrationTest, GivesEveryMapperBackAndLeavesComAsItWas)
{
    ASSERT_EQ(vxds::RegisterModule(m_mappers), S_OK);
    ASSERT_EQ(vxds::UnregisterModule(m_mappers), S_OK);

    EXPECT_EQ(m_mappers.created, 4);
    EXPECT_EQ(m_mappers.mapper.References(), 0);
    EXPECT_EQ(m_mappers.mapper.entry.given, 1) << "for the capture device";
    EXPECT_EQ(m_mappers.mapper.entry.References(), 0);
    EXPECT_TRUE(m_mappers.hadCom);
    EXPECT_TRUE(m_mappers.mapper.hadComAtTheEnd) << "let go before COM is";
    EXPECT_TRUE(m_mappers.mapper.entry.hadCom);
    EXPECT_FALSE(HasCom()) << "the test has none of its own";
}

TEST_F(RegistrationTest, WorksInAThreadThatHasComInAnotherMode)
{
    ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);

    EXPECT_EQ(vxds::RegisterModule(m_mappers), S_OK);

    EXPECT_TRUE(HasCom()) << "its COM was not taken away";
    ::CoUninitialize();
}

TEST_F(RegistrationTest, ReturnsWhyTheSecondMapperCouldNotBeCreated)
{
    m_mappers.working = 1;

    EXPECT_EQ(vxds::RegisterModule(m_mappers), REGDB_E_CLASSNOTREG);

    EXPECT_TRUE(IsServerRegistered()) << "the server was registered before";
    EXPECT_EQ(m_mappers.mapper.calls, (Calls{"unregister", "register"}));
}

TEST_F(RegistrationTest, LeavesTheServerAloneWhenTheCaptureDeviceCannotBeUnregistered)
{
    ASSERT_EQ(vxds::RegisterModule(m_mappers), S_OK);
    m_mappers.mapper.calls.clear();
    m_mappers.mapper.failing = "unregister capture";

    EXPECT_EQ(vxds::UnregisterModule(m_mappers), E_ACCESSDENIED);

    EXPECT_TRUE(IsServerRegistered());
    EXPECT_EQ(m_mappers.mapper.calls, Calls{"unregister capture"});
}

TEST_F(RegistrationTest, LeavesTheServerAloneWhenNoMapperCanBeCreated)
{
    ASSERT_EQ(vxds::RegisterModule(m_mappers), S_OK);
    m_mappers.working = 0;

    EXPECT_EQ(vxds::UnregisterModule(m_mappers), REGDB_E_CLASSNOTREG);

    EXPECT_TRUE(IsServerRegistered());
}

TEST_F(RegistrationTest, ReturnsWhyTheFilterCouldNotBeUnregistered)
{
    ASSERT_EQ(vxds::RegisterModule(m_mappers), S_OK);
    m_mappers.mapper.failing = "unregister";

    EXPECT_EQ(vxds::UnregisterModule(m_mappers), E_ACCESSDENIED);

    EXPECT_TRUE(IsServerRegistered());
}

} // namespace
