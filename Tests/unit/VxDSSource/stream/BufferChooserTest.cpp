#include "VxDSSource/stream/BufferChooser.h"

#include "VxDSSource/camera/VxPipeline.h"
#include "VxDSSource/camera/VxStreamGEV.h"
#include "support/camera/CameraDouble.h"

#include <gtest/gtest.h>

#include <optional>

namespace vxds {
namespace {

using Lines = std::vector<std::string>;

class BufferChooserTest : public testing::Test {
protected:
    BufferChooserTest()
    {
        TheCamera().Reset();
        m_stream.emplace();
        m_pipeline.emplace(&*m_stream);
    }
    ~BufferChooserTest() override
    {
        m_pipeline.reset();
        m_stream.reset();
        TheCamera().Reset();
    }

    static void QueueGood(std::size_t waitingAfter) { TheCamera().QueuePicture({}, waitingAfter); }

    /// @return  the name of the buffer that was taken; empty when there was none. It is released by then.
    std::string Choose(
        std::uint32_t threshold, const std::function<bool()>& isWanted = [] { return false; })
    {
        TheCamera().log.Clear();
        const HeldBuffer held = ChooseBuffer(*m_pipeline, threshold, m_statistics, isWanted);
        return held ? TheCamera().NameOf(&*held) : "";
    }

    std::optional<VxStreamGEV> m_stream;
    std::optional<VxPipeline> m_pipeline;
    FrameStatistics m_statistics;
};

TEST_F(BufferChooserTest, TakesTheFirstGoodBufferWithoutAThresholdEvenIfManyWait)
{
    QueueGood(50);
    QueueGood(0);

    EXPECT_EQ(Choose(0), "#0");

    EXPECT_EQ(TheCamera().Actions(), (Lines{"pipeline.Retrieve(1000)", "pipeline.Release(#0)"}));
    EXPECT_EQ(m_statistics.BlocksDroppedByFilter(), 0);
}

TEST_F(BufferChooserTest, SkipsAndCountsWhileMoreThanTheThresholdWait)
{
    QueueGood(3);
    QueueGood(2);
    QueueGood(1);
    QueueGood(0);

    EXPECT_EQ(Choose(1), "#2");

    EXPECT_EQ(m_statistics.BlocksDroppedByFilter(), 2);
    EXPECT_EQ(TheCamera().Actions(),
              (Lines{"pipeline.Retrieve(1000)", "pipeline.Retrieve(1000)", "pipeline.Release(#0)",
                     "pipeline.Retrieve(1000)", "pipeline.Release(#1)", "pipeline.Release(#2)"}));
}

TEST_F(BufferChooserTest, TakesABufferWhenAsManyAsTheThresholdWait)
{
    QueueGood(4);

    EXPECT_EQ(Choose(4), "#0");
    EXPECT_EQ(m_statistics.BlocksDroppedByFilter(), 0);
}

TEST_F(BufferChooserTest, GivesIncompleteBuffersBackAtOnceAndGoesOn)
{
    TheCamera().QueueIncomplete(9);
    TheCamera().QueueIncomplete(9);
    QueueGood(0);

    EXPECT_EQ(Choose(1), "#2");

    EXPECT_EQ(TheCamera().Actions(),
              (Lines{"pipeline.Retrieve(1000)", "pipeline.Release(#0)", "pipeline.Retrieve(1000)",
                     "pipeline.Release(#1)", "pipeline.Retrieve(1000)", "pipeline.Release(#2)"}));
    EXPECT_EQ(m_statistics.BlocksDroppedByFilter(), 0);
}

TEST_F(BufferChooserTest, FindsNothingWhenAnIncompleteBufferIsFollowedByATimeout)
{
    TheCamera().QueueIncomplete();
    TheCamera().QueueTimeout();

    EXPECT_EQ(Choose(1), "");

    EXPECT_EQ(TheCamera().Actions(),
              (Lines{"pipeline.Retrieve(1000)", "pipeline.Release(#0)", "pipeline.Retrieve(1000)"}));
    EXPECT_EQ(m_statistics.BlocksDroppedByFilter(), 0);
}

TEST_F(BufferChooserTest, KeepsWhatItHasWhenTheNextOneDoesNotCome)
{
    QueueGood(5);
    TheCamera().QueueTimeout();

    EXPECT_EQ(Choose(1), "#0");
    EXPECT_EQ(m_statistics.BlocksDroppedByFilter(), 1) << "it was counted before the next one failed to come";
}

TEST_F(BufferChooserTest, ComparesTheThresholdAsASignedNumber)
{
    QueueGood(0);
    TheCamera().QueueTimeout();

    EXPECT_EQ(Choose(0xFFFFFFFF), "#0"); // -1: even an empty queue is more
    EXPECT_EQ(m_statistics.BlocksDroppedByFilter(), 1);
}

TEST_F(BufferChooserTest, LetsGoOfASearchAmongIncompleteBuffersWhenSomebodyWaits)
{
    for (int i = 0; i < 100; ++i)
        TheCamera().QueueIncomplete();
    int asked = 0;

    EXPECT_EQ(Choose(1, [&] { return ++asked == 3; }), "");

    EXPECT_EQ(TheCamera().retrievals.size(), 97u);
}

TEST_F(BufferChooserTest, DeliversWhatItHoldsWhenSomebodyWaitsAndCountsItOnce)
{
    QueueGood(9);
    QueueGood(9);

    EXPECT_EQ(Choose(1, [] { return true; }), "#0");
    EXPECT_EQ(m_statistics.BlocksDroppedByFilter(), 0) << "a delivered block is not a dropped one";
}

} // namespace
} // namespace vxds
