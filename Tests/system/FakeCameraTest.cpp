#include "system/RoadTest.h"

#include "vxgrab/ComText.h"

#include <string>

namespace {

/// The independent fake camera of Debian's aravis-tools. It sends a moving pattern.
class FakeCameraTest : public RoadTest {};

TEST_F(FakeCameraTest, PicturesArriveAndChange)
{
    FrameCatcher catcher;
    GrabberGraph graph(FilterFor(CameraOfTheDriver()), MEDIASUBTYPE_RGB24, catcher);
    ASSERT_TRUE(graph.IsBuilt());
    ASSERT_HRESULT_SUCCEEDED(graph.Run());

    const auto first = catcher.WaitForPicture(kPatience);
    ASSERT_TRUE(first) << "no picture came";
    const auto other = catcher.WaitFor(
        [&](const CaughtFrame& frame) { return !frame.IsZero() && frame.bytes != first->bytes; }, kPatience);
    ASSERT_TRUE(other) << "the picture never changes";
    SavePicture(*other, graph.Format(), "road-fake-camera");
    EXPECT_EQ(other->bytes.size(), first->bytes.size());
    EXPECT_LT(graph.TimedStop(), kStopLimit);
}

TEST_F(FakeCameraTest, PictureSizeIsTheOneThatTheCameraTells)
{
    const auto filter = FilterFor(CameraOfTheDriver());
    const auto control = ControlOf(filter);
    ASSERT_HRESULT_SUCCEEDED(control->SetParameterArray(1)); // the camera's features
    const auto valueOf = [&](const char* feature) {
        vxgrab::ComText value;
        EXPECT_HRESULT_SUCCEEDED(control->GetParameterValue(vxgrab::ComText(feature).Get(), value.Put()))
            << feature;
        return value.Utf8();
    };

    FrameCatcher catcher;
    GrabberGraph graph(filter, MEDIASUBTYPE_RGB32, catcher);
    ASSERT_TRUE(graph.IsBuilt());

    EXPECT_EQ(std::to_string(graph.Format().widthPx), valueOf("Width"));
    EXPECT_EQ(std::to_string(graph.Format().heightPx), valueOf("Height"));
    EXPECT_FALSE(valueOf("DeviceModelName").empty());
}

TEST_F(FakeCameraTest, CanBeOpenedAgainAndAgainAndLeavesNothingBehind)
{
    ExpectNothingIsLeftBy([&] {
        FrameCatcher catcher;
        GrabberGraph graph(FilterFor(CameraOfTheDriver()), MEDIASUBTYPE_RGB24, catcher);
        ASSERT_TRUE(graph.IsBuilt());
        ASSERT_HRESULT_SUCCEEDED(graph.Run());
        EXPECT_TRUE(catcher.WaitForPicture(kPatience));
        EXPECT_LT(graph.TimedStop(), kStopLimit);
    });
}

} // namespace
