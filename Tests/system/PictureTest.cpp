#include "system/BilinearDemosaic.h"
#include "system/RoadTest.h"

#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/PictureOrientation.h"
#include "VxSimulator/picture/TestPicture.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <tuple>

namespace {

struct Output {
    const char* name;
    const GUID* subtype;
};

/// What came of one frame on the whole road.
struct Grabbed {
    CaughtFrame frame;
    vxgrab::FrameFormat format;
    std::uint32_t number = 0; ///< as the picture itself says
};

class PictureTest : public RoadTest {
protected:
    /// Runs the road until there are two different pictures.
    /// @return  the second one; nothing after a failure
    std::optional<Grabbed> Grab(const VxSimulatorOptions& options, const GUID& subtype,
                                const std::string& name)
    {
        VxSimulatedCamera camera;
        Start(camera, options);
        FrameCatcher catcher;
        GrabberGraph graph(FilterFor(camera), subtype, catcher);
        if (!graph.IsBuilt() || FAILED(graph.Run()))
            return std::nullopt;
        const auto first = catcher.WaitForPicture(kPatience);
        const auto second = catcher.WaitForPicture(kPatience);
        EXPECT_LT(graph.TimedStop(), kStopLimit);
        EXPECT_TRUE(first && second) << "no picture came";
        if (!first || !second)
            return std::nullopt;
        SavePicture(*second, graph.Format(), name);

        EXPECT_EQ(graph.Format().widthPx, static_cast<int>(options.widthPx));
        EXPECT_EQ(graph.Format().heightPx, static_cast<int>(options.heightPx));
        const auto before = ReadFrameNumber(ViewOf(*first, graph.Format()));
        const auto number = ReadFrameNumber(ViewOf(*second, graph.Format()));
        EXPECT_TRUE(before && number) << "the picture does not show its number";
        if (!before || !number)
            return std::nullopt;
        EXPECT_GT(*number, *before) << "the pictures do not change";
        return Grabbed{*second, graph.Format(), *number};
    }
};

// Chosen: a width whose RGB24 rows are no whole 32-bit words, and numbers that are not each other's
// multiples.
VxSimulatorOptions OddCamera(const char* format)
{
    VxSimulatorOptions options = SmallCamera(format);
    options.widthPx = 332;
    options.heightPx = 250;
    return options;
}

simulator::Colour ExpectedAt(std::span<const std::byte> bgr, std::uint32_t widthPx, std::uint32_t xPx,
                             std::uint32_t yPx)
{
    const std::size_t offset = (std::size_t{yPx} * widthPx + xPx) * 3;
    return {static_cast<std::uint8_t>(bgr[offset + 2]), static_cast<std::uint8_t>(bgr[offset + 1]),
            static_cast<std::uint8_t>(bgr[offset])};
}

int Distance(const simulator::Colour& a, const simulator::Colour& b)
{
    return std::max({std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
}

/// Compares pixels where it is asked for, and says how many differ and where the first one is.
template <typename Expected, typename Where>
void ExpectPixels(const simulator::PictureView& picture, int tolerance, Expected expected, Where isCompared)
{
    std::size_t compared = 0;
    std::size_t different = 0;
    std::string first;
    for (std::uint32_t y = 0; y < picture.heightPx; ++y) {
        for (std::uint32_t x = 0; x < picture.widthPx; ++x) {
            if (!isCompared(x, y))
                continue;
            ++compared;
            if (Distance(picture.At(x, y), expected(x, y)) <= tolerance)
                continue;
            if (different++ == 0)
                first = std::to_string(x) + ", " + std::to_string(y);
        }
    }
    EXPECT_GT(compared, std::size_t{picture.widthPx} * picture.heightPx / 2) << "too little was compared";
    EXPECT_EQ(different, 0u) << "of " << compared << " pixels; the first one at " << first;
}

class ExactPictureTest : public PictureTest,
                         public testing::WithParamInterface<std::tuple<const char*, Output>> {};

TEST_P(ExactPictureTest, IsTheOneThatTheCameraSentPixelForPixel)
{
    const auto& [format, output] = GetParam();
    const VxSimulatorOptions options = OddCamera(format);

    const auto grabbed = Grab(options, *output.subtype, std::string("road-") + format + "-" + output.name);
    ASSERT_TRUE(grabbed);

    const auto sent =
        simulator::TestPictureBgr(grabbed->number, options.widthPx, options.heightPx, options.pixelFormat);
    ASSERT_EQ(sent.size(), std::size_t{options.widthPx} * options.heightPx * 3);
    const auto picture = ViewOf(grabbed->frame, grabbed->format);
    EXPECT_EQ(ReadOrientation(picture), simulator::PictureOrientation::Upright);
    ExpectPixels(
        picture, 0, [&](std::uint32_t x, std::uint32_t y) { return ExpectedAt(sent, options.widthPx, x, y); },
        [](std::uint32_t, std::uint32_t) { return true; });
    for (std::size_t i = 3; picture.bytesPerPixel == 4 && i < picture.pixels.size(); i += 4)
        ASSERT_EQ(picture.pixels[i], std::byte{255}) << "pixel " << i / 4 << " is not opaque";
}

INSTANTIATE_TEST_SUITE_P(WholeRoad, ExactPictureTest,
                         testing::Combine(testing::Values("BGR8", "RGB8", "Mono8"),
                                          testing::Values(Output{"RGB24", &MEDIASUBTYPE_RGB24},
                                                          Output{"RGB32", &MEDIASUBTYPE_RGB32},
                                                          Output{"ARGB32", &MEDIASUBTYPE_ARGB32})),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param)) + "To" +
                                    std::get<1>(test.param).name;
                         });

