#include "BaseClasses/CAMEvent.h"

#include <gtest/gtest.h>

TEST(CAMEventTest, AutoResetEventIsConsumedByAWait)
{
    HRESULT hr = S_OK;
    CAMEvent event(&hr);
    EXPECT_FALSE(event.Check());

    event.Set();

    EXPECT_TRUE(event.Wait());
    EXPECT_FALSE(event.Check());
    EXPECT_EQ(hr, S_OK);
}

TEST(CAMEventTest, ManualResetEventStaysSet)
{
    CAMEvent event(TRUE);
    event.Set();

    EXPECT_TRUE(event.Check());
    EXPECT_TRUE(event.Check());
    event.Reset();
    EXPECT_FALSE(event.Check());
}

TEST(CAMEventTest, WaitEndsWithTheTime)
{
    CAMEvent event;

    EXPECT_FALSE(event.Wait(1));
}

TEST(CAMEventTest, EarlierErrorSurvives)
{
    HRESULT hr = E_ACCESSDENIED;
    CAMEvent event(FALSE, &hr);

    EXPECT_EQ(hr, E_ACCESSDENIED);
    EXPECT_NE(static_cast<HANDLE>(event), nullptr);
}
