#pragma once

#include "VxCamera/transport/IUdpSocketGroup.h"
#include "support/network/FakeClock.h"
#include "support/network/FakeUdpSocket.h"

#include <functional>
#include <memory>
#include <vector>

/// Fake sockets that are waited for together: waiting moves the clock to the earliest arrival at any of them,
/// or to the time-out.
///
/// Owner:  the code under test. Borrows the clock.
/// Thread: one.
class FakeUdpSocketGroup final : public transport::IUdpSocketGroup {
public:
    using Open =
        std::function<VxExpected<std::unique_ptr<FakeUdpSocket>>(const transport::UdpSocketOptions&)>;

    FakeUdpSocketGroup(FakeClock& clock, Open open);

    VxExpected<transport::IUdpSocket*> OpenUdp(const transport::UdpSocketOptions& options) override;
    void Close(const transport::IUdpSocket& socket) override;
    VxResult WaitForAny(std::chrono::microseconds timeout) override;

private:
    FakeClock& m_clock;
    const Open m_open;
    std::vector<std::unique_ptr<FakeUdpSocket>> m_sockets;
};
