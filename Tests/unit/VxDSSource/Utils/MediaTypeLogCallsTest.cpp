#include "VxDSSource/Utils/MediaTypeLog.h"

#include "ScriptedLogger.h"

#include <amvideo.h>
#include <uuids.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace {

const std::string kQuestion = "IsPriorityEnabled(20000)";

const std::vector<std::string> kRecords = {
    "  AM_MEDIA_TYPE",
    "    majortype = %s",
    "   subtype = %s",
    "   lSampleSize = %d",
    "   pbFormat.AvgTimePerFrame = %lld",
    "   pbFormat.bmiHeader.biSize = %d",
    "   pbFormat.bmiHeader.biWidth = %d",
    "   pbFormat.bmiHeader.biHeight = %d",
    "   pbFormat.bmiHeader.biBitCount = %d",
    "   pbFormat.bmiHeader.biSizeImage = %d",
};

/// A video type and a logger that answers as it is told.
class MediaTypeLogCallsTest : public testing::Test {
protected:
    MediaTypeLogCallsTest()
    {
        TheLogger() = {};
        m_type.majortype = MEDIATYPE_Video;
        m_type.subtype = MEDIASUBTYPE_RGB24;
        m_type.pbFormat = reinterpret_cast<BYTE*>(&m_block);
    }

    const ZtUtilsLib::Logger m_logger{};
    VIDEOINFOHEADER m_block{};
    AM_MEDIA_TYPE m_type{};
};

TEST_F(MediaTypeLogCallsTest, AsksBeforeEachRecord)
{
    LogMediaType(&m_logger, m_type);

    std::vector<std::string> expected;
    for (const std::string& record : kRecords)
        expected.insert(expected.end(), {kQuestion, "Log(20000, \"" + record + "\")"});
    EXPECT_EQ(TheLogger().calls, expected);
}

TEST_F(MediaTypeLogCallsTest, WritesOnlyTheRecordsThatAreEnabledWhenTheyAreAskedFor)
{
    for (std::size_t enabled = 0; enabled < kRecords.size(); ++enabled) {
        TheLogger() = {};
        TheLogger().isEnabled = [&](std::size_t question) { return question == enabled; };

        LogMediaType(&m_logger, m_type);

        std::vector<std::string> expected(kRecords.size(), kQuestion);
        expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(enabled) + 1,
                        "Log(20000, \"" + kRecords[enabled] + "\")");
        EXPECT_EQ(TheLogger().calls, expected);
    }
}

TEST_F(MediaTypeLogCallsTest, AsksNobodyWithoutALogger)
{
    LogMediaType(nullptr, m_type);

    EXPECT_EQ(TheLogger().calls, std::vector<std::string>{});
}

} // namespace
