#include "BaseClasses/ServerRegistration.h"

#include "BaseClasses/FilterRegistration.h"
#include "unit/BaseClasses/FakeFilterMapper.h"

#include <objbase.h>
#include <uuids.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

constexpr HRESULT kOwnError = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x777);
constexpr HRESULT kNoEntry = static_cast<HRESULT>(0x80070002);

constexpr CLSID kFirst = {11, 0x22, 0x33, {0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB}};
constexpr CLSID kPage = {12, 0x22, 0x33, {0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB}};
constexpr CLSID kSecond = {13, 0x22, 0x33, {0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB}};
constexpr LPCWSTR kFirstKey = L"CLSID\\{0000000B-0022-0033-4455-66778899AABB}";
constexpr LPCWSTR kPageKey = L"CLSID\\{0000000C-0022-0033-4455-66778899AABB}";

CUnknown* CALLBACK CreateNothing(LPUNKNOWN, HRESULT*)
{
    return nullptr;
}

WCHAR g_pinName[] = L"Output";
const AMOVIESETUP_MEDIATYPE g_types[] = {{&MEDIATYPE_Video, &GUID_NULL}};
const AMOVIESETUP_PIN g_pins[] = {{g_pinName, FALSE, TRUE, FALSE, FALSE, &CLSID_NULL, nullptr, 1, g_types}};
const AMOVIESETUP_FILTER g_firstSetup = {&kFirst, L"First filter", MERIT_DO_NOT_USE, 1, g_pins};
const AMOVIESETUP_FILTER g_secondSetup = {&kSecond, L"Second filter", MERIT_NORMAL, 1, g_pins};

const CFactoryTemplate g_rows[] = {
    {L"First class", &kFirst, CreateNothing, nullptr, &g_firstSetup},
    {L"Page class", &kPage, CreateNothing, nullptr, nullptr},
    {L"Second class", &kSecond, CreateNothing, nullptr, &g_secondSetup},
};

/// A key of the test's own, in the place of HKEY_CLASSES_ROOT.
class ServerRegistrationTest : public testing::Test {
protected:
    ServerRegistrationTest()
    {
        path = L"Software\\BaseClassesTest-" + std::to_wstring(::GetCurrentProcessId());
        EXPECT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                    &root, nullptr),
                  ERROR_SUCCESS);
    }
    ~ServerRegistrationTest() override
    {
        ::RegCloseKey(root);
        ::RegDeleteTreeW(HKEY_CURRENT_USER, path.c_str());
    }
    VxServerRegistration Registration() { return {g_rows, ::GetModuleHandleW(nullptr), root, mappers}; }

    std::optional<std::wstring> Value(const std::wstring& key, LPCWSTR name) const
    {
        WCHAR text[1024] = {};
        DWORD bytes = sizeof(text);
        if (::RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &bytes) != ERROR_SUCCESS)
            return std::nullopt;
        return text;
    }
    bool HasKey(const std::wstring& key) const
    {
        HKEY opened = nullptr;
        if (::RegOpenKeyExW(root, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS)
            return false;
        ::RegCloseKey(opened);
        return true;
    }

    std::wstring path;
    HKEY root = nullptr;
    FakeMapperFactory mappers;
};

TEST_F(ServerRegistrationTest, WritesTheKeysOfEveryClass)
{
    ASSERT_EQ(VxRegisterServer(Registration()), S_OK);

    WCHAR module[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, module, MAX_PATH);
    const std::wstring server = kFirstKey + std::wstring(L"\\InprocServer32");
    EXPECT_EQ(Value(kFirstKey, nullptr), L"First class");
    EXPECT_EQ(Value(server, nullptr), module);
    EXPECT_EQ(Value(server, L"ThreadingModel"), L"Both");
    EXPECT_EQ(Value(kPageKey, nullptr), L"Page class");
    EXPECT_EQ(Value(kPageKey + std::wstring(L"\\InprocServer32"), L"ThreadingModel"), L"Both");
}

TEST_F(ServerRegistrationTest, RegistersTheFiltersAnewInOrder)
{
    ASSERT_EQ(VxRegisterServer(Registration()), S_OK);

    EXPECT_EQ(mappers.calls, (MapperCalls{"unregister 11", "register 11", "unregister 13", "register 13"}));
    EXPECT_EQ(mappers.mapper2.References(), 0);
}

TEST_F(ServerRegistrationTest, DescribesTheFilter)
{
    const AMOVIESETUP_FILTER* const setup = &g_firstSetup;
    ASSERT_EQ(VxRegisterFilters({&setup, 1}, VxRegistrationStep::Register, mappers), S_OK);

    EXPECT_EQ(mappers.mapper2.name, L"First filter");
    EXPECT_TRUE(mappers.mapper2.isPlain);
    EXPECT_EQ(mappers.mapper2.description.dwVersion, 1u);
    EXPECT_EQ(mappers.mapper2.description.dwMerit, 0x200000u);
    EXPECT_EQ(mappers.mapper2.description.cPins, 1u);
    EXPECT_EQ(mappers.mapper2.description.rgPins, g_pins);
}

