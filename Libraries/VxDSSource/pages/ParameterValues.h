#pragma once

#include "VxDSSource/filter/IVxDSSource.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pages {

/// The source settings page's working copy of the filter's settings: a setting may differ here until it is
/// applied. It knows no limits: the filter's setters do.
///
/// Owner:  ParametersPage, by value.
/// Thread: the window thread.
struct ParameterValues {
    std::int32_t role = 0;
    std::int32_t unicastPort = 0;
    std::wstring multicastAddress;
    std::int32_t multicastPort = 0;
    bool isDiagnosticsEnabled = false;
    std::wstring deviceId;
    std::wstring source;
    std::int32_t channel = 0;
    std::int32_t bufferCount = 0;
    std::int32_t defaultBufferBytes = 0;
    std::int32_t dropThreshold = 0;
    std::int32_t outputPixelType = 0;
    std::int32_t kernelSize = 0;
    std::int32_t zoom = 0;
    std::int32_t outputWidthPx = 0;
    std::int32_t outputHeightPx = 0;

    // Shown, never written.
    std::int32_t deviceWidthPx = 0;
    std::int32_t deviceHeightPx = 0;
    std::vector<std::wstring> sources; ///< names that the camera offers
    std::wstring defaultSummary;

    /// Reads everything from the filter; what it does not tell stays.
    void Load(IVxDSSource& filter);

    /// Writes every setting into the filter. Some setters refuse; Load shows what became of it.
    void Store(IVxDSSource& filter) const;

private:
    void LoadTexts(IVxDSSource& filter);
    void LoadSources(IVxDSSource& filter);
};

/// @return  entry of the list "0", "3", "5" that stands for a size; even ones count as the next smaller.
///          Nothing where there is none
[[nodiscard]] std::optional<std::size_t> KernelEntryOf(std::int32_t kernelSize);

/// @return  kernel size of an entry of that list
[[nodiscard]] std::int32_t KernelSizeOf(std::size_t entry);

} // namespace pages
