#pragma once

#include "VxCamera/transport/IUdpSocket.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace receive {

/// A socket whose datagrams a test puts in, and whose waits end only by that or by a wake: it has no time.
///
/// Owner:  the code under test.
/// Thread: any.
class QueueSocket final : public transport::IUdpSocket {
public:
    void Put(const transport::Ipv4Endpoint& sender, std::vector<std::byte> bytes)
    {
        const std::scoped_lock lock(m_mutex);
        m_arrived.push_back({sender, std::move(bytes)});
        m_changed.notify_all();
    }

    /// Several datagrams, one behind the other, that the system hands over as one.
    void PutRun(const transport::Ipv4Endpoint& sender, std::vector<std::byte> bytes, std::size_t segmentBytes)
    {
        const std::scoped_lock lock(m_mutex);
        m_arrived.push_back({sender, std::move(bytes), segmentBytes});
        m_changed.notify_all();
    }

    /// From now on another datagram is there as soon as all have been received.
    /// @param sent  called for each of them, by the receiver's thread
    void PutEndlessly(const transport::Ipv4Endpoint& sender, std::vector<std::byte> bytes,
                      std::function<void()> sent)
    {
        const std::scoped_lock lock(m_mutex);
        m_endless = {sender, std::move(bytes)};
        m_endlessSent = std::move(sent);
        m_arrived.push_back(m_endless);
        m_changed.notify_all();
    }

    VxResult SendTo(std::span<const std::byte> bytes, const transport::Ipv4Endpoint& destination) override
    {
        const std::scoped_lock lock(m_mutex);
        m_sent.push_back({destination, {bytes.begin(), bytes.end()}});
        m_changed.notify_all();
        return VxResult::Ok();
    }

    /// While it is held back, no datagram ends a wait.
    void Hold(bool isHeld)
    {
        const std::scoped_lock lock(m_mutex);
        m_isHeld = isHeld;
        m_changed.notify_all();
    }

    /// The next wait for datagrams ends with there being no memory.
    void RunOutOfMemory()
    {
        const std::scoped_lock lock(m_mutex);
        m_isOutOfMemory = true;
        m_changed.notify_all();
    }

    struct Sent {
        transport::Ipv4Endpoint destination;
        std::vector<std::byte> bytes;
    };
    /// Waits until so many datagrams have been sent.
    std::vector<Sent> WaitForSent(std::size_t count)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_sent.size() >= count; });
        return m_sent;
    }
    /// Waits until everything has been received and more is waited for.
    void WaitUntilIdle()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock,
                       [&] { return m_arrived.empty() && m_isWaitedFor && !m_isWoken && !m_isOutOfMemory; });
    }
    [[nodiscard]] std::size_t SentCount()
    {
        const std::scoped_lock lock(m_mutex);
        return m_sent.size();
    }
    VxExpected<std::size_t> Receive(std::span<transport::Datagram> datagrams,
                                    std::chrono::microseconds timeout) override
    {
        std::unique_lock lock(m_mutex);
        if (m_endlessSent && m_arrived.empty()) {
            lock.unlock();
            m_endlessSent();
            lock.lock();
            m_arrived.push_back(m_endless);
        }
        if (timeout.count() > 0) {
            m_isWaitedFor = true;
            m_changed.notify_all();
            m_changed.wait(lock,
                           [&] { return m_isWoken || m_isOutOfMemory || (!m_arrived.empty() && !m_isHeld); });
            m_isWaitedFor = false;
        }
        if (std::exchange(m_isOutOfMemory, false))
            throw std::bad_alloc();
        if (std::exchange(m_isWoken, false))
            return VxError::Aborted;
        if (m_arrived.empty())
            return VxError::Timeout;
        std::size_t count = 0;
        for (; count < datagrams.size() && !m_arrived.empty(); ++count) {
            const Arrival& arrival = m_arrived.front();
            datagrams[count].sender = arrival.sender;
            datagrams[count].Fill(arrival.bytes);
            datagrams[count].segmentBytes = arrival.segmentBytes;
            m_arrived.pop_front();
        }
        return count;
    }
    void Gather(std::chrono::microseconds) override {}
    void Wake() override
    {
        const std::scoped_lock lock(m_mutex);
        m_isWoken = true;
        m_changed.notify_all();
    }
    [[nodiscard]] transport::Ipv4Endpoint LocalEndpoint() const override { return {}; }
    [[nodiscard]] std::size_t ReceiveBufferBytes() const override { return m_bufferBytes; }
    /// Before it is received from.
    void SetBufferBytes(std::size_t bytes) { m_bufferBytes = bytes; }
    [[nodiscard]] bool IsBacklogNear() const override { return m_isBacklogNear; }
    void SetBacklogNear(bool isNear) { m_isBacklogNear = isNear; }
    VxResult JoinGroup(transport::Ipv4Address, transport::Ipv4Address) override { return VxResult::Ok(); }
    VxResult LeaveGroup(transport::Ipv4Address, transport::Ipv4Address) override { return VxResult::Ok(); }

private:
    struct Arrival {
        transport::Ipv4Endpoint sender;
        std::vector<std::byte> bytes;
        std::size_t segmentBytes = 0; // 0: one datagram
    };
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Arrival> m_arrived;
    Arrival m_endless;
    std::function<void()> m_endlessSent; // empty: there is none
    std::vector<Sent> m_sent;
    std::size_t m_bufferBytes = 0;
    bool m_isWoken = false;
    bool m_isOutOfMemory = false;
    bool m_isHeld = false;
    bool m_isWaitedFor = false;
    std::atomic<bool> m_isBacklogNear = false;
};

} // namespace receive
