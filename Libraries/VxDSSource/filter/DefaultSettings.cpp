#include "VxDSSource/filter/DefaultSettings.h"

#include "VxDSSource/filter/RegistryKey.h"
#include "VxDSSource/filter/SettingsRecord.h"

#include <tuple>
#include <utility>

namespace vxds {

namespace {

// Fixed: part of the contract with whoever reads or prepares a default: where it is saved.
constexpr wchar_t kCompanyPath[] = L"SOFTWARE\\Vantrel Technologies Inc";
constexpr wchar_t kProductKey[] = L"VxDSSource";
constexpr wchar_t kProductPath[] = L"SOFTWARE\\Vantrel Technologies Inc\\VxDSSource";
constexpr wchar_t kConfigurationName[] = L"Default";
constexpr wchar_t kSummaryName[] = L"DefaultSummary";

// Fixed, part of the same contract: longer values are not read back.
constexpr DWORD kLongestConfiguration = 4096 / sizeof(wchar_t);
constexpr DWORD kLongestSummary = 256 / sizeof(wchar_t);

} // namespace

std::wstring SummaryOf(const SettingsRecord& settings)
{
    const std::wstring device = settings.Text(Setting::DeviceId);
    switch (settings.Number(Setting::Role)) {
    case kRoleController:
        return L"Controlling and receiving from " + device;
    case kRoleUnicast:
        return L"Receiving from " + device + L" on port " +
               std::to_wstring(settings.Number(Setting::UnicastPort));
    case kRoleMulticast:
        return L"Multicasting from " + device + L" on group " + settings.Text(Setting::MulticastAddress) +
               L":" + std::to_wstring(settings.Number(Setting::MulticastPort));
    default:
        return {};
    }
}

std::optional<DefaultSettings::Saved> DefaultSettings::Load() const
{
    const RegistryKey key = RegistryKey::Open(kProductPath, KEY_READ);
    if (!key.IsOpen())
        return std::nullopt;
    auto summary = key.ReadText(kSummaryName, kLongestSummary);
    if (!summary)
        return std::nullopt;
    auto configuration = key.ReadText(kConfigurationName, kLongestConfiguration);
    if (!configuration)
        return std::nullopt;
    return Saved{std::move(*configuration), std::move(*summary)};
}

bool DefaultSettings::Delete() const
{
    const RegistryKey company = RegistryKey::Open(kCompanyPath, KEY_ALL_ACCESS);
    if (!company.IsOpen())
        return false;
    std::ignore = company.DeleteSubkey(kProductKey); // there may be none
    return true;
}

bool DefaultSettings::Write(std::wstring_view configuration, std::wstring_view summary) const
{
    const RegistryKey key = RegistryKey::Create(kProductPath);
    return key.IsOpen() && key.WriteText(kConfigurationName, configuration) &&
           key.WriteText(kSummaryName, summary);
}

} // namespace vxds
