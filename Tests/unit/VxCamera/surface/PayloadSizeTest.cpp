#include "VxCamera/surface/PayloadSize.h"

#include "support/genapi/NodeMapFixture.h"

namespace {

class PayloadSizeTest : public NodeMapFixture {
protected:
    /// @param payload  the node PayloadSize; "" for none
    [[nodiscard]] std::uint32_t SizeOf(const std::string& payload, const std::string& width,
                                       const std::string& height, const std::string& format = "0x010C0006")
    {
        Load(payload + "<Integer Name=\"Width\"><Value>" + width +
             "</Value></Integer><Integer Name=\"Height\"><Value>" + height +
             "</Value></Integer><Enumeration Name=\"PixelFormat\"><EnumEntry Name=\"F\"><Value>" + format +
             "</Value></EnumEntry><Value>" + format + "</Value></Enumeration>");
        return PayloadSizeOf(*map);
    }
};

TEST_F(PayloadSizeTest, IsWhatTheCameraSays)
{
    EXPECT_EQ(SizeOf("<Integer Name=\"PayloadSize\"><Value>12345</Value></Integer>", "4", "4"), 12345u);
}

TEST_F(PayloadSizeTest, IsMadeOfThePictureWithoutTheFeature)
{
    EXPECT_EQ(SizeOf("", "640", "480"), 640u * 480u * 12u / 8u);
    EXPECT_EQ(SizeOf("", "3", "1"), 5u); // 36 bits
    EXPECT_EQ(SizeOf("", "640", "480", "0x01080001"), 640u * 480u);
}

TEST_F(PayloadSizeTest, IsMadeOfThePictureWhenTheFeatureCannotBeReadOrIsImpossible)
{
    EXPECT_EQ(SizeOf("<IntSwissKnife Name=\"PayloadSize\"><pVariable Name=\"X\">Gone</pVariable>"
                     "<Formula>X</Formula></IntSwissKnife>",
                     "2", "2"),
              6u);
    EXPECT_EQ(SizeOf("<Integer Name=\"PayloadSize\"><Value>-1</Value></Integer>", "2", "2"), 6u);
    EXPECT_EQ(SizeOf("<Integer Name=\"PayloadSize\"><Value>0x100000000</Value></Integer>", "2", "2"), 6u);
}

TEST_F(PayloadSizeTest, IsUnknownForAPictureThatCannotBe)
{
    EXPECT_EQ(SizeOf("", "0", "480"), 0u);
    EXPECT_EQ(SizeOf("", "640", "-1"), 0u);
    EXPECT_EQ(SizeOf("", "640", "480", "0"), 0u);
    EXPECT_EQ(SizeOf("", "0xFFFFFFFF", "0xFFFFFFFF", "0x00FF0001"), 0u);
    EXPECT_EQ(SizeOf("", "0x7FFFFFFFFFFFFFFF", "1"), 0u);
    Load("");
    EXPECT_EQ(PayloadSizeOf(*map), 0u);
}

TEST_F(PayloadSizeTest, ReachesUpToWhat32BitsHold)
{
    EXPECT_EQ(SizeOf("", "65535", "65537", "0x01080001"), 0xFFFFFFFFu);
    EXPECT_EQ(SizeOf("", "65536", "65536", "0x01080001"), 0u);
}

class PictureInChunksTest : public NodeMapFixture {
protected:
    [[nodiscard]] std::optional<receive::PictureShape> PictureOf(const std::string& chunkMode,
                                                                 const std::string& width)
    {
        Load(chunkMode + "<Integer Name=\"Width\"><Value>" + width +
             "</Value></Integer><Integer Name=\"Height\"><Value>48</Value></Integer>"
             "<Enumeration Name=\"PixelFormat\"><EnumEntry Name=\"F\"><Value>0x01080001</Value></EnumEntry>"
             "<Value>0x01080001</Value></Enumeration>");
        return PictureInChunksOf(*map);
    }
    static std::string ChunkMode(const std::string& value)
    {
        return "<Boolean Name=\"ChunkModeActive\"><Value>" + value + "</Value></Boolean>";
    }
};

TEST_F(PictureInChunksTest, IsWhatTheFeaturesSayWhileChunksAreSent)
{
    EXPECT_EQ(PictureOf(ChunkMode("1"), "64"), (receive::PictureShape{0x01080001, 64, 48}));
}

TEST_F(PictureInChunksTest, IsNoneWithoutChunksOrWithoutASize)
{
    EXPECT_EQ(PictureOf(ChunkMode("0"), "64"), std::nullopt);
    EXPECT_EQ(PictureOf("", "64"), std::nullopt);
    EXPECT_EQ(PictureOf(ChunkMode("1"), "0"), std::nullopt);
}

} // namespace
