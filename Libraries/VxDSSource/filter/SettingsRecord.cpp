#include "VxDSSource/filter/SettingsRecord.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <utility>

namespace vxds {

namespace {

constexpr std::int32_t kLargestStoredZoom = 10; // fixed: saved configurations hold up to this value

std::size_t IndexOf(Setting setting)
{
    return static_cast<std::size_t>(setting);
}

std::int32_t ReadLikeAStream(const VxString& text, std::int32_t present)
{
    std::istringstream in(text.Narrow());
    in.imbue(std::locale::classic()); // the host program's locale must not change what a configuration means
    in.exceptions(std::ios_base::badbit); // without memory the number is not missing: the exception goes on
    in >> present;
    return present;
}

} // namespace

SettingsRecord::SettingsRecord()
{
    const VxLock lock(m_textMutex);
    for (const SettingRow& row : kSettingRows) {
        m_numbers[IndexOf(row.setting)] = row.defaultNumber;
        m_texts[IndexOf(row.setting)] = row.defaultText;
    }
}

std::uint32_t SettingsRecord::Number(Setting setting) const
{
    return m_numbers[IndexOf(setting)].load();
}

std::int32_t SettingsRecord::SignedNumber(Setting setting) const
{
    return static_cast<std::int32_t>(Number(setting)); // the same 32 bits
}

std::wstring SettingsRecord::Text(Setting setting) const
{
    const VxLock lock(m_textMutex);
    return m_texts[IndexOf(setting)];
}

void SettingsRecord::Store(Setting setting, std::uint32_t number)
{
    const bool isBoolean = RowOf(setting).type == SettingType::Boolean;
    m_numbers[IndexOf(setting)] = isBoolean && number != 0 ? 1 : number;
}

void SettingsRecord::Store(Setting setting, std::wstring text)
{
    const VxLock lock(m_textMutex);
    m_texts[IndexOf(setting)] = std::move(text);
}

bool SettingsRecord::Set(Setting setting, std::int32_t value)
{
    switch (RowOf(setting).rule) {
    case SettingRule::Any:
        break;
    case SettingRule::ZeroOrOne:
        if (value != 0 && value != 1)
            return false;
        break;
    case SettingRule::MedianKernel:
        if (value != 0 && value != 3 && value != 5)
            return false;
        break;
    case SettingRule::AtMostTen:
        value = std::min(value, kLargestStoredZoom);
        break;
    case SettingRule::AtLeastOne:
    case SettingRule::FollowsOutput:
        return false;
    }
    Store(setting, static_cast<std::uint32_t>(value)); // the same 32 bits
    return true;
}

bool SettingsRecord::SetOutputSize(std::int32_t widthPx, std::int32_t heightPx)
{
    if (widthPx < 1 || heightPx < 1)
        return false;
    Store(Setting::OutputWidth, static_cast<std::uint32_t>(widthPx));   // positive, tested above
    Store(Setting::OutputHeight, static_cast<std::uint32_t>(heightPx)); // positive, tested above
    return true;
}

VxString SettingsRecord::ToText(Setting setting) const
{
    switch (RowOf(setting).type) {
    case SettingType::Unsigned:
    case SettingType::Signed:
        return std::to_string(SignedNumber(setting));
    case SettingType::Boolean:
        return Flag(setting) ? "true" : "false";
    case SettingType::Text:
        break;
    }
    return Text(setting);
}

void SettingsRecord::FromText(Setting setting, const VxString& text)
{
    switch (RowOf(setting).type) {
    case SettingType::Unsigned:
    case SettingType::Signed:
        Store(setting, static_cast<std::uint32_t>(ReadLikeAStream(text, SignedNumber(setting))));
        return;
    case SettingType::Boolean:
        Store(setting, text == "true" ? 1U : 0U);
        return;
    case SettingType::Text:
        Store(setting, text.Wide());
        return;
    }
}

} // namespace vxds
