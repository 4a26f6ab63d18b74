#include "VxCamera/surface/NoThrow.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace {

TEST(NoThrowTest, PassesTheResultOn)
{
    EXPECT_EQ(NoThrow([] { return VxResult(VxError::NotFound, "gone"); }).GetDescription(), "gone");
}

TEST(NoThrowTest, MakesAResultOfWhateverIsThrown)
{
    const auto memory = NoThrow([]() -> VxResult { throw std::bad_alloc(); });
    const auto fault = NoThrow([]() -> VxResult { throw std::runtime_error("why"); });
    const auto strange = NoThrow([]() -> VxResult { throw 7; });

    EXPECT_EQ(memory.Code(), VxError::OutOfMemory);
    EXPECT_EQ(fault.Code(), VxError::Failed);
    EXPECT_EQ(fault.GetDescription(), "why");
    EXPECT_EQ(strange.Code(), VxError::Failed);
}

} // namespace
