#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace vxds {

class SettingsRecord;

/// One line that describes settings: role, camera and, for the receiving roles, where the stream arrives.
/// Empty for a role that does not exist.
[[nodiscard]] std::wstring SummaryOf(const SettingsRecord& settings);

/// The settings a user saved as the default for new filters, in the user's registry.
///
/// Owner:  VxDSStream, by value.
/// Thread: one at a time; works on the caller's thread.
class DefaultSettings {
public:
    struct Saved {
        std::wstring configuration; ///< settings only, without camera or stream configuration
        std::wstring summary;
    };

    /// What is saved. Nothing when either text is missing, empty, of another type or too long (2048
    /// characters for the configuration, 128 for the summary).
    [[nodiscard]] std::optional<Saved> Load() const;

    /// Deletes what is saved.
    /// @return  false when the company's key cannot be opened, as when nothing was ever saved on this account
    [[nodiscard]] bool Delete() const;

    /// Writes the configuration, then the summary.
    /// @return  false as soon as one cannot be written; what was written before it stays
    [[nodiscard]] bool Write(std::wstring_view configuration, std::wstring_view summary) const;
};

} // namespace vxds
