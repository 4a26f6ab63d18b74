#include "VxCamera/transport/posix/PosixUdpSocket.h"

#include <gtest/gtest.h>

namespace transport {
namespace {

// Not among the tests of every system: Wine opens such a socket on all interfaces, where Windows refuses.
TEST(PosixUdpSocketTest, AnAddressOfNoInterfaceCannotBeBound)
{
    UdpSocketOptions options;
    options.local.address = Ipv4Address(203, 0, 113, 1); // fixed: reserved for documentation, so nobody's

    const auto socket = PosixUdpSocket::Open(options);

    ASSERT_FALSE(socket);
    EXPECT_EQ(socket.Error().Code(), VxError::NetworkError);
    EXPECT_NE(socket.Error().GetDescription().Narrow().find("203.0.113.1"), std::string::npos);
}

} // namespace
} // namespace transport
