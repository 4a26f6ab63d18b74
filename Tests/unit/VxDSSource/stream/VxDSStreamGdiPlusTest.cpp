#include "unit/VxDSSource/overlay/ScriptedGdiPlus.h"

#include "FramesFixture.h"

#include <algorithm>

namespace {

/// A pin over a GDI+ that records its calls.
class VxDSStreamGdiPlusTest : public FramesFixture {
protected:
    VxDSStreamGdiPlusTest() { TheGdiPlus().Reset(); }

    void FillOne()
    {
        Queue(TestPicture(8, 6));
        CanarySample sample(8 * 6 * 3);
        Fill(sample);
    }

    static std::vector<std::string>& Calls() { return TheGdiPlus().calls; }
};

TEST_F(VxDSStreamGdiPlusTest, StartsGdiPlusWithThePinAndEndsItWithThePin)
{
    Pin();
    EXPECT_EQ(Calls(), Lines{"GdiplusStartup"});

    DestroyPin();

    EXPECT_EQ(Calls(), (Lines{"GdiplusStartup", "GdiplusShutdown"}));
    EXPECT_EQ(TheGdiPlus().shutDown, std::vector<ULONG_PTR>{ScriptedGdiPlus::kToken});
}

TEST_F(VxDSStreamGdiPlusTest, CallsGdiPlusOnlyWhileDiagnosticsAreOn)
{
    Stream(8, 6);
    UseType(0, 8, 6);
    Calls().clear();

    FillOne();
    EXPECT_EQ(Calls(), Lines{}) << "off, as at first";

    Pin().SetDiagnosticsEnabled(true);
    FillOne();
    EXPECT_EQ(std::ranges::count(Calls(), "GdipDrawString"), 1);

    Pin().SetDiagnosticsEnabled(false);
    Calls().clear();
    FillOne();
    EXPECT_EQ(Calls(), Lines{}) << "off again";
}

TEST_F(VxDSStreamGdiPlusTest, DrawsOnceOnEachFrameAndAsksHowBitsAreTreatedOnce)
{
    Stream(8, 6);
    UseType(0, 8, 6);
    Pin().SetDiagnosticsEnabled(true);
    Calls().clear();

    for (int i = 0; i < 3; ++i)
        FillOne();

    EXPECT_EQ(std::ranges::count(Calls(), "GdipDrawString"), 3);
    EXPECT_EQ(std::ranges::count(Calls(), "GdipBitmapLockBits"), 1);
}

} // namespace