TEST_F(ServerRegistrationTest, OldEntryThatCannotBeRemovedDoesNotMatter)
{
    mappers.mapper2.onUnregister = [](REFCLSID) { return kOwnError; };

    EXPECT_EQ(VxRegisterServer(Registration()), S_OK);

    EXPECT_EQ(mappers.calls.size(), 4u);
}

TEST_F(ServerRegistrationTest, FirstFailureOfAFilterEndsTheRegistration)
{
    mappers.mapper2.onRegister = [](REFCLSID) { return kOwnError; };

    EXPECT_EQ(VxRegisterServer(Registration()), kOwnError);

    EXPECT_EQ(mappers.calls, (MapperCalls{"unregister 11", "register 11"}));
    EXPECT_TRUE(HasKey(kFirstKey)); // what was done before stays
}

TEST_F(ServerRegistrationTest, MissingEntryCountsAsSuccess)
{
    mappers.mapper2.onRegister = mappers.mapper2.onUnregister = [](REFCLSID) { return kNoEntry; };

    EXPECT_EQ(VxRegisterServer(Registration()), S_OK);
    EXPECT_EQ(VxUnregisterServer(Registration()), S_OK);
}

TEST_F(ServerRegistrationTest, OlderMapperTakesThePlaceOfTheNewer)
{
    mappers.creating2 = REGDB_E_CLASSNOTREG;

    EXPECT_EQ(VxRegisterServer(Registration()), S_OK);

    EXPECT_EQ(mappers.calls,
              (MapperCalls{"old unregister 11", "old register 11", "old pin 11", "old type 11",
                           "old unregister 13", "old register 13", "old pin 13", "old type 13"}));
}

TEST_F(ServerRegistrationTest, WithoutAnyMapperTheClassesStayRegistered)
{
    mappers.creating2 = REGDB_E_CLASSNOTREG;
    mappers.creating = E_ACCESSDENIED;

    EXPECT_EQ(VxRegisterServer(Registration()), E_ACCESSDENIED);

    EXPECT_TRUE(HasKey(kFirstKey));
    EXPECT_TRUE(HasKey(kPageKey));
}

TEST_F(ServerRegistrationTest, FailureToWriteAKeyEndsTheRegistration)
{
    VxServerRegistration registration = Registration();
    registration.classesRoot = reinterpret_cast<HKEY>(0x1234567); // no key

    EXPECT_EQ(VxRegisterServer(registration), HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE));

    EXPECT_EQ(mappers.calls, MapperCalls{});
}

TEST_F(ServerRegistrationTest, FailureToFindTheModuleEndsTheRegistration)
{
    VxServerRegistration registration = Registration();
    registration.module = reinterpret_cast<HINSTANCE>(0x10000); // nothing is loaded there

    EXPECT_TRUE(FAILED(VxRegisterServer(registration)));

    EXPECT_EQ(mappers.calls, MapperCalls{});
    EXPECT_FALSE(HasKey(kFirstKey));
}

TEST_F(ServerRegistrationTest, UnregistersTheFiltersThenTheClasses)
{
    VxRegisterServer(Registration());
    mappers.calls.clear();
    bool hadKey = false;
    mappers.mapper2.onUnregister = [&](REFCLSID) {
        hadKey = HasKey(kFirstKey);
        return S_OK;
    };

    EXPECT_EQ(VxUnregisterServer(Registration()), S_OK);

    EXPECT_TRUE(hadKey);
    EXPECT_EQ(mappers.calls, (MapperCalls{"unregister 11", "unregister 13"}));
    EXPECT_FALSE(HasKey(kFirstKey));
    EXPECT_FALSE(HasKey(kPageKey));
}

TEST_F(ServerRegistrationTest, ClassesStayWhenAFilterCannotBeUnregistered)
{
    VxRegisterServer(Registration());
    mappers.calls.clear();
    mappers.mapper2.onUnregister = [](REFCLSID) { return kOwnError; };

    EXPECT_EQ(VxUnregisterServer(Registration()), kOwnError);

    EXPECT_EQ(mappers.calls, MapperCalls{"unregister 11"});
    EXPECT_TRUE(HasKey(kFirstKey));
}

TEST_F(ServerRegistrationTest, KeysThatAreGoneDoNotFailTheUnregistration)
{
    EXPECT_EQ(VxUnregisterServer(Registration()), S_OK);
}

TEST_F(ServerRegistrationTest, ComIsThereForTheMapperAndGoneAfterwards)
{
    const auto hasCom = [] {
        APTTYPE type = APTTYPE_CURRENT;
        APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
        return SUCCEEDED(::CoGetApartmentType(&type, &qualifier));
    };
    ASSERT_FALSE(hasCom());
    bool hadCom = false;
    mappers.mapper2.onRegister = [&](REFCLSID) {
        hadCom = hasCom();
        return S_OK;
    };

    EXPECT_EQ(VxRegisterServer(Registration()), S_OK);

    EXPECT_TRUE(hadCom);
    EXPECT_FALSE(hasCom());
}

TEST_F(ServerRegistrationTest, CallersApartmentIsLeftAlone)
{
    ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);

    EXPECT_EQ(VxRegisterServer(Registration()), S_OK);

    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    EXPECT_EQ(::CoGetApartmentType(&type, &qualifier), S_OK);
    EXPECT_EQ(type, APTTYPE_MTA);
    ::CoUninitialize();
}

} // namespace
