#include "VxCamera/genapi/xml/Unzip.h"

#include "support/Bytes.h"
#include "support/genapi/NodeMapFixture.h"
#include "support/genapi/ZipBytes.h"

#include <gmock/gmock.h>

namespace genapi {
namespace {

using ::testing::HasSubstr;

std::string TextOf(const bytes::Vector& bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Made by another program: "camera.xml" with "<a>", eight times "camera " and "</a>", deflated.
std::string ForeignArchive()
{
    return TextOf(bytes::FromHex(
        "50 4B 03 04 14 00 00 00 08 00 00 00 21 50 DA FB 1D F5 12 00 00 00 3F 00 00 00 0A 00 00 00 63 61"
        "6D 65 72 61 2E 78 6D 6C B3 49 B4 4B 4E CC 4D 2D 4A 54 20 99 B2 D1 4F B4 03 00 50 4B 01 02 14 03"
        "14 00 00 00 08 00 00 00 21 50 DA FB 1D F5 12 00 00 00 3F 00 00 00 0A 00 00 00 00 00 00 00 00 00"
        "00 00 80 01 00 00 00 00 63 61 6D 65 72 61 2E 78 6D 6C 50 4B 05 06 00 00 00 00 01 00 01 00 38 00"
        "00 00 3A 00 00 00 00 00"));
}

constexpr const char* kForeignText = "<a>camera camera camera camera camera camera camera camera </a>";

zip::File Deflated(std::size_t repeats)
{
    zip::File file("camera.xml");
    file.method = zip::kDeflated;
    file.packed = zip::DeflatedZeros(repeats);
    const std::string zeros(1 + 258 * repeats, '\0');
    file.checksum = zip::Checksum(zeros);
    file.unpackedBytes = static_cast<std::uint32_t>(zeros.size());
    return file;
}

TEST(UnzipTest, KnowsAnArchiveByItsFirstBytes)
{
    EXPECT_TRUE(IsZipArchive(ForeignArchive()));
    EXPECT_FALSE(IsZipArchive("<?xml version=\"1.0\"?>"));
    EXPECT_FALSE(IsZipArchive("PK"));
    EXPECT_FALSE(IsZipArchive(""));
}

TEST(UnzipTest, InflatesAnArchiveOfAnotherProgram)
{
    EXPECT_EQ(ValueOf(Unzip(ForeignArchive())), kForeignText);
}

TEST(UnzipTest, TakesAStoredFile)
{
    EXPECT_EQ(ValueOf(Unzip(zip::Archive({zip::File("camera.xml", "<stored/>")}))), "<stored/>");
}

TEST(UnzipTest, InflatesMoreThanItsFirstBuffer)
{
    constexpr std::size_t kRepeats = 20'000; // 5 MB

    EXPECT_EQ(ValueOf(Unzip(zip::Archive({Deflated(kRepeats)}))), std::string(1 + 258 * kRepeats, '\0'));
}

TEST(UnzipTest, TakesTheFirstXmlFileOfSeveralFiles)
{
    EXPECT_EQ(ValueOf(Unzip(zip::Archive({zip::File("folder/"), zip::File("readme.txt", "read"),
                                          zip::File("folder/Camera.XML", "<first/>"),
                                          zip::File("other.xml", "<second/>")}))),
              "<first/>");
}

TEST(UnzipTest, TakesTheFirstFileWhereNoneIsNamedXml)
{
    EXPECT_EQ(ValueOf(Unzip(zip::Archive({zip::File("folder/"), zip::File("camera.dat", "<data/>"),
                                          zip::File("readme.txt", "read")}))),
              "<data/>");
}

TEST(UnzipTest, IgnoresRemainsBehindTheArchive)
{
    EXPECT_EQ(ValueOf(Unzip(ForeignArchive() + std::string(300, '\0'))), kForeignText);
    EXPECT_EQ(ValueOf(Unzip(ForeignArchive() + "remains of an older file, PK\x05\x06 among them")),
              kForeignText);
}

TEST(UnzipTest, FindsAnArchiveBehindOtherBytes)
{
    for (const std::string& junk :
         {std::string(1, '\0'), std::string(700, '\xA5'), std::string("PK\x01\x02 junk"),
          std::string("PK\x05\x06 and more than a directory's end has")}) {
        const std::string file = junk + ForeignArchive() + std::string(10, '\0');
        EXPECT_TRUE(IsZipArchive(file)) << junk.size();
        EXPECT_EQ(ValueOf(Unzip(file)), kForeignText) << junk.size();
    }
}

TEST(UnzipTest, TakesATextWithAnArchiveBehindItForAText)
{
    EXPECT_FALSE(IsZipArchive("<?xml version=\"1.0\"?><a/>" + ForeignArchive()));
    EXPECT_FALSE(IsZipArchive("\xEF\xBB\xBF\r\n<a/>" + ForeignArchive()));
    EXPECT_FALSE(IsZipArchive(std::string("\xFE\xFF\0<\0a", 6) + ForeignArchive()));
}

TEST(UnzipTest, TakesWhatStandsBetweenDirectoryAndEnd)
{
    std::string archive = ForeignArchive();
    archive.insert(archive.rfind("PK\x05\x06"), "a signature of the directory");

    EXPECT_EQ(ValueOf(Unzip(archive)), kForeignText);
}

TEST(UnzipTest, RefusesADirectoryThatIsLargerThanWhatIsBeforeItsEnd)
{
    constexpr std::size_t kEnd = 114;
    for (const std::size_t field : {kEnd + 12, kEnd + 16}) {
        std::string archive = ForeignArchive();
        archive.replace(field, 4, "\xFF\xFF\xFF\xFF");
        EXPECT_EQ(CodeOf(Unzip("junk" + archive)), VxError::InvalidData) << field;
        EXPECT_FALSE(IsZipArchive("junk" + archive)) << field;
    }
}

TEST(UnzipTest, RefusesEveryTruncation)
{
    const std::string archive = ForeignArchive();
    for (std::size_t size = 0; size < archive.size(); ++size) {
        const auto unzipped = Unzip(std::string_view(archive).substr(0, size));
        EXPECT_EQ(CodeOf(unzipped), VxError::InvalidData) << size;
        EXPECT_THAT(SentenceOf(unzipped), HasSubstr("its end is missing")) << size;
    }
}

TEST(UnzipTest, RefusesAWrongCheckSum)
{
    zip::File file("camera.xml", "<a/>");
    file.checksum ^= 1;

    const auto unzipped = Unzip(zip::Archive({file}));

    EXPECT_EQ(CodeOf(unzipped), VxError::InvalidData);
    EXPECT_EQ(SentenceOf(unzipped),
              "the zip archive with the camera's description is damaged: its file does not "
              "have the check sum that it should");
}

TEST(UnzipTest, RefusesABombByTheSizeThatItAdmits)
{
    zip::File file = Deflated(1);
    file.unpackedBytes = 64 * 1024 * 1024 + 1;

    const auto unzipped = Unzip(zip::Archive({file}));

    EXPECT_EQ(CodeOf(unzipped), VxError::InvalidData);
    EXPECT_EQ(SentenceOf(unzipped),
              "the camera's description has 67108865 bytes when it is unpacked; at most "
              "67108864 are accepted");
}

TEST(UnzipTest, StopsABombThatLiesAboutItsSize)
{
    zip::File file("camera.xml");
    file.method = zip::kDeflated;
    file.packed = zip::DeflatedZeros(1'000'000); // 258 MB
    file.unpackedBytes = 1000;

    const auto unzipped = Unzip(zip::Archive({file}));

    EXPECT_EQ(CodeOf(unzipped), VxError::InvalidData);
    EXPECT_THAT(SentenceOf(unzipped), HasSubstr("longer than it says"));
}

TEST(UnzipTest, RefusesAFileOfAnotherLengthThanItSays)
{
    zip::File deflated = Deflated(1);
    ++deflated.unpackedBytes;
    zip::File stored("camera.xml", "<a/>");
    ++stored.unpackedBytes;

    EXPECT_THAT(SentenceOf(Unzip(zip::Archive({deflated}))), HasSubstr("the length that it should"));
    EXPECT_THAT(SentenceOf(Unzip(zip::Archive({stored}))), HasSubstr("the length that it should"));
}

TEST(UnzipTest, RefusesPackedDataThatAreNone)
{
    zip::File file("camera.xml", "no deflated data at all");
    file.method = zip::kDeflated;
    zip::File cut = Deflated(10);
    cut.packed.resize(cut.packed.size() / 2);

    EXPECT_THAT(SentenceOf(Unzip(zip::Archive({file}))), HasSubstr("its packed file"));
    EXPECT_THAT(SentenceOf(Unzip(zip::Archive({cut}))), HasSubstr("its packed file"));
}

TEST(UnzipTest, RefusesAnArchiveWithoutFiles)
{
    const auto empty = Unzip(zip::Archive({}));
    const auto folders = Unzip(zip::Archive({zip::File("folder/")}));

    EXPECT_EQ(CodeOf(empty), VxError::InvalidData);
    EXPECT_THAT(SentenceOf(empty), HasSubstr("contains no file"));
    EXPECT_THAT(SentenceOf(folders), HasSubstr("contains no file"));
}

TEST(UnzipTest, RefusesEncryptedFiles)
{
    zip::File file("camera.xml", "<a/>");
    file.flags = 1;

    const auto unzipped = Unzip(zip::Archive({file}));

    EXPECT_EQ(CodeOf(unzipped), VxError::NotSupported);
    EXPECT_THAT(SentenceOf(unzipped), HasSubstr("encrypted"));
}

TEST(UnzipTest, NamesAMethodThatItDoesNotKnow)
{
    zip::File file("camera.xml", "<a/>");
    file.method = 14;

    const auto unzipped = Unzip(zip::Archive({file}));

    EXPECT_EQ(CodeOf(unzipped), VxError::NotSupported);
    EXPECT_THAT(SentenceOf(unzipped), HasSubstr("method 14"));
}

TEST(UnzipTest, RefusesPlacesOutsideOfTheArchive)
{
    const std::string archive = ForeignArchive();
    constexpr std::size_t kDirectory = 0x3A;
    constexpr std::size_t kEnd = 114;
    // Of the directory's entry: packed bytes, length of the name, offset of the header; of the end: size and
    // offset of the directory.
    for (const std::size_t field :
         {kDirectory + 20, kDirectory + 28, kDirectory + 42, kEnd + 12, kEnd + 16}) {
        std::string damaged = archive;
        damaged[field] = '\x7F';
        EXPECT_EQ(CodeOf(Unzip(damaged)), VxError::InvalidData) << field;
    }
}

TEST(UnzipTest, SurvivesRandomDamage)
{
    const std::string archive = ForeignArchive();
    bytes::Random random;
    for (int round = 0; round < 20'000; ++round) {
        std::string damaged = archive;
        for (std::size_t count = 1 + random.UpTo(3); count > 0; --count)
            damaged[random.UpTo(damaged.size() - 1)] = random.Number<char>();
        const auto unzipped = Unzip(damaged);
        if (!unzipped) {
            EXPECT_FALSE(SentenceOf(unzipped).empty());
        }
    }
}

} // namespace
} // namespace genapi
