#include "vxctl/TextFile.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace vxctl {
namespace {

using testing::HasSubstr;

/// A folder of its own with a name beyond ASCII.
class TextFileTest : public testing::Test {
protected:
    TextFileTest()
        : m_folder(std::filesystem::temp_directory_path() /
                   std::filesystem::path(u8"vxctl \u00e4 " + Number()))
    {
        std::filesystem::create_directories(m_folder);
    }
    ~TextFileTest() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    [[nodiscard]] std::string File(const char8_t* name) const
    {
        const std::u8string path = (m_folder / name).u8string();
        return {path.begin(), path.end()};
    }

    [[nodiscard]] std::size_t FileCount() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_folder), {}));
    }

private:
    /// Test programs of two builds can run at the same time.
    std::u8string Number() const
    {
        const std::string number = std::to_string(reinterpret_cast<std::uintptr_t>(this));
        return {number.begin(), number.end()};
    }

    const std::filesystem::path m_folder;
};

TEST_F(TextFileTest, ReadsWhatItWrote)
{
    const std::string file = File(u8"\u4e2d\u6587.xml");
    const std::string text = "line\n\xC3\xA4\r\nend\n";

    ASSERT_TRUE(WriteTextFile(file, text).IsOK());

    const auto read = ReadTextFile(file);
    ASSERT_TRUE(read) << read.Error().GetDescription().Narrow();
    EXPECT_EQ(*read, text);
    EXPECT_EQ(FileCount(), 1u); // nothing is left beside it
}

TEST_F(TextFileTest, ReplacesAFile)
{
    const std::string file = File(u8"a");
    ASSERT_TRUE(WriteTextFile(file, "long before").IsOK());

    ASSERT_TRUE(WriteTextFile(file, "now").IsOK());

    EXPECT_EQ(ReadTextFile(file).ValueOr(""), "now");
}

#ifndef _WIN32 // links need a privilege there, and the tool chain's library makes none
TEST_F(TextFileTest, WritesThroughALink)
{
    const std::string file = File(u8"file");
    const std::string link = File(u8"link");
    ASSERT_TRUE(WriteTextFile(file, "long before").IsOK());
    std::error_code error;
    std::filesystem::create_symlink("file", link, error);
    ASSERT_FALSE(error) << error.message();

    ASSERT_TRUE(WriteTextFile(link, "now").IsOK());

    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(ReadTextFile(file).ValueOr(""), "now");
    EXPECT_EQ(FileCount(), 2u);
}
#endif

TEST_F(TextFileTest, TakesAByteOrderMarkAway)
{
    const std::string file = File(u8"a");
    ASSERT_TRUE(WriteTextFile(file, "\xEF\xBB\xBFtext").IsOK());

    EXPECT_EQ(ReadTextFile(file).ValueOr(""), "text");
}

TEST_F(TextFileTest, NamesAFileThatIsNotThere)
{
    const std::string file = File(u8"absent.xml");

    const auto read = ReadTextFile(file);

    ASSERT_FALSE(read);
    EXPECT_THAT(read.Error().GetDescription().Narrow(),
                HasSubstr("cannot read '" + file + "': No such file"));
}

TEST_F(TextFileTest, NamesAFolder)
{
    EXPECT_THAT(ReadTextFile(File(u8"")).Result().GetDescription().Narrow(), HasSubstr("it is a folder"));
    EXPECT_THAT(WriteTextFile(File(u8""), "x").GetDescription().Narrow(), HasSubstr("it is a folder"));
}

TEST_F(TextFileTest, NamesAPlaceThatCannotBeWritten)
{
    const std::string file = File(u8"absent/a.xml");

    const VxResult written = WriteTextFile(file, "x");

    EXPECT_THAT(written.GetDescription().Narrow(), HasSubstr("cannot write '" + file + "': No such file"));
    EXPECT_EQ(FileCount(), 0u);
}

} // namespace
} // namespace vxctl
