#include "system/RoadTest.h"

#include "vxgrab/ComText.h"

#include <cstddef>
#include <string>
#include <utility>

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

/// @return  whether every pixel is grey, as everything is that a camera for shades of grey sends
bool IsGrey(const CaughtFrame& frame, std::size_t bytesPerPixel)
{
    for (std::size_t i = 0; i + 2 < frame.bytes.size(); i += bytesPerPixel) {
        if (frame.bytes[i] != frame.bytes[i + 1] || frame.bytes[i] != frame.bytes[i + 2])
            return false;
    }
    return true;
}

TEST_F(FakeCameraTest, ShadesOfGreyAreGreyInBothRgbFormats)
{
    for (const auto& [subtype, bytesPerPixel] :
         {std::pair{MEDIASUBTYPE_RGB24, 3u}, std::pair{MEDIASUBTYPE_RGB32, 4u}}) {
        FrameCatcher catcher;
        GrabberGraph graph(FilterFor(CameraOfTheDriver()), subtype, catcher);
        ASSERT_TRUE(graph.IsBuilt());
        ASSERT_HRESULT_SUCCEEDED(graph.Run());

        const auto picture = catcher.WaitForPicture(kPatience);

        ASSERT_TRUE(picture) << bytesPerPixel;
        EXPECT_EQ(graph.Format().bytesPerPixel, bytesPerPixel);
        EXPECT_EQ(picture->bytes.size(), static_cast<std::size_t>(graph.Format().widthPx) *
                                             static_cast<std::size_t>(graph.Format().heightPx) *
                                             bytesPerPixel);
        EXPECT_TRUE(IsGrey(*picture, bytesPerPixel)) << bytesPerPixel;
        EXPECT_LT(graph.TimedStop(), kStopLimit);
    }
}

TEST_F(FakeCameraTest, ShadesOfGreyCannotBecomeYuvAndGiveNumberedZeroFrames)
{
    const auto filter = FilterFor(CameraOfTheDriver());
    ASSERT_HRESULT_SUCCEEDED(ControlOf(filter)->SetOutputPixelType(1)); // disconnects
    ASSERT_HRESULT_SUCCEEDED(ControlOf(filter)->Connect());
    FrameCatcher catcher;
    GrabberGraph graph(filter, MEDIASUBTYPE_YUY2, catcher);
    ASSERT_TRUE(graph.IsBuilt());
    ASSERT_HRESULT_SUCCEEDED(graph.Run());

    const auto frame =
        catcher.WaitFor([](const CaughtFrame& caught) { return caught.mediaTime.has_value(); }, kPatience);

    ASSERT_TRUE(frame) << "no frame of the camera came";
    EXPECT_TRUE(frame->IsZero());
    EXPECT_EQ(frame->bytes.size(), static_cast<std::size_t>(graph.Format().widthPx) *
                                       static_cast<std::size_t>(graph.Format().heightPx) * 2);
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
