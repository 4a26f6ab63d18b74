#pragma once

#include "vxgrab/FrameFormat.h"
#include "vxgrab/FrameRecorder.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vxgrab {

/// What a grab came to.
struct GrabReport {
    std::string camera; ///< device id and model, or the device's name
    FrameFormat format;
    RecordingState recording;
    std::optional<long> framesDropped; ///< nothing when the device does not count
    std::vector<std::filesystem::path> files;
};

/// @return  the report as a block of lines "name: value", for people and for scripts; names never change
[[nodiscard]] std::string SummaryText(const GrabReport& report);

} // namespace vxgrab
