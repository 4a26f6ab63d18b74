#include "VxBase/VxError.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

// From the first to the last code, without gaps.
constexpr std::uint32_t kFirst = 0x0601;
constexpr std::uint32_t kLast = 0x061E;

TEST(VxErrorTest, NumbersThatAreSeenOutsideAreFixed)
{
    EXPECT_EQ(static_cast<std::uint32_t>(VxError::Ok), 0u);
    EXPECT_EQ(static_cast<std::uint32_t>(VxError::NotInitialized), 1541u);
    EXPECT_EQ(static_cast<std::uint32_t>(VxError::CameraError), kLast);
}

TEST(VxErrorTest, EveryCodeHasANameOfItsOwn)
{
    std::set<std::string> names{std::string(VxErrorName(VxError::Ok))};
    for (std::uint32_t code = kFirst; code <= kLast; ++code)
        names.emplace(VxErrorName(static_cast<VxError>(code)));

    EXPECT_EQ(names.size(), kLast - kFirst + 2);
    EXPECT_FALSE(names.contains("UNKNOWN"));
    EXPECT_FALSE(names.contains(""));
}

TEST(VxErrorTest, NamesAreInCapitals)
{
    EXPECT_EQ(VxErrorName(VxError::Ok), "OK");
    EXPECT_EQ(VxErrorName(VxError::AccessDenied), "ACCESS_DENIED");
    EXPECT_EQ(VxErrorName(VxError::MissingPackets), "MISSING_PACKETS");
    EXPECT_EQ(VxErrorName(VxError::CameraError), "CAMERA_ERROR");
}

TEST(VxErrorTest, ANumberThatIsNoCodeIsUnknown)
{
    EXPECT_EQ(VxErrorName(static_cast<VxError>(1)), "UNKNOWN");
    EXPECT_EQ(VxErrorName(static_cast<VxError>(kLast + 1)), "UNKNOWN");
}

} // namespace
