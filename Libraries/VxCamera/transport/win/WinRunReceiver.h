#pragma once

#include "VxCamera/transport/win/IRunReceiver.h"

#include <winsock2.h>

#include <mswsock.h>

namespace transport {

// Fixed by Windows 10, version 2004 and later (ws2ipdef.h, of level IPPROTO_UDP). The headers of MinGW lack
// them.
constexpr int kMostCoalescedBytes = 3; // UDP_RECV_MAX_COALESCED_SIZE, an option: a DWORD; 0 = off
constexpr int kCoalescedInfo = 3;      // UDP_COALESCED_INFO, a control message: a DWORD

/// The functions of Windows. Owner and thread: see IRunReceiver.
class WinRunReceiver final : public IRunReceiver {
public:
    bool Ask(SOCKET socket, DWORD mostBytes) override;
    int Receive(SOCKET socket, WSAMSG& message, DWORD& received) override;

private:
    LPFN_WSARECVMSG m_receive = nullptr; // of the provider that the asking socket belongs to
};

} // namespace transport
