#pragma once

#include "VxBase/VxMutex.h"
#include "VxBase/VxString.h"
#include "VxDSSource/filter/SettingsTable.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

namespace vxds {

/// The values that decide which camera is opened, how its stream reaches the host and what picture is
/// delivered.
///
/// Owner:  VxDSStream, by value.
/// Thread: any. A number is one aligned 32-bit access; a text is copied in and out under a lock of its own.
///         What must be consistent over several settings is the pin's concern.
class SettingsRecord {
public:
    /// Every setting at its default.
    SettingsRecord();
    SettingsRecord(const SettingsRecord&) = delete;
    SettingsRecord& operator=(const SettingsRecord&) = delete;

    /// @param setting  any but a text
    [[nodiscard]] std::uint32_t Number(Setting setting) const;
    [[nodiscard]] std::int32_t SignedNumber(Setting setting) const;
    [[nodiscard]] bool Flag(Setting setting) const { return Number(setting) != 0; }

    /// @param setting  a text
    [[nodiscard]] std::wstring Text(Setting setting) const;

    /// Stores without a test; a Boolean becomes 0 or 1.
    void Store(Setting setting, std::uint32_t number);
    void Store(Setting setting, std::wstring text);

    /// Stores what the setting's rule allows.
    /// @return  false when the rule refuses the value; nothing changes then
    [[nodiscard]] bool Set(Setting setting, std::int32_t value);

    /// Stores both when both are at least 1.
    /// @return  false otherwise; nothing changes then
    [[nodiscard]] bool SetOutputSize(std::int32_t widthPx, std::int32_t heightPx);

    /// The value as a configuration holds it: numbers as signed decimals, "true" or "false", texts as they
    /// are.
    [[nodiscard]] VxString ToText(Setting setting) const;

    /// Takes a value from a configuration. A number is read like a stream reads one: leading digits count, a
    /// text without any gives 0, an empty one changes nothing. A Boolean is true for "true" and for nothing
    /// else.
    void FromText(Setting setting, const VxString& text);

private:
    std::array<std::atomic<std::uint32_t>, kSettingCount> m_numbers;
    mutable VxMutex m_textMutex;
    std::array<std::wstring, kSettingCount> m_texts VX_GUARDED_BY(m_textMutex);
};

} // namespace vxds
