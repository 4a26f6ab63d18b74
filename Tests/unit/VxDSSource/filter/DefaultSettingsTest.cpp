#include "VxDSSource/filter/DefaultSettings.h"

#include "VxDSSource/filter/SettingsRecord.h"
#include "support/registry/PrivateUserRegistry.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vxds {
namespace {

constexpr wchar_t kCompany[] = L"SOFTWARE\\Vantrel Technologies Inc";
constexpr wchar_t kProduct[] = L"SOFTWARE\\Vantrel Technologies Inc\\VxDSSource";

/// A text with one byte more than a registry value can be told to have: addresses alone, because nobody shall
/// read it.
class UnreadableText {
public:
    UnreadableText()
        : m_addresses(::VirtualAlloc(nullptr, kLength * sizeof(wchar_t), MEM_RESERVE, PAGE_NOACCESS))
    {
        EXPECT_NE(m_addresses, nullptr);
    }
    ~UnreadableText() { EXPECT_TRUE(::VirtualFree(m_addresses, 0, MEM_RELEASE)); }
    UnreadableText(const UnreadableText&) = delete;
    UnreadableText& operator=(const UnreadableText&) = delete;

    [[nodiscard]] std::wstring_view Get() const
    {
        return {static_cast<const wchar_t*>(m_addresses), kLength};
    }

private:
    static constexpr std::size_t kLength = (std::size_t{1} << 32) / sizeof(wchar_t);
    void* m_addresses;
};

class DefaultSettingsTest : public testing::Test {
protected:
    static HKEY CreateKey(const wchar_t* path, DWORD options = REG_OPTION_NON_VOLATILE)
    {
        HKEY key = nullptr;
        EXPECT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, options,
                                                   KEY_ALL_ACCESS, nullptr, &key, nullptr));
        return key;
    }

    static bool HasKey(const wchar_t* path)
    {
        HKEY key = nullptr;
        const bool isThere = ::RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, &key) == ERROR_SUCCESS;
        if (isThere)
            ::RegCloseKey(key);
        return isThere;
    }

    /// Type and bytes of a value, read without help of the code under test.
    static std::vector<BYTE> Bytes(const wchar_t* name, DWORD& type)
    {
        HKEY key = CreateKey(kProduct);
        DWORD size = 0;
        EXPECT_EQ(ERROR_SUCCESS, ::RegQueryValueExW(key, name, nullptr, &type, nullptr, &size)) << name;
        std::vector<BYTE> bytes(size + 1);
        DWORD room = size + 1;
        EXPECT_EQ(ERROR_SUCCESS, ::RegQueryValueExW(key, name, nullptr, &type, bytes.data(), &room));
        bytes.resize(size);
        ::RegCloseKey(key);
        return bytes;
    }

    static bool HasValue(const wchar_t* name)
    {
        HKEY key = CreateKey(kProduct);
        const LSTATUS status = ::RegQueryValueExW(key, name, nullptr, nullptr, nullptr, nullptr);
        ::RegCloseKey(key);
        return status == ERROR_SUCCESS;
    }

    static void WriteRaw(const wchar_t* name, DWORD type, const void* data, DWORD sizeBytes)
    {
        HKEY key = CreateKey(kProduct);
        EXPECT_EQ(ERROR_SUCCESS,
                  ::RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), sizeBytes));
        ::RegCloseKey(key);
    }

    PrivateUserRegistry m_registry;
    DefaultSettings m_defaults;
};

std::vector<BYTE> Utf16Bytes(const std::wstring& text)
{
    const auto* first = reinterpret_cast<const BYTE*>(text.data());
    return {first, first + text.size() * sizeof(wchar_t)};
}

TEST_F(DefaultSettingsTest, LoadsNothingWhereNothingWasSaved)
{
    EXPECT_FALSE(m_defaults.Load());
    EXPECT_FALSE(HasKey(kCompany)) << "looking must not create anything";
}

TEST_F(DefaultSettingsTest, LoadsWhatWasWritten)
{
    ASSERT_TRUE(m_defaults.Write(L"<configuration/>", L"Receiving from x on port 5"));

    const auto saved = m_defaults.Load();

    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->configuration, L"<configuration/>");
    EXPECT_EQ(saved->summary, L"Receiving from x on port 5");
}

TEST_F(DefaultSettingsTest, WritesTextsWithoutTheirTerminator)
{
    ASSERT_TRUE(m_defaults.Write(L"abc", L"de"));

    DWORD type = 0;
    EXPECT_EQ(Bytes(L"Default", type), Utf16Bytes(L"abc"));
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(Bytes(L"DefaultSummary", type), Utf16Bytes(L"de"));
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
}

TEST_F(DefaultSettingsTest, LoadsTheLongestTextsAndNoLongerOnes)
{
    const std::wstring longest(2048, L'c');
    const std::wstring longestSummary(128, L's');
    ASSERT_TRUE(m_defaults.Write(longest, longestSummary));
    const auto saved = m_defaults.Load();
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->configuration, longest);
    EXPECT_EQ(saved->summary, longestSummary);

    ASSERT_TRUE(m_defaults.Write(longest + L"c", longestSummary));
    EXPECT_FALSE(m_defaults.Load());

    ASSERT_TRUE(m_defaults.Write(longest, longestSummary + L"s"));
    EXPECT_FALSE(m_defaults.Load());
}

TEST_F(DefaultSettingsTest, IgnoresADefaultWithAnEmptySummary)
{
    SettingsRecord settings;
    settings.Store(Setting::Role, 5u);
    ASSERT_TRUE(m_defaults.Write(L"<configuration/>", SummaryOf(settings)));

    DWORD type = 0;
    EXPECT_TRUE(Bytes(L"DefaultSummary", type).empty());
    EXPECT_FALSE(m_defaults.Load());
}

