#include "VxSimulator/device/ControlFaults.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;
using namespace std::chrono_literals;
using bytes::FromHex;

const auto kDiscovery = FromHex("42 11 00 02 00 00 00 01");
const auto kReadReg = FromHex("42 01 00 80 00 04 00 05 | 00 00 0A 00");
const auto kWriteReg = FromHex("42 01 00 82 00 08 00 05 | 00 00 0A 00 00 00 00 02");
const auto kAnswer = FromHex("00 00 00 81 00 04 00 05 | 00 00 00 02");

constexpr IVxClock::Time kNow{1h};

gvcp::CommandPacket Packet(const bytes::Vector& command)
{
    return *gvcp::ParseCommand(command);
}

TEST(ControlFaultsTest, WithoutFaultsTheAnswerIsSentAtOnce)
{
    ControlFaults faults({});

    EXPECT_FALSE(faults.LosesCommand(Packet(kReadReg)));
    EXPECT_FALSE(faults.Refusal(Packet(kReadReg)));
    const auto sent = faults.Pass(Packet(kReadReg), gvcp::Datagram(kAnswer), kNow);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].due, kNow);
    EXPECT_EQ(bytes::Copy(sent[0].answer.Bytes()), kAnswer);
}

TEST(ControlFaultsTest, DiscoveryIsSpared)
{
    ControlFaults faults(
        {.dropCommandShare = 1, .dropAnswerShare = 1, .answerDelay = 1s, .answerLengthError = 4});

    EXPECT_FALSE(faults.LosesCommand(Packet(kDiscovery)));
    const auto sent = faults.Pass(Packet(kDiscovery), gvcp::Datagram(kAnswer), kNow);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].due, kNow);
    EXPECT_EQ(bytes::Copy(sent[0].answer.Bytes()), kAnswer);
}

TEST(ControlFaultsTest, CommandsAndAnswersGetLost)
{
    EXPECT_TRUE(ControlFaults({.dropCommandShare = 1}).LosesCommand(Packet(kReadReg)));
    EXPECT_TRUE(
        ControlFaults({.dropAnswerShare = 1}).Pass(Packet(kReadReg), gvcp::Datagram(kAnswer), kNow).empty());
}

TEST(ControlFaultsTest, TheShareOfLostCommandsIsKept)
{
    ControlFaults faults({.dropCommandShare = 0.25});
    int lost = 0;
    for (int i = 0; i < 10000; ++i)
        lost += faults.LosesCommand(Packet(kReadReg)) ? 1 : 0;

    EXPECT_NEAR(lost, 2500, 200); // more than four standard deviations
}

TEST(ControlFaultsTest, AnAnswerComesLate)
{
    const auto sent =
        ControlFaults({.answerDelay = 300ms}).Pass(Packet(kReadReg), gvcp::Datagram(kAnswer), kNow);

    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].due, kNow + 300ms);
}

TEST(ControlFaultsTest, AWriteThatTakesLongIsAnnounced)
{
    ControlFaults faults({.pendingTime = 1000ms});

    const auto sent = faults.Pass(Packet(kWriteReg), gvcp::Datagram(kAnswer), kNow);

    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].due, kNow);
    EXPECT_EQ(bytes::Copy(sent[0].answer.Bytes()), FromHex("00 00 00 89 00 04 00 05 00 00 03 E8"));
    EXPECT_EQ(sent[1].due, kNow + 1s);
    EXPECT_EQ(bytes::Copy(sent[1].answer.Bytes()), kAnswer);
    EXPECT_EQ(faults.Pass(Packet(kReadReg), gvcp::Datagram(kAnswer), kNow).size(), 1u) << "reading is quick";
}

TEST(ControlFaultsTest, OneRegisterTakesLong)
{
    ControlFaults faults({.pendingTime = 1000ms, .pendingAddress = 0x0A00});

    EXPECT_EQ(faults.Pass(Packet(kWriteReg), gvcp::Datagram(kAnswer), kNow).size(), 2u);
    EXPECT_EQ(faults
                  .Pass(Packet(FromHex("42 01 00 82 00 08 00 05 | 00 00 0A 04 00 00 00 01")),
                        gvcp::Datagram(kAnswer), kNow)
                  .size(),
              1u)
        << "others are quick";
}

TEST(ControlFaultsTest, OneRegisterIsRefused)
{
    const ControlFaults faults({.refusedAddress = 0x0A00, .refusal = gvcp::Status::WriteProtect});

    ASSERT_TRUE(faults.Refusal(Packet(kWriteReg)));
    EXPECT_EQ(bytes::Copy(faults.Refusal(Packet(kWriteReg))->Bytes()), FromHex("80 04 00 83 00 00 00 05"));
    EXPECT_TRUE(faults.Refusal(Packet(kReadReg)));
    EXPECT_FALSE(faults.Refusal(Packet(FromHex("42 01 00 80 00 04 00 05 | 00 00 0A 04"))));
    EXPECT_FALSE(faults.Refusal(Packet(FromHex("42 01 00 80 00 00 00 05")))) << "no address at all";
}

TEST(ControlFaultsTest, TheLengthOfAnAnswerLies)
{
    const auto lengthWith = [](int error) {
        const auto sent =
            ControlFaults({.answerLengthError = error}).Pass(Packet(kReadReg), gvcp::Datagram(kAnswer), kNow);
        auto bytes = bytes::Copy(sent[0].answer.Bytes());
        EXPECT_EQ(bytes.size(), kAnswer.size());
        return VxLoadBe<std::uint16_t>(std::span(bytes).subspan<4, 2>());
    };

    EXPECT_EQ(lengthWith(4), 8u);
    EXPECT_EQ(lengthWith(-2), 2u);
    EXPECT_EQ(lengthWith(-100), 0u);
    EXPECT_EQ(lengthWith(100'000), 0xFFFFu);
}

} // namespace
