#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vxgrab {

struct FeatureAssignment {
    std::string name;
    std::string value;
};

/// Settings of our filter that the command line names; what it does not name stays as the filter has it.
struct FilterSettings {
    std::optional<std::string> deviceId;
    std::optional<std::uint32_t> role;
    std::optional<std::uint32_t> unicastPort;
    std::optional<std::string> multicastAddress;
    std::optional<std::uint32_t> multicastPort;
    std::optional<std::string> source;
    std::optional<std::uint32_t> channel;
    std::optional<std::uint32_t> bufferCount;
    std::optional<std::uint32_t> bufferBytes;
    std::optional<std::uint32_t> dropThreshold;
    std::optional<std::uint32_t> pixelType; ///< 0 RGB, 1 YUV 4:2:2
    std::optional<int> kernelSize;
    std::optional<int> zoom;
    std::optional<int> outputWidthPx; ///< given together with the height
    std::optional<int> outputHeightPx;
    std::optional<bool> diagnostics;

    [[nodiscard]] bool IsEmpty() const;
};

/// Features of the camera, of the link or of the stream receiver to change or show.
struct FeatureRequests {
    std::uint32_t array = 1; ///< 0 the link's, 1 the camera's, 2 the stream receiver's
    std::vector<FeatureAssignment> assignments;
    std::vector<std::string> queries;
    bool isTreeWanted = false;

    [[nodiscard]] bool IsEmpty() const { return assignments.empty() && queries.empty() && !isTreeWanted; }
};

/// Everything the command line says.
struct Options {
    bool isListWanted = false;
    std::string device;               ///< index or friendly name; empty means our filter
    std::filesystem::path moduleFile; ///< VxDSSource.dll to use without registration; may be empty
    FilterSettings settings;
    FeatureRequests features;
    bool arePagesWanted = false; ///< the device's property pages are to be shown
    bool isSaveDefaultWanted = false;
    bool isClearDefaultWanted = false;

    bool isGrabWanted = false; ///< a graph is to be built and run
    std::string subtype;       ///< empty: whatever the device offers first
    std::uint64_t frames = 0;  ///< pictures to take; 0 = not limited
    std::optional<std::chrono::milliseconds> duration;
    std::chrono::milliseconds patience{}; ///< longest time without a picture before giving up
    std::filesystem::path pngFile;
    std::uint64_t pngEvery = 0; ///< 0: only the first picture is written
    std::filesystem::path aviFile;
    bool isSummaryWanted = false;
    bool isQuiet = false;
};

} // namespace vxgrab
