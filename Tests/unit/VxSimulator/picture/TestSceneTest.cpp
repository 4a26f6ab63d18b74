#include "VxSimulator/picture/TestScene.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;

TEST(TestSceneTest, UpperHalfHasBarsOfFullColours)
{
    const TestScene scene(640, 480);

    EXPECT_EQ(scene.At(0, 40, 100), kWhite);
    EXPECT_EQ(scene.At(0, 120, 100), (Colour{255, 255, 0}));
    EXPECT_EQ(scene.At(0, 200, 100), (Colour{0, 255, 255}));
    EXPECT_EQ(scene.At(0, 280, 100), (Colour{0, 255, 0}));
    EXPECT_EQ(scene.At(0, 360, 100), (Colour{255, 0, 255}));
    EXPECT_EQ(scene.At(0, 440, 100), (Colour{255, 0, 0}));
    EXPECT_EQ(scene.At(0, 520, 100), (Colour{0, 0, 255}));
    EXPECT_EQ(scene.At(0, 600, 100), kBlack);
}

TEST(TestSceneTest, TheRampRunsFromBlackToWhite)
{
    const TestScene scene(640, 480);

    EXPECT_EQ(scene.BackgroundAt(0, 400), kBlack);
    EXPECT_EQ(scene.BackgroundAt(639, 400), kWhite);
    for (std::uint32_t x = 1; x < 640; ++x)
        EXPECT_GE(scene.BackgroundAt(x, 400).red, scene.BackgroundAt(x - 1, 400).red);
}

TEST(TestSceneTest, TheSquareMovesToTheRightAndBeginsAgain)
{
    const TestScene scene(640, 480);

    EXPECT_EQ(scene.MoverPlace(0), (Rectangle{0, 224, 32, 32}));
    EXPECT_EQ(scene.MoverPlace(1), (Rectangle{4, 224, 32, 32}));
    EXPECT_EQ(scene.MoverPlace(152), (Rectangle{608, 224, 32, 32})); // the right edge
    EXPECT_EQ(scene.MoverPlace(153), (Rectangle{0, 224, 32, 32}));
}

TEST(TestSceneTest, TheSquareDoesNotHideTheLeftMark)
{
    const TestScene scene(640, 480);
    const auto mark = scene.LeftMarkPlace();
    ASSERT_TRUE(mark);

    for (std::uint32_t y = 0; y < mark->heightPx; ++y)
        for (std::uint32_t x = 0; x < mark->widthPx; ++x)
            EXPECT_EQ(scene.At(0, mark->xPx + x, mark->yPx + y),
                      TestScene::IsUpMarkWhite(y, x) ? kWhite : kBlack);
}

TEST(TestSceneTest, TheUpMarkIsATriangleWithItsTipUp)
{
    int above = 0;
    int whitePx = 0;
    for (std::uint32_t y = 0; y < TestScene::kMarkPx; ++y) {
        int row = 0;
        for (std::uint32_t x = 0; x < TestScene::kMarkPx; ++x)
            row += TestScene::IsUpMarkWhite(x, y) ? 1 : 0;
        if (row == 0)
            continue;
        EXPECT_GE(row, above) << y;
        above = row;
        whitePx += row;
    }
    EXPECT_EQ(above, 18);
    EXPECT_GT(whitePx, 150);
}

TEST(TestSceneTest, ASmallPictureHasNoMarks)
{
    for (const auto& [width, height] : {std::pair{126u, 64u}, std::pair{128u, 62u}, std::pair{1u, 1u}}) {
        const TestScene scene(width, height);

        EXPECT_FALSE(scene.StripPlace());
        EXPECT_FALSE(scene.UpMarkPlace());
        EXPECT_FALSE(scene.LeftMarkPlace());
    }
}

TEST(TestSceneTest, MarksAndStripLieApartAndInside)
{
    for (const auto& [width, height] :
         {std::pair{128u, 64u}, std::pair{129u, 65u}, std::pair{1920u, 1080u}}) {
        const TestScene scene(width, height);
        const auto strip = scene.StripPlace();
        const auto up = scene.UpMarkPlace();
        const auto left = scene.LeftMarkPlace();
        ASSERT_TRUE(strip && up && left);

        const auto isInside = [width, height](const Rectangle& place) {
            return place.xPx + place.widthPx <= width && place.yPx + place.heightPx <= height;
        };
        EXPECT_TRUE(isInside(*strip));
        EXPECT_TRUE(isInside(*up));
        EXPECT_TRUE(isInside(*left));
        EXPECT_LE(up->yPx + up->heightPx, strip->yPx);
        EXPECT_LE(left->xPx + left->widthPx, strip->xPx);
        EXPECT_LE(left->xPx + left->widthPx, up->xPx);
    }
}

} // namespace