TEST_F(DefaultSettingsTest, IgnoresADefaultWithAnEmptyConfiguration)
{
    ASSERT_TRUE(m_defaults.Write(L"", L"summary"));

    EXPECT_FALSE(m_defaults.Load());
}

TEST_F(DefaultSettingsTest, WritesNoSummaryWhenTheConfigurationCannotBeWritten)
{
    const UnreadableText tooLong;

    EXPECT_FALSE(m_defaults.Write(tooLong.Get(), L"summary"));

    EXPECT_TRUE(HasKey(kProduct));
    EXPECT_FALSE(HasValue(L"DefaultSummary"));
}

TEST_F(DefaultSettingsTest, LeavesNoUsableDefaultWhenTheSummaryCannotBeWritten)
{
    const UnreadableText tooLong;

    EXPECT_FALSE(m_defaults.Write(L"<configuration/>", tooLong.Get()));

    EXPECT_TRUE(HasValue(L"Default")) << "it was written first";
    EXPECT_FALSE(HasValue(L"DefaultSummary"));
    EXPECT_FALSE(m_defaults.Load());
}

TEST_F(DefaultSettingsTest, IgnoresValuesThatAreMissingOrOfAnotherType)
{
    ASSERT_TRUE(m_defaults.Write(L"<configuration/>", L"summary"));
    const DWORD number = 0x00410041;
    WriteRaw(L"DefaultSummary", REG_DWORD, &number, sizeof(number));
    EXPECT_FALSE(m_defaults.Load());

    ASSERT_TRUE(m_defaults.Write(L"<configuration/>", L"summary"));
    WriteRaw(L"Default", REG_EXPAND_SZ, L"ab", 4);
    EXPECT_FALSE(m_defaults.Load());

    for (const wchar_t* const name : {L"Default", L"DefaultSummary"}) {
        ASSERT_TRUE(m_defaults.Write(L"<configuration/>", L"summary"));
        HKEY key = CreateKey(kProduct);
        ASSERT_EQ(ERROR_SUCCESS, ::RegDeleteValueW(key, name));
        ::RegCloseKey(key);
        EXPECT_FALSE(m_defaults.Load()) << name;
    }
}

TEST_F(DefaultSettingsTest, CountsATerminatorAloneAsAnEmptyText)
{
    WriteRaw(L"Default", REG_SZ, L"", sizeof(L""));
    WriteRaw(L"DefaultSummary", REG_SZ, L"", sizeof(L""));
    DWORD type = 0;
    ASSERT_EQ(Bytes(L"Default", type).size(), 2u);

    const auto saved = m_defaults.Load();

    ASSERT_TRUE(saved) << "its size is not zero";
    EXPECT_EQ(saved->configuration, L"");
    EXPECT_EQ(saved->summary, L"");
}

TEST_F(DefaultSettingsTest, ReadsATextThatHasATerminator)
{
    ASSERT_TRUE(m_defaults.Write(L"x", L"y"));
    WriteRaw(L"Default", REG_SZ, L"configuration", sizeof(L"configuration"));
    WriteRaw(L"DefaultSummary", REG_SZ, L"summary", sizeof(L"summary"));

    const auto saved = m_defaults.Load();

    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->configuration, L"configuration");
    EXPECT_EQ(saved->summary, L"summary");
}

TEST_F(DefaultSettingsTest, DeletesItsOwnKeyOnly)
{
    ASSERT_TRUE(m_defaults.Write(L"<configuration/>", L"summary"));

    EXPECT_TRUE(m_defaults.Delete());

    EXPECT_FALSE(HasKey(kProduct));
    EXPECT_TRUE(HasKey(kCompany));
    EXPECT_TRUE(m_defaults.Delete()) << "nothing left to delete is no failure";
}

TEST_F(DefaultSettingsTest, CannotDeleteWithoutTheCompanyKey)
{
    EXPECT_FALSE(m_defaults.Delete());
}

TEST_F(DefaultSettingsTest, ReportsThatTheKeyCannotBeMade)
{
    // A key that lasts cannot be made below one that does not.
    ::RegCloseKey(CreateKey(kCompany, REG_OPTION_VOLATILE));

    EXPECT_FALSE(m_defaults.Write(L"<configuration/>", L"summary"));
}

TEST_F(DefaultSettingsTest, DescribesTheController)
{
    SettingsRecord settings;
    settings.Store(Setting::DeviceId, std::wstring(L"02-00-00-00-00-01"));

    EXPECT_EQ(SummaryOf(settings), L"Controlling and receiving from 02-00-00-00-00-01");
}

TEST_F(DefaultSettingsTest, DescribesTheUnicastReceiver)
{
    SettingsRecord settings;
    settings.Store(Setting::Role, 1u);
    settings.Store(Setting::DeviceId, std::wstring(L"cam"));
    settings.Store(Setting::UnicastPort, 4294967295u);

    EXPECT_EQ(SummaryOf(settings), L"Receiving from cam on port 4294967295");
}

TEST_F(DefaultSettingsTest, DescribesTheMulticastReceiver)
{
    SettingsRecord settings;
    settings.Store(Setting::Role, 2u);
    settings.Store(Setting::DeviceId, std::wstring(L"cam"));

    EXPECT_EQ(SummaryOf(settings), L"Multicasting from cam on group 239.192.1.1:1042");
}

TEST_F(DefaultSettingsTest, HasNoWordsForAnUnknownRole)
{
    SettingsRecord settings;
    settings.Store(Setting::Role, 5u);
    settings.Store(Setting::DeviceId, std::wstring(L"cam"));

    EXPECT_EQ(SummaryOf(settings), L"");
}

} // namespace
} // namespace vxds
