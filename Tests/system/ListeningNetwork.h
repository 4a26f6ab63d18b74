#pragma once

#include "VxCamera/transport/ISocketFactory.h"
#include "VxCamera/wire/gvcp/Command.h"

#include <memory>
#include <mutex>
#include <vector>

/// The system's sockets for a simulated camera, which note what commands come and from whom.
///
/// Owner:  the test; must outlive the camera.
/// Thread: any; locked inside.
class ListeningNetwork final : public transport::ISocketFactory {
public:
    struct Received {
        transport::Ipv4Endpoint sender;
        gvcp::Command command;
    };

    ListeningNetwork();
    ~ListeningNetwork() override;

    VxExpected<std::unique_ptr<transport::IUdpSocket>>
    OpenUdp(const transport::UdpSocketOptions& options) override;

    /// @return  everything until now, in its order
    [[nodiscard]] std::vector<Received> Commands() const;

    void Note(const Received& command);

private:
    std::unique_ptr<transport::ISocketFactory> m_system;
    mutable std::mutex m_mutex;
    std::vector<Received> m_commands; // guarded by m_mutex
};
