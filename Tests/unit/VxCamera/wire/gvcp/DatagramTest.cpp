#include "VxCamera/wire/gvcp/Datagram.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using bytes::Copy;
using gvcp::Datagram;

TEST(DatagramTest, IsEmptyAtFirst)
{
    EXPECT_TRUE(Datagram().Bytes().empty());
}

TEST(DatagramTest, HoldsWhatWasWritten)
{
    Datagram datagram;

    auto out = datagram.Open();
    out.U16be(0x1234);
    datagram.Close(out);

    EXPECT_EQ(Copy(datagram.Bytes()), bytes::FromHex("12 34"));
}

TEST(DatagramTest, HoldsACopyOfBytes)
{
    const auto original = bytes::FromHex("01 02 03");

    EXPECT_EQ(Copy(Datagram(original).Bytes()), original);
}

TEST(DatagramTest, CutsWhatIsTooLong)
{
    const bytes::Vector tooLong(gvcp::kMaxDatagramBytes + 1);

    EXPECT_EQ(Datagram(tooLong).Bytes().size(), gvcp::kMaxDatagramBytes);
}

} // namespace
