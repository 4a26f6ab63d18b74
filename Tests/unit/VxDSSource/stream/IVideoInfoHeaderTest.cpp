#include "VxDSSource/stream/IVideoInfoHeader.h"

#include "BaseClasses/CMediaType.h"

#include <dvdmedia.h>
#include <uuids.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

template <typename Block>
CMediaType TypeWith(const GUID& formatType)
{
    CMediaType type;
    type.SetFormatType(&formatType);
    std::memset(type.AllocFormatBuffer(sizeof(Block)), 0, sizeof(Block));
    return type;
}

TEST(IVideoInfoHeaderTest, GivesTheFieldsOfTheShorterBlock)
{
    CMediaType type = TypeWith<VIDEOINFOHEADER>(FORMAT_VideoInfo);
    auto& block = *reinterpret_cast<VIDEOINFOHEADER*>(type.Format());
    const auto header = MakeVideoInfoHeader(type);
    ASSERT_NE(header, nullptr);

    EXPECT_EQ(header->SourceRectangle(), &block.rcSource);
    EXPECT_EQ(header->TargetRectangle(), &block.rcTarget);
    EXPECT_EQ(header->BitRate(), &block.dwBitRate);
    EXPECT_EQ(header->BitErrorRate(), &block.dwBitErrorRate);
    EXPECT_EQ(header->AverageTimePerFrame(), &block.AvgTimePerFrame);
    EXPECT_EQ(header->BitmapHeader(), &block.bmiHeader);
}

TEST(IVideoInfoHeaderTest, GivesTheFieldsOfTheLongerBlock)
{
    CMediaType type = TypeWith<VIDEOINFOHEADER2>(FORMAT_VideoInfo2);
    auto& block = *reinterpret_cast<VIDEOINFOHEADER2*>(type.Format());
    const auto header = MakeVideoInfoHeader(type);
    ASSERT_NE(header, nullptr);

    EXPECT_EQ(header->SourceRectangle(), &block.rcSource);
    EXPECT_EQ(header->TargetRectangle(), &block.rcTarget);
    EXPECT_EQ(header->BitRate(), &block.dwBitRate);
    EXPECT_EQ(header->BitErrorRate(), &block.dwBitErrorRate);
    EXPECT_EQ(header->AverageTimePerFrame(), &block.AvgTimePerFrame);
    EXPECT_EQ(header->InterlaceFlags(), &block.dwInterlaceFlags);
    EXPECT_EQ(header->CopyProtectFlags(), &block.dwCopyProtectFlags);
    EXPECT_EQ(header->PictureAspectRatioX(), &block.dwPictAspectRatioX);
    EXPECT_EQ(header->PictureAspectRatioY(), &block.dwPictAspectRatioY);
    EXPECT_EQ(header->BitmapHeader(), &block.bmiHeader);
}

TEST(IVideoInfoHeaderTest, KeepsWhatTheShorterBlockHasNoRoomForOutsideTheBlock)
{
    CMediaType type = TypeWith<VIDEOINFOHEADER>(FORMAT_VideoInfo);
    const auto header = MakeVideoInfoHeader(type);
    ASSERT_NE(header, nullptr);

    *header->InterlaceFlags() = 1;
    *header->CopyProtectFlags() = 2;
    *header->PictureAspectRatioX() = 1280;
    *header->PictureAspectRatioY() = 720;

    const VIDEOINFOHEADER zero{};
    EXPECT_EQ(std::memcmp(type.Format(), &zero, sizeof(zero)), 0);
    EXPECT_EQ(*header->PictureAspectRatioX(), 1280u);
    EXPECT_EQ(*header->PictureAspectRatioY(), 720u);
    EXPECT_EQ(*header->InterlaceFlags(), 1u);
    EXPECT_EQ(*header->CopyProtectFlags(), 2u);
}

TEST(IVideoInfoHeaderTest, ClearsTheWholeBlock)
{
    CMediaType shorter = TypeWith<VIDEOINFOHEADER>(FORMAT_VideoInfo);
    std::memset(shorter.Format(), 0xFF, sizeof(VIDEOINFOHEADER));
    CMediaType longer = TypeWith<VIDEOINFOHEADER2>(FORMAT_VideoInfo2);
    std::memset(longer.Format(), 0xFF, sizeof(VIDEOINFOHEADER2));

    EXPECT_EQ(MakeVideoInfoHeader(shorter)->Clear(), shorter.Format());
    EXPECT_EQ(MakeVideoInfoHeader(longer)->Clear(), longer.Format());

    const VIDEOINFOHEADER2 zero{};
    EXPECT_EQ(std::memcmp(shorter.Format(), &zero, sizeof(VIDEOINFOHEADER)), 0);
    EXPECT_EQ(std::memcmp(longer.Format(), &zero, sizeof(VIDEOINFOHEADER2)), 0);
}

TEST(IVideoInfoHeaderTest, HasNoWrapperForOtherFormatTypes)
{
    CMediaType none = TypeWith<VIDEOINFOHEADER2>(GUID_NULL);
    CMediaType mpeg = TypeWith<VIDEOINFOHEADER2>(FORMAT_MPEGVideo);

    EXPECT_EQ(MakeVideoInfoHeader(none), nullptr);
    EXPECT_EQ(MakeVideoInfoHeader(mpeg), nullptr);
}

TEST(IVideoInfoHeaderTest, HasNoWrapperForABlockThatIsMissingOrTooShort)
{
    CMediaType missing;
    missing.SetFormatType(&FORMAT_VideoInfo);
    missing.cbFormat = sizeof(VIDEOINFOHEADER); // a stranger's claim
    EXPECT_EQ(MakeVideoInfoHeader(missing), nullptr);
    missing.cbFormat = 0;

    CMediaType shorter = TypeWith<VIDEOINFOHEADER>(FORMAT_VideoInfo);
    shorter.cbFormat = sizeof(VIDEOINFOHEADER) - 1;
    EXPECT_EQ(MakeVideoInfoHeader(shorter), nullptr);

    CMediaType longer = TypeWith<VIDEOINFOHEADER2>(FORMAT_VideoInfo2);
    longer.cbFormat = sizeof(VIDEOINFOHEADER2) - 1;
    EXPECT_EQ(MakeVideoInfoHeader(longer), nullptr);
}

} // namespace
