#include "vxgrab/PictureFiles.h"

#include <gtest/gtest.h>

namespace vxgrab {
namespace {

TEST(NumberedFileTest, PutsTheNumberBeforeTheSuffix)
{
    EXPECT_EQ(NumberedFile(L"out/shot.png", 12), std::filesystem::path(L"out/shot-000012.png"));
    EXPECT_EQ(NumberedFile(L"shot.day.png", 1), std::filesystem::path(L"shot.day-000001.png"));
    EXPECT_EQ(NumberedFile(L"shot", 1234567), std::filesystem::path(L"shot-1234567"));
}

TEST(PictureFilesTest, RemembersOnlyWhatWasWritten)
{
    PictureFiles files(L"no such folder/shot.png", PictureFiles::Naming::Single);

    EXPECT_FALSE(files.Write(QueuedPicture{}).IsOK());
    EXPECT_TRUE(files.Written().empty());
}

} // namespace
} // namespace vxgrab
