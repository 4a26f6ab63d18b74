#include "vxgrab/ComFailure.h"

#include "vxgrab/ExitCode.h"

#include <gmock/gmock.h>

#include <vfwmsgs.h>

namespace vxgrab {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(ComFailureTest, NamesWhatWasTriedTheCodeAndTheRemedy)
{
    const VxResult result = ComFailure("open the device", REGDB_E_CLASSNOTREG);

    const std::string& text = result.GetDescription().Narrow();
    EXPECT_THAT(text, StartsWith("cannot open the device: "));
    EXPECT_THAT(text, HasSubstr("REGDB_E_CLASSNOTREG (0x80040154)"));
    EXPECT_THAT(text, HasSubstr("regsvr32 VxDSSource.dll"));
}

TEST(ComFailureTest, EndsTheProgramWithTheSystemExitCode)
{
    EXPECT_EQ(ExitCodeFor(ComFailure("run the graph", E_FAIL)), ExitCode::System);
}

TEST(ComFailureTest, ShowsTheNumberOfACodeThatNobodyKnows)
{
    EXPECT_THAT(DescribeCode(static_cast<HRESULT>(0x8ABC1234)), StartsWith("0x8ABC1234"));
}

TEST(ComFailureTest, TakesTheMeaningOfOtherCodesFromTheSystem)
{
    EXPECT_THAT(DescribeCode(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND)),
                testing::MatchesRegex("0x80070003: .+\\."));
}

TEST(ExitCodeTest, TellsAMissingPictureFromAWrongCommandLine)
{
    EXPECT_EQ(ExitCodeFor(VxResult::Ok()), ExitCode::Ok);
    EXPECT_EQ(ExitCodeFor(VxResult(VxError::Timeout)), ExitCode::NoPicture);
    EXPECT_EQ(ExitCodeFor(VxResult(VxError::InvalidParameter)), ExitCode::Usage);
    EXPECT_EQ(ExitCodeFor(VxResult(VxError::NotFound)), ExitCode::System);
}

} // namespace
} // namespace vxgrab
