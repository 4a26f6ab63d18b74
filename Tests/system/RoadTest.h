#pragma once

#include "VxSimulator/VxSimulatedCamera.h"
#include "VxSimulator/picture/PictureView.h"

#include "support/directshow/ComApartment.h"
#include "support/graph/FrameCatcher.h"
#include "support/graph/GrabberGraph.h"
#include "support/graph/ModuleUnderTest.h"
#include "support/graph/ProcessUse.h"

#include <gtest/gtest.h>

#include <dshow.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

/// The whole road: a camera on loopback, the module as it was built, and a real filter graph.
class RoadTest : public testing::Test {
protected:
    /// How long a test waits for what must happen. Chosen: far above what a loaded machine needs.
    static constexpr std::chrono::seconds kPatience{20};
    /// The longest time that stopping may take, whatever the camera does.
    static constexpr std::chrono::seconds kStopLimit{2};

    /// @return  a new filter with its camera set and connected
    [[nodiscard]] vxgrab::ComPtr<IBaseFilter> FilterFor(const std::string& deviceId);
    [[nodiscard]] vxgrab::ComPtr<IBaseFilter> FilterFor(const VxSimulatedCamera& camera);

    /// Waits until something holds that nobody reports.
    /// @return  false when the time is over
    [[nodiscard]] static bool BecomesTrue(const std::function<bool()>& holds);

    /// Builds a graph for RGB24, runs it, waits for a picture, stops and takes everything apart.
    void GrabOnePicture(const VxSimulatedCamera& camera);

    /// How often something is done whose losses are looked for.
    struct Repetition {
        int settling = 1; ///< before anything is counted: loads modules, fills caches
        int rounds = 4;   ///< between two counts. Chosen: few, some take seconds
        int series = 8;   ///< at most. Chosen: not in each of as many a lock gets its event by chance
    };

    /// Does something several times and demands that what the process holds does not grow by it: no thread,
    /// socket, object or handle.
    ///
    /// What a run-time library makes once and late, as it gives a mutex its event when two threads first meet
    /// there, makes a series of rounds grow by chance; then another series decides. A loss shows in each,
    /// also one that not every round has.
    void ExpectNothingIsLeftBy(const std::function<void()>& action, Repetition repetition);
    void ExpectNothingIsLeftBy(const std::function<void()>& action) { ExpectNothingIsLeftBy(action, {}); }

    /// @param graphsBefore  GrabberGraph::BuiltUntilNow() when it was counted
    /// @return  what may be held now when that much was held before
    [[nodiscard]] ProcessUse LimitAfter(ProcessUse before, std::size_t graphsBefore) const;

    ModuleUnderTest m_module;

private:
    void Repeat(const std::function<void()>& action, int rounds);

    ComApartment m_apartment; // after the module: COM ends before it is unloaded
    const std::map<unsigned, std::size_t> m_lostPerGraph =
        HandlesLostByAnEmptyGraph(); // before anything is counted
};

/// What a camera of these tests is like unless they say otherwise: at 127.0.0.1, small pictures, many of
/// them.
[[nodiscard]] VxSimulatorOptions SmallCamera(std::string_view pixelFormat);

/// Switches a camera on; a failure is a failure of the test.
void Start(VxSimulatedCamera& camera, const VxSimulatorOptions& options);

/// @return  the address of the camera that run-with-camera has started; empty, which is a failure, when there
/// is none
[[nodiscard]] std::string CameraOfTheDriver();

/// Sets a filter's camera and connects it.
void Connect(const vxgrab::ComPtr<IBaseFilter>& filter, const std::string& deviceId);

/// Shows a filter's property pages until they are closed, for PropertyFrame; a failure is a failure of the
/// test.
[[nodiscard]] HRESULT ShowPages(const ModuleUnderTest& module, const vxgrab::ComPtr<IBaseFilter>& filter,
                                HANDLE stop);

/// @return  the frame as a picture; borrows its bytes
[[nodiscard]] simulator::PictureView ViewOf(const CaughtFrame& frame, const vxgrab::FrameFormat& format);

/// Leaves a picture for people to look at, as out/test/NAME.png.
void SavePicture(const CaughtFrame& frame, const vxgrab::FrameFormat& format, const std::string& name);

/// @return  where tests leave files for people to look at; created if needed
[[nodiscard]] std::filesystem::path OutputFolder();
