#include "BaseClasses/CMediaType.h"

#include "support/directshow/TestObject.h"
#include "unit/BaseClasses/TestFilter.h"

#include <objbase.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

const GUID kOther = {0x99, 0, 0, {}};

class Attachment final : public TestObject<IUnknown> {};

TEST(CMediaTypeTest, StartsEmptyWithSamplesOfOneByte)
{
    const CMediaType type;

    EXPECT_FALSE(type.IsValid());
    EXPECT_TRUE(type.IsFixedSize());
    EXPECT_EQ(type.GetSampleSize(), 1u);
    EXPECT_FALSE(type.IsTemporalCompressed());
    EXPECT_EQ(type.FormatLength(), 0u);
    EXPECT_EQ(type.Format(), nullptr);
}

TEST(CMediaTypeTest, CopyHasItsOwnBlock)
{
    const CMediaType original = TypeNumber(1);

    const CMediaType copy(original);

    EXPECT_TRUE(copy == original);
    EXPECT_NE(copy.Format(), original.Format());
}

TEST(CMediaTypeTest, SelfAssignmentKeepsEverything)
{
    CMediaType type = TypeNumber(1);
    const BYTE* const block = type.Format();
    const CMediaType& self = type;

    type = self;
    EXPECT_EQ(type.Set(static_cast<const AM_MEDIA_TYPE&>(self)), S_OK);

    EXPECT_EQ(type.Format(), block);
    EXPECT_TRUE(type == TypeNumber(1));
}

TEST(CMediaTypeTest, AssignmentReplacesTheBlock)
{
    CMediaType type = TypeNumber(1);

    type = TypeNumber(2);

    EXPECT_TRUE(type == TypeNumber(2));
}

TEST(CMediaTypeTest, ComparisonLooksAtIdentifiersAndBlock)
{
    const CMediaType type = TypeNumber(1);
    CMediaType other = TypeNumber(1);
    EXPECT_FALSE(type != other);

    other.SetType(&kOther);
    EXPECT_TRUE(type != other);
    other = type;
    other.SetSubtype(&kOther);
    EXPECT_TRUE(type != other);
    other = type;
    other.SetFormatType(&kOther);
    EXPECT_TRUE(type != other);
    other = type;
    other.Format()[0] ^= 1;
    EXPECT_TRUE(type != other);
    other = type;
    other.ReallocFormatBuffer(other.FormatLength() + 1);
    EXPECT_TRUE(type != other);
}

TEST(CMediaTypeTest, ComparisonIgnoresSampleSizeAndFlags)
{
    const CMediaType type = TypeNumber(1);
    CMediaType other = type;

    other.SetSampleSize(1234);
    other.SetTemporalCompression(TRUE);
    EXPECT_TRUE(type == other);
    other.SetVariableSize();
    EXPECT_TRUE(type == other);
}

TEST(CMediaTypeTest, SampleSizeOfZeroMeansVariable)
{
    CMediaType type;
    type.SetSampleSize(100);
    EXPECT_EQ(type.GetSampleSize(), 100u);

    type.SetSampleSize(0);

    EXPECT_FALSE(type.IsFixedSize());
    EXPECT_EQ(type.GetSampleSize(), 0u);
    EXPECT_EQ(type.lSampleSize, 100u);
}

TEST(CMediaTypeTest, BlockOfEqualSizeIsKept)
{
    CMediaType type = TypeNumber(7);
    BYTE* const block = type.Format();

    EXPECT_EQ(type.AllocFormatBuffer(4), block);
    EXPECT_EQ(type.ReallocFormatBuffer(4), block);

    EXPECT_TRUE(type == TypeNumber(7));
}

TEST(CMediaTypeTest, ReallocKeepsTheCommonBytes)
{
    CMediaType type = TypeNumber(7);

    ASSERT_NE(type.ReallocFormatBuffer(100), nullptr);
    EXPECT_EQ(type.FormatLength(), 100u);
    EXPECT_EQ(type.Format()[3], 7);
    ASSERT_NE(type.ReallocFormatBuffer(2), nullptr);

    EXPECT_EQ(type.FormatLength(), 2u);
    EXPECT_EQ(type.Format()[1], 2);
}

TEST(CMediaTypeTest, SetFormatCopiesTheBytes)
{
    CMediaType type;
    BYTE bytes[] = {9, 8, 7};

    EXPECT_TRUE(type.SetFormat(bytes, sizeof(bytes)));
    EXPECT_EQ(type.FormatLength(), 3u);
    EXPECT_EQ(std::memcmp(type.Format(), bytes, sizeof(bytes)), 0);
    EXPECT_TRUE(type.SetFormat(bytes, 0));
    EXPECT_EQ(type.Format(), nullptr);
}

