#include "VxBase/Logger.h"

#include "VxBase/VxMutex.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using ZtUtilsLib::Logger;

class LoggerTest : public testing::Test {
protected:
    struct Entry {
        int priority;
        std::string file;
        int line;
        std::string function;
        std::string message;
    };

    ~LoggerTest() override { Logger::SetSink({}, 0); }

    void SetSink(int threshold)
    {
        Logger::SetSink(
            [this](int priority, std::string_view file, int line, std::string_view function,
                   std::string_view message) {
                const VxLock lock(m_mutex);
                m_entries.push_back(
                    {priority, std::string(file), line, std::string(function), std::string(message)});
            },
            threshold);
    }

    VxMutex m_mutex;
    std::vector<Entry> m_entries;
};

TEST_F(LoggerTest, WritesNothingBeforeASinkIsSet)
{
    EXPECT_FALSE(Logger::IsPriorityEnabled(20000));
    Logger::Log(20000, "file", 1, "function", "lost");
}

TEST_F(LoggerTest, WritesWhatReachesTheThreshold)
{
    SetSink(20000);

    EXPECT_FALSE(Logger::IsPriorityEnabled(19999));
    EXPECT_TRUE(Logger::IsPriorityEnabled(20000));
    Logger::Log(19999, "file", 1, "function", "too low");
    Logger::Log(20000, "file", 2, "function", "just right");

    ASSERT_EQ(m_entries.size(), 1u);
    EXPECT_EQ(m_entries[0].message, "just right");
}

TEST_F(LoggerTest, TellsWhereAMessageComesFromAndFormatsIt)
{
    SetSink(0);

    Logger::Log(5, "Some.cpp", 42, "Function", "%s is %d", "answer", 42);

    ASSERT_EQ(m_entries.size(), 1u);
    EXPECT_EQ(m_entries[0].priority, 5);
    EXPECT_EQ(m_entries[0].file, "Some.cpp");
    EXPECT_EQ(m_entries[0].line, 42);
    EXPECT_EQ(m_entries[0].function, "Function");
    EXPECT_EQ(m_entries[0].message, "answer is 42");
}

TEST_F(LoggerTest, AMessageHasNoLengthLimit)
{
    SetSink(0);
    const std::string longText(100000, 'x');

    Logger::Log(1, "file", 1, "function", "%s.", longText.c_str());

    ASSERT_EQ(m_entries.size(), 1u);
    EXPECT_EQ(m_entries[0].message, longText + ".");
}

TEST_F(LoggerTest, AnEmptyMessageIsAMessage)
{
    SetSink(0);

    Logger::Log(1, "file", 1, "function", "%s", "");

    ASSERT_EQ(m_entries.size(), 1u);
    EXPECT_EQ(m_entries[0].message, "");
}

TEST_F(LoggerTest, AnEmptySinkSwitchesItOff)
{
    SetSink(0);
    Logger::SetSink({}, 0);

    EXPECT_FALSE(Logger::IsPriorityEnabled(20000));
    Logger::Log(20000, "file", 1, "function", "lost");
    EXPECT_TRUE(m_entries.empty());
}

TEST_F(LoggerTest, ASinkMayLogAndMayBeReplacedWhileItIsCalled)
{
    Logger::SetSink(
        [this](int, std::string_view, int, std::string_view, std::string_view message) {
            m_entries.push_back({0, "", 0, "", std::string(message)});
            Logger::SetSink({}, 0);
            Logger::Log(1, "file", 1, "function", "from inside");
        },
        0);

    Logger::Log(1, "file", 1, "function", "from outside");

    ASSERT_EQ(m_entries.size(), 1u);
    EXPECT_EQ(m_entries[0].message, "from outside");
}

TEST_F(LoggerTest, TakesMessagesFromManyThreads)
{
    SetSink(0);
    constexpr int kThreads = 4;
    constexpr int kMessages = 200;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([] {
            for (int j = 0; j < kMessages; ++j)
                Logger::Log(1, "file", j, "function", "%d", j);
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(m_entries.size(), static_cast<std::size_t>(kThreads * kMessages));
}

} // namespace
