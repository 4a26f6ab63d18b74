#pragma once

#include "VxCamera/transport/win/WinRunReceiver.h"
#include "VxCamera/transport/win/WinSystem.h"

#include <winsock2.h>

#include <mswsock.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace transport {

/// Stands for a Windows that coalesces, in which no test runs: does what its documentation says, with the
/// datagrams that come to the real socket.
///
/// Equally long datagrams of one sender become a run, which a shorter one ends; its length is told in a
/// control message. What has no room is cut, which is an error and sets a flag.
struct RunSystem {
    /// A control message.
    struct Note {
        int level = IPPROTO_UDP;
        int type = kCoalescedInfo;
        std::optional<DWORD> value{}; ///< none: the length of each datagram
    };

    bool isGranting = true;
    std::atomic<bool> isHolding = false; ///< nothing is there yet
    std::deque<int> errors;              ///< of the next calls, which receive nothing
    std::vector<Note> notes{{}};         ///< of a run
    std::size_t expected = 1;            ///< datagrams; waits until so many have come
    std::size_t mostPieces = 1024;       ///< refuses more

    DWORD mostBytes = 0; ///< asked for
    int calls = 0;
    int runs = 0; ///< handed over
};

class CollectingReceiver final : public IRunReceiver {
public:
    explicit CollectingReceiver(RunSystem& system) : m_system(system) {}

    bool Ask(SOCKET, DWORD mostBytes) override
    {
        m_system.mostBytes = mostBytes;
        return m_system.isGranting;
    }

    int Receive(SOCKET socket, WSAMSG& message, DWORD& received) override
    {
        if (m_system.isHolding)
            return WSAEWOULDBLOCK;
        ++m_system.calls;
        if (!m_system.errors.empty()) {
            const int error = m_system.errors.front();
            m_system.errors.pop_front();
            return error;
        }
        if (message.dwBufferCount > m_system.mostPieces)
            return WSAEINVAL;
        const std::size_t segmentBytes = Collect(socket);
        if (m_count == 0)
            return m_error;
        std::memcpy(message.name, &m_sender, sizeof m_sender);
        message.namelen = sizeof m_sender;
        message.dwFlags = 0;
        received = Scatter(std::span(message.lpBuffers, message.dwBufferCount));
        if (received < m_bytes.size())
            message.dwFlags |= MSG_TRUNC;
        const auto notes = Notes(segmentBytes);
        if (notes.size() > message.Control.len)
            message.dwFlags |= MSG_CTRUNC;
        message.Control.len = std::min(message.Control.len, static_cast<ULONG>(notes.size())); // a few bytes
        std::memcpy(message.Control.buf, notes.data(), message.Control.len);
        return message.dwFlags != 0 ? WSAEMSGSIZE : 0;
    }

private:
    struct Peeked {
        std::size_t bytes;
        sockaddr_in sender;
    };

    /// @return  length of the first datagram
    std::size_t Collect(SOCKET socket)
    {
        m_bytes.clear();
        m_count = 0;
        std::size_t segmentBytes = 0;
        for (auto next = Peek(socket); next; next = Peek(socket)) {
            const bool isFirst = m_count == 0;
            const bool isSame = std::memcmp(&next->sender, &m_sender, sizeof m_sender) == 0 &&
                                next->bytes <= segmentBytes &&
                                m_bytes.size() + next->bytes <= m_system.mostBytes;
            if (!isFirst && !isSame)
                break;
            Take(socket, *next);
            if (isFirst)
                segmentBytes = next->bytes;
            if (next->bytes < segmentBytes || next->bytes == 0)
                break;
        }
        return segmentBytes;
    }

    std::optional<Peeked> Peek(SOCKET socket)
    {
        if (m_count > 0 && m_count < m_system.expected) { // the next one is on its way
            fd_set waiting{};
            waiting.fd_count = 1;
            waiting.fd_array[0] = socket;
            timeval limit{10, 0};
            ::select(0, &waiting, nullptr, nullptr, &limit);
        }
        sockaddr_in sender{};
        int senderBytes = sizeof sender;
        const int bytes =
            ::recvfrom(socket, reinterpret_cast<char*>(m_memory.data()), static_cast<int>(m_memory.size()),
                       MSG_PEEK, reinterpret_cast<sockaddr*>(&sender), &senderBytes);
        m_error = bytes < 0 ? ::WSAGetLastError() : 0;
        if (bytes < 0)
            return std::nullopt;
        return Peeked{static_cast<std::size_t>(bytes), sender}; // not negative, tested
    }

    void Take(SOCKET socket, const Peeked& peeked)
    {
        ::recv(socket, reinterpret_cast<char*>(m_memory.data()), static_cast<int>(m_memory.size()), 0);
        m_bytes.insert(m_bytes.end(), m_memory.begin(),
                       m_memory.begin() + static_cast<std::ptrdiff_t>(peeked.bytes));
        m_sender = peeked.sender;
        ++m_count;
    }

    /// @return  bytes for which there was room
    DWORD Scatter(std::span<const WSABUF> pieces) const
    {
        std::size_t place = 0;
        for (const WSABUF& piece : pieces) {
            const std::size_t bytes = std::min<std::size_t>(piece.len, m_bytes.size() - place);
            std::memcpy(piece.buf, m_bytes.data() + place, bytes);
            place += bytes;
        }
        return static_cast<DWORD>(place); // a run is short
    }

    std::vector<std::byte> Notes(std::size_t segmentBytes)
    {
        std::vector<std::byte> notes;
        if (m_count < 2)
            return notes;
        ++m_system.runs;
        for (const RunSystem::Note& note : m_system.notes) {
            const DWORD value = note.value.value_or(static_cast<DWORD>(segmentBytes)); // of one datagram
            const WSACMSGHDR header{WSA_CMSG_LEN(sizeof value), note.level, note.type};
            const std::size_t place = notes.size();
            notes.resize(place + WSA_CMSG_SPACE(sizeof value));
            std::memcpy(notes.data() + place, &header, sizeof header);
            std::memcpy(notes.data() + place + WSA_CMSG_LEN(0), &value, sizeof value);
        }
        return notes;
    }

    RunSystem& m_system;
    std::vector<std::byte> m_memory = std::vector<std::byte>(65'536);
    std::vector<std::byte> m_bytes; // of the run
    std::size_t m_count = 0;
    sockaddr_in m_sender{};
    int m_error = 0;
};

} // namespace transport