TEST(CMediaTypeTest, SmallerBlockReplacesALargerOne)
{
    CMediaType type = TypeNumber(1);

    EXPECT_NE(type.AllocFormatBuffer(2), nullptr);

    EXPECT_EQ(type.FormatLength(), 2u);
}

TEST(CMediaTypeTest, IsPartialWithoutMajorOrFormatType)
{
    CMediaType type = TypeNumber(1);
    EXPECT_FALSE(type.IsPartiallySpecified());

    type.SetSubtype(&GUID_NULL);
    EXPECT_FALSE(type.IsPartiallySpecified());
    type.SetFormatType(&GUID_NULL);
    EXPECT_TRUE(type.IsPartiallySpecified());
    type = TypeNumber(1);
    type.SetType(&GUID_NULL);
    EXPECT_TRUE(type.IsPartiallySpecified());
}

TEST(CMediaTypeTest, EverythingMatchesTheEmptyType)
{
    const CMediaType empty;

    EXPECT_TRUE(TypeNumber(1).MatchesPartial(&empty));
    EXPECT_TRUE(empty.MatchesPartial(&empty));
}

TEST(CMediaTypeTest, MatchesWhatAPartialTypeNames)
{
    const CMediaType type = TypeNumber(1);
    CMediaType partial;

    partial.SetType(type.Type());
    EXPECT_TRUE(type.MatchesPartial(&partial));
    partial.SetSubtype(type.Subtype());
    EXPECT_TRUE(type.MatchesPartial(&partial));
    partial.SetType(&kOther);
    EXPECT_FALSE(type.MatchesPartial(&partial));
    partial.SetType(&GUID_NULL);
    EXPECT_TRUE(type.MatchesPartial(&partial));
    partial.SetSubtype(&kOther);
    EXPECT_FALSE(type.MatchesPartial(&partial));
}

TEST(CMediaTypeTest, MatchesAFormatTypeOnlyWithTheSameBlock)
{
    const CMediaType type = TypeNumber(1);
    CMediaType partial;
    partial.SetFormatType(type.FormatType());
    EXPECT_FALSE(type.MatchesPartial(&partial)); // the type has a block, the partial one has none

    partial.SetFormat(type.Format(), type.FormatLength());
    EXPECT_TRUE(type.MatchesPartial(&partial));
    partial.Format()[0] ^= 1;
    EXPECT_FALSE(type.MatchesPartial(&partial));
    partial.SetFormatType(&GUID_NULL); // then the block does not count
    EXPECT_TRUE(type.MatchesPartial(&partial));
}

TEST(CMediaTypeTest, HalfATypeIsCopiedWithoutABlock)
{
    AM_MEDIA_TYPE half = {};
    half.cbFormat = 88;

    const CMediaType copy(half);

    EXPECT_EQ(copy.FormatLength(), 0u);
    EXPECT_EQ(copy.Format(), nullptr);
}

TEST(CMediaTypeTest, HalfATypeIsComparedWithoutReadingItsBlock)
{
    CMediaType type = TypeNumber(1);
    AM_MEDIA_TYPE half = {};
    half.majortype = type.majortype;
    half.subtype = type.subtype;
    half.formattype = type.formattype;
    half.cbFormat = type.cbFormat;

    EXPECT_FALSE(type == *static_cast<const CMediaType*>(&half));
    EXPECT_FALSE(type.MatchesPartial(static_cast<const CMediaType*>(&half)));
}

TEST(CMediaTypeTest, HoldsAndReleasesTheAttachedObject)
{
    Attachment attachment;
    AM_MEDIA_TYPE source = {};
    source.pUnk = &attachment;
    {
        const CMediaType first(source);
        const CMediaType second(first);
        EXPECT_EQ(attachment.References(), 2);
    }

    EXPECT_EQ(attachment.References(), 0);
}

TEST(MediaTypeMemoryTest, CreatedTypeIsADeepCopy)
{
    const CMediaType source = TypeNumber(3);

    AM_MEDIA_TYPE* const copy = CreateMediaType(&source);

    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->pbFormat, source.pbFormat);
    EXPECT_TRUE(source == CMediaType(*copy));
    DeleteMediaType(copy);
}

TEST(MediaTypeMemoryTest, DeleteTakesNull)
{
    DeleteMediaType(nullptr);
}

TEST(MediaTypeMemoryTest, FreeLeavesATypeThatHoldsNothing)
{
    AM_MEDIA_TYPE type;
    const CMediaType source = TypeNumber(3);
    ASSERT_EQ(CopyMediaType(&type, &source), S_OK);

    FreeMediaType(type);

    EXPECT_EQ(type.cbFormat, 0u);
    EXPECT_EQ(type.pbFormat, nullptr);
    EXPECT_EQ(type.pUnk, nullptr);
    EXPECT_EQ(type.majortype, source.majortype);
}

} // namespace
