#include "VxDSSource/Utils/MediaTypeLog.h"

#include <amvideo.h>
#include <uuids.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

using ZtUtilsLib::Logger;

constexpr int kPriority = 20000;

/// A sink that keeps what is logged.
class MediaTypeLogTest : public testing::Test {
protected:
    MediaTypeLogTest()
    {
        m_block.AvgTimePerFrame = 333333;
        m_block.bmiHeader.biSize = 40;
        m_block.bmiHeader.biWidth = 640;
        m_block.bmiHeader.biHeight = -480;
        m_block.bmiHeader.biBitCount = 24;
        m_block.bmiHeader.biSizeImage = 921600;
        m_type.majortype = MEDIATYPE_Video;
        m_type.subtype = MEDIASUBTYPE_RGB24;
        m_type.lSampleSize = 921600;
        m_type.pbFormat = reinterpret_cast<BYTE*>(&m_block);
        SetThreshold(kPriority);
    }
    ~MediaTypeLogTest() override { Logger::SetSink({}, 0); }

    void SetThreshold(int threshold)
    {
        Logger::SetSink(
            [this](int priority, std::string_view file, int line, std::string_view function,
                   std::string_view message) {
                EXPECT_EQ(priority, kPriority);
                EXPECT_EQ(file, "Libraries\\VxDSSource\\Utils");
                EXPECT_EQ(function, "LogMediaType");
                m_sourceLines.insert(line);
                m_records.emplace_back(message);
            },
            threshold);
    }

    Logger m_logger;
    VIDEOINFOHEADER m_block{};
    AM_MEDIA_TYPE m_type{};
    std::vector<std::string> m_records;
    std::set<int> m_sourceLines;
};

TEST_F(MediaTypeLogTest, WritesARecordForEachField)
{
    LogMediaType(&m_logger, m_type);

    EXPECT_EQ(m_records, (std::vector<std::string>{
                             "  AM_MEDIA_TYPE",
                             "    majortype = MEDIATYPE_Video",
                             "   subtype = MEDIASUBTYPE_RGB24",
                             "   lSampleSize = 921600",
                             "   pbFormat.AvgTimePerFrame = 333333",
                             "   pbFormat.bmiHeader.biSize = 40",
                             "   pbFormat.bmiHeader.biWidth = 640",
                             "   pbFormat.bmiHeader.biHeight = -480",
                             "   pbFormat.bmiHeader.biBitCount = 24",
                             "   pbFormat.bmiHeader.biSizeImage = 921600",
                         }));
    EXPECT_EQ(m_sourceLines.size(), 10u) << "each record names the line of its own call";
}

TEST_F(MediaTypeLogTest, NamesWhatItDoesNotKnow)
{
    m_type.majortype = GUID{};
    m_type.subtype = GUID{};
    m_type.lSampleSize = 4294967295; // printed as a signed number
    m_block.AvgTimePerFrame = 5000000000LL;

    LogMediaType(&m_logger, m_type);

    EXPECT_EQ(m_records[1], "    majortype = Unknown");
    EXPECT_EQ(m_records[2], "   subtype = Unknown");
    EXPECT_EQ(m_records[3], "   lSampleSize = -1");
    EXPECT_EQ(m_records[4], "   pbFormat.AvgTimePerFrame = 5000000000");
}

TEST_F(MediaTypeLogTest, NamesTheSubtypeOfEveryMajorType)
{
    m_type.majortype = MEDIATYPE_Audio;

    LogMediaType(&m_logger, m_type);

    EXPECT_EQ(m_records[1], "    majortype = MEDIATYPE_Audio");
    EXPECT_EQ(m_records[2], "   subtype = MEDIASUBTYPE_RGB24");
}

TEST_F(MediaTypeLogTest, TakesTheBlockForTheShorterHeaderWhateverTheTypeSays)
{
    m_type.formattype = FORMAT_WaveFormatEx;
    m_type.cbFormat = 1;

    LogMediaType(&m_logger, m_type);

    ASSERT_EQ(m_records.size(), 10u);
    EXPECT_EQ(m_records[6], "   pbFormat.bmiHeader.biWidth = 640");
}

TEST_F(MediaTypeLogTest, WritesNothingWhileThePriorityIsDisabled)
{
    SetThreshold(kPriority + 1);
    m_type.pbFormat = reinterpret_cast<BYTE*>(1); // would end the program if it were read

    LogMediaType(&m_logger, m_type);

    EXPECT_EQ(m_records.size(), 0u);
}

TEST_F(MediaTypeLogTest, WritesNothingWithoutALogger)
{
    m_type.pbFormat = reinterpret_cast<BYTE*>(1); // would end the program if it were read

    LogMediaType(nullptr, m_type);

    EXPECT_EQ(m_records.size(), 0u);
}

TEST_F(MediaTypeLogTest, SurvivesATypeWhoseBlockIsMissing)
{
    m_type.pbFormat = nullptr;

    LogMediaType(&m_logger, m_type);

    EXPECT_EQ(m_records.size(), 4u);
}

} // namespace
