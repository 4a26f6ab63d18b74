#include "VxCamera/transport/win/WinTimerSystem.h"

#include <ratio>

namespace transport {

namespace {

// Fixed by Windows (timeapi.h): of timeBeginPeriod and timeEndPeriod.
using PeriodFunction = UINT(WINAPI*)(UINT periodMs);
constexpr UINT kNoError = 0;

constexpr UINT kShortTickMs = 1; // fixed by Windows: the shortest there is

/// @param library  null: has none
PeriodFunction FunctionOf(HMODULE library, const char* name)
{
    // The cast through void tells that the type behind the name is known.
    return library == nullptr
               ? nullptr
               : reinterpret_cast<PeriodFunction>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
}

} // namespace

WinTimerSystem::~WinTimerSystem()
{
    if (m_multimedia != nullptr)
        ::FreeLibrary(m_multimedia);
}

KernelHandle WinTimerSystem::MakeTimer(DWORD flags)
{
    return KernelHandle(::CreateWaitableTimerExW(nullptr, nullptr, flags, TIMER_MODIFY_STATE | SYNCHRONIZE));
}

bool WinTimerSystem::BeginShortTick()
{
    if (m_multimedia == nullptr)
        m_multimedia = ::LoadLibraryExW(L"winmm.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    const auto begin = FunctionOf(m_multimedia, "timeBeginPeriod");
    return begin != nullptr && begin(kShortTickMs) == kNoError;
}

void WinTimerSystem::EndShortTick()
{
    const auto end = FunctionOf(m_multimedia, "timeEndPeriod");
    if (end != nullptr)
        end(kShortTickMs);
}

bool WinTimerSystem::Set(HANDLE timer, std::chrono::nanoseconds duration)
{
    using Units = std::chrono::duration<LONGLONG, std::ratio<1, 10'000'000>>; // fixed by Windows: 100 ns
    LARGE_INTEGER due;
    due.QuadPart = -std::chrono::ceil<Units>(duration).count(); // negative: from now on
    constexpr LONG kOnce = 0;
    return ::SetWaitableTimer(timer, &due, kOnce, nullptr, nullptr, FALSE) != FALSE;
}

DWORD WinTimerSystem::Wait(std::span<const HANDLE> handles, DWORD timeoutMs)
{
    const auto count = static_cast<DWORD>(handles.size()); // two at most
    return ::WaitForMultipleObjects(count, handles.data(), FALSE, timeoutMs);
}

} // namespace transport