struct Mosaic {
    const char* format;
    BilinearDemosaic::Filter firstRow[2];
    BilinearDemosaic::Filter secondRow[2];
};

using Filter = BilinearDemosaic::Filter;

class BayerPictureTest : public PictureTest, public testing::WithParamInterface<Mosaic> {};

TEST_P(BayerPictureTest, HasTheColoursOfABilinearDemosaic)
{
    Mosaic mosaic = GetParam();
    const VxSimulatorOptions options = OddCamera(mosaic.format);

    const auto grabbed = Grab(options, MEDIASUBTYPE_RGB24, std::string("road-") + mosaic.format);
    ASSERT_TRUE(grabbed);

    const auto sent =
        simulator::TestPicture(grabbed->number, options.widthPx, options.heightPx, options.pixelFormat);
    ASSERT_EQ(sent.size(), std::size_t{options.widthPx} * options.heightPx);
    const BilinearDemosaic expected(sent, options.widthPx, mosaic.firstRow, mosaic.secondRow);
    const auto picture = ViewOf(grabbed->frame, grabbed->format);
    EXPECT_EQ(ReadOrientation(picture), simulator::PictureOrientation::Upright);
    ExpectPixels(
        picture, 0, [&](std::uint32_t x, std::uint32_t y) { return expected.At(x, y); },
        [](std::uint32_t, std::uint32_t) { return true; });
}

INSTANTIATE_TEST_SUITE_P(
    WholeRoad, BayerPictureTest,
    testing::Values(Mosaic{"BayerRG8", {Filter::Red, Filter::Green}, {Filter::Green, Filter::Blue}},
                    Mosaic{"BayerGR8", {Filter::Green, Filter::Red}, {Filter::Blue, Filter::Green}},
                    Mosaic{"BayerGB8", {Filter::Green, Filter::Blue}, {Filter::Red, Filter::Green}},
                    Mosaic{"BayerBG8", {Filter::Blue, Filter::Green}, {Filter::Green, Filter::Red}}),
    [](const auto& test) { return std::string(test.param.format); });

class YuvPictureTest : public PictureTest, public testing::WithParamInterface<const char*> {};

TEST_P(YuvPictureTest, HasTheColoursOfTheSceneWhereItIsFlat)
{
    const VxSimulatorOptions options = OddCamera(GetParam());

    const auto grabbed = Grab(options, MEDIASUBTYPE_RGB24, std::string("road-") + GetParam());
    ASSERT_TRUE(grabbed);

    const auto sent =
        simulator::TestPictureBgr(grabbed->number, options.widthPx, options.heightPx, options.pixelFormat);
    const auto picture = ViewOf(grabbed->frame, grabbed->format);
    EXPECT_EQ(ReadOrientation(picture), simulator::PictureOrientation::Upright);
    // Two conversions with 8 bits between them: each of the three sums is off by at most two steps.
    constexpr int kTolerance = 4;
    ExpectPixels(
        picture, kTolerance,
        [&](std::uint32_t x, std::uint32_t y) { return ExpectedAt(sent, options.widthPx, x, y); },
        [&](std::uint32_t x, std::uint32_t y) {
            return simulator::IsFlat(grabbed->number, options.widthPx, options.heightPx, x, y, 1);
        });
}

INSTANTIATE_TEST_SUITE_P(WholeRoad, YuvPictureTest, testing::Values("YUV422_8", "YUV422_8_UYVY"),
                         [](const auto& test) { return std::string(test.param); });

TEST_F(PictureTest, FramesCountUpAndTheirTimesAreThoseOfTheGraphsClock)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("BGR8"));
    FrameCatcher catcher;
    GrabberGraph graph(FilterFor(camera), MEDIASUBTYPE_RGB24, catcher);
    ASSERT_TRUE(graph.IsBuilt());
    ASSERT_HRESULT_SUCCEEDED(graph.Run());

    auto before = catcher.WaitForPicture(kPatience);
    ASSERT_TRUE(before);
    for (int i = 0; i < 20; ++i) {
        const auto frame = catcher.WaitForPicture(kPatience);
        ASSERT_TRUE(frame && frame->mediaTime && frame->startTime && before->mediaTime && before->endTime);
        EXPECT_EQ(*frame->mediaTime, *before->mediaTime + 1);
        EXPECT_EQ(*frame->startTime, *before->endTime);
        EXPECT_LE(*frame->startTime, *frame->endTime);
        EXPECT_TRUE(frame->isSyncPoint);
        before = frame;
    }
}

} // namespace
