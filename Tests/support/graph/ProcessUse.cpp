#include "support/graph/ProcessUse.h"

#include <winsock2.h>

#include <windows.h>

#include <iphlpapi.h>
#include <tlhelp32.h>
#include <winternl.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <vector>

namespace {

// Fixed by the system: the list of all handles. The headers declare neither the number nor an enumeration
// that could hold it, so the function is looked up with the plain type.
constexpr ULONG kExtendedHandleInformation = 64;
using QuerySystem = NTSTATUS(NTAPI*)(ULONG kind, void* buffer, ULONG bytes, ULONG* needed);
constexpr auto kInfoLengthMismatch = static_cast<NTSTATUS>(0xC0000004);

struct HandleEntry {
    void* object;
    std::uintptr_t processId;
    std::uintptr_t handle;
    std::uint32_t access;
    std::uint16_t backTrace;
    std::uint16_t type;
    std::uint32_t attributes;
    std::uint32_t reserved;
};

struct HandleListHead {
    std::uintptr_t count;
    std::uintptr_t reserved;
};

std::vector<std::byte> AllHandles()
{
    const auto query = reinterpret_cast<QuerySystem>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<std::byte> buffer(1 << 16);
    while (query != nullptr) {
        ULONG needed = 0;
        const NTSTATUS status =
            query(kExtendedHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()), &needed);
        if (status == 0)
            return buffer;
        if (status != kInfoLengthMismatch)
            return {};
        buffer.resize(buffer.size() * 2);
    }
    return {};
}

std::vector<HandleEntry> OwnHandles()
{
    std::vector<HandleEntry> own;
    const std::vector<std::byte> buffer = AllHandles();
    if (buffer.empty())
        return own;
    HandleListHead head{};
    std::memcpy(&head, buffer.data(), sizeof(head));
    for (std::uintptr_t i = 0; i < head.count; ++i) {
        HandleEntry entry{};
        std::memcpy(&entry, buffer.data() + sizeof(head) + i * sizeof(entry), sizeof(entry));
        if (entry.processId == ::GetCurrentProcessId())
            own.push_back(entry);
    }
    return own;
}

/// @return  the system's number for events, which no header tells
unsigned EventType()
{
    const HANDLE event = ::CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const std::vector<HandleEntry> own = OwnHandles();
    ::CloseHandle(event);
    const auto found = std::find_if(own.begin(), own.end(), [&](const HandleEntry& entry) {
        return entry.handle == reinterpret_cast<std::uintptr_t>(event);
    });
    return found != own.end() ? found->type : 0U;
}

std::size_t CountThreads()
{
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 thread{};
    thread.dwSize = sizeof(thread);
    std::size_t count = 0;
    for (BOOL isThere = ::Thread32First(snapshot, &thread); isThere;
         isThere = ::Thread32Next(snapshot, &thread))
        count += thread.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
    ::CloseHandle(snapshot);
    return count;
}

std::size_t CountUdpSockets()
{
    ULONG bytes = 1 << 14;
    std::vector<std::byte> buffer;
    DWORD error = ERROR_INSUFFICIENT_BUFFER;
    while (error == ERROR_INSUFFICIENT_BUFFER) {
        buffer.resize(bytes);
        error = ::GetExtendedUdpTable(buffer.data(), &bytes, FALSE, AF_INET, UDP_TABLE_BASIC, 0);
    }
    DWORD count = 0;
    if (error == NO_ERROR)
        std::memcpy(&count, buffer.data(), sizeof(count)); // the table begins with its number of rows
    return count;
}

} // namespace

void ProcessUse::AllowEvents(std::size_t count)
{
    handlesByType[EventType()] += count;
}

ProcessUse MeasureProcess()
{
    ProcessUse use;
    for (const HandleEntry& entry : OwnHandles())
        ++use.handlesByType[entry.type];
    use.threads = CountThreads();
    use.udpSockets = CountUdpSockets();
    return use;
}

ProcessUse MeasureProcessAtRest()
{
    constexpr int kSame = 10;                    // chosen: some ten milliseconds
    constexpr std::chrono::seconds kPatience{5}; // chosen: as for a limit; then the last count has to do
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    ProcessUse use = MeasureProcess();
    for (int same = 0; same < kSame && std::chrono::steady_clock::now() < deadline;) {
        ::SwitchToThread();
        const ProcessUse next = MeasureProcess();
        same = next == use ? same + 1 : 0;
        use = next;
    }
    return use;
}

bool IsWithin(const ProcessUse& use, const ProcessUse& limit)
{
    const auto isWithin = [&](const auto& typeAndCount) {
        const auto found = limit.handlesByType.find(typeAndCount.first);
        return found != limit.handlesByType.end() && typeAndCount.second <= found->second;
    };
    return std::all_of(use.handlesByType.begin(), use.handlesByType.end(), isWithin) &&
           use.threads <= limit.threads && use.udpSockets <= limit.udpSockets;
}

ProcessUse MeasureProcessUntilWithin(const ProcessUse& limit, std::chrono::milliseconds patience)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    ProcessUse use = MeasureProcess();
    while (!IsWithin(use, limit) && std::chrono::steady_clock::now() < deadline) {
        ::SwitchToThread();
        use = MeasureProcess();
    }
    return use;
}

HeapUse MeasureHeaps()
{
    HeapUse use;
    std::vector<HANDLE> heaps(::GetProcessHeaps(0, nullptr));
    heaps.resize(std::min<std::size_t>(::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()),
                                       heaps.size()));
    for (const HANDLE heap : heaps) {
        ::HeapLock(heap);
        PROCESS_HEAP_ENTRY entry{};
        while (::HeapWalk(heap, &entry)) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) == 0)
                continue;
            ++use.blocks;
            use.bytes += entry.cbData;
        }
        ::HeapUnlock(heap);
    }
    return use;
}

std::string Describe(const ProcessUse& use)
{
    std::ostringstream text;
    text << "handles by type:";
    for (const auto& [type, count] : use.handlesByType)
        text << ' ' << type << ':' << count;
    text << "; " << use.threads << " threads, " << use.udpSockets << " UDP sockets";
    return text.str();
}
