#include "VxCamera/transport/SystemNetwork.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <thread>

namespace transport {
namespace {

using namespace std::chrono_literals;

// A datagram that is there is received at once; only one that nobody looks for takes so long.
constexpr auto kLong = std::chrono::microseconds(2s);

/// Receives one datagram, however often it is woken meanwhile.
/// @return  whether it came before a wait ended by its time
bool ReceiveOne(IUdpSocket& socket)
{
    std::array<std::byte, 16> memory{};
    std::array<Datagram, 1> datagram;
    datagram[0].memory = memory;
    for (;;) {
        const auto begin = std::chrono::steady_clock::now();
        const auto count = socket.Receive(datagram, kLong);
        if (count || count.Error().Code() != VxError::Aborted)
            return count && std::chrono::steady_clock::now() - begin < kLong;
    }
}

TEST(WinUdpSocketTest, AWakeAndADatagramThatEndOneWaitAreBothSeen)
{
    constexpr int kRounds = 100; // in some of them the thread is waiting when it is stopped
    const auto factory = MakeSystemSocketFactory();
    UdpSocketOptions options;
    options.local.address = Ipv4Address::Loopback();
    const auto socket = factory->OpenUdp(options);
    ASSERT_TRUE(socket);
    std::atomic<DWORD> threadId = 0;
    std::atomic<int> received = 0;
    std::atomic<bool> isLate = false;
    std::thread receiving([&] {
        threadId = ::GetCurrentThreadId();
        while (received < kRounds && !isLate) {
            isLate = !ReceiveOne(**socket);
            ++received;
        }
    });
    while (threadId == 0)
        std::this_thread::yield();
    const HANDLE thread = ::OpenThread(THREAD_SUSPEND_RESUME, FALSE, threadId);
    ASSERT_NE(thread, nullptr);

    for (int i = 0; i < kRounds && !isLate; ++i) {
        for (int pause = 0; pause < 100; ++pause) // it gets as far as its wait
            std::this_thread::yield();
        ::SuspendThread(thread);
        EXPECT_TRUE((*socket)->SendTo({}, (*socket)->LocalEndpoint()).IsOK());
        (*socket)->Wake();
        ::ResumeThread(thread);
        while (received <= i && !isLate)
            std::this_thread::yield();
    }
    receiving.join();
    ::CloseHandle(thread);

    EXPECT_FALSE(isLate) << "in round " << received;
}

} // namespace
} // namespace transport
