#include "VxCamera/transport/ThreadPriority.h"

#include <windows.h>

namespace transport {

namespace {

// Both fixed by Windows (avrt.h).
using SetCharacteristics = HANDLE(WINAPI*)(LPCWSTR task, LPDWORD taskIndex);
using RevertCharacteristics = BOOL(WINAPI*)(HANDLE task);

/// The system's class for threads that bring pictures and sound in. Its library is not on every system, so it
/// is loaded when it is needed.
class MultimediaClass final : public IRaisedPriority {
public:
    MultimediaClass(HMODULE library, HANDLE task) : m_library(library), m_task(task) {}
    ~MultimediaClass() override
    {
        // The cast through void tells that the type behind the name is known.
        const auto revert = reinterpret_cast<RevertCharacteristics>(
            reinterpret_cast<void*>(::GetProcAddress(m_library, "AvRevertMmThreadCharacteristics")));
        if (revert != nullptr)
            revert(m_task);
        ::FreeLibrary(m_library);
    }

private:
    const HMODULE m_library;
    const HANDLE m_task;
};

/// Where there is no such class: the priority of the thread itself.
class HighPriority final : public IRaisedPriority {
public:
    explicit HighPriority(int before) : m_before(before) {}
    ~HighPriority() override { ::SetThreadPriority(::GetCurrentThread(), m_before); }

private:
    const int m_before;
};

std::unique_ptr<IRaisedPriority> JoinMultimediaClass()
{
    const HMODULE library = ::LoadLibraryExW(L"avrt.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (library == nullptr)
        return nullptr;
    const auto set = reinterpret_cast<SetCharacteristics>(
        reinterpret_cast<void*>(::GetProcAddress(library, "AvSetMmThreadCharacteristicsW")));
    DWORD taskIndex = 0;
    const HANDLE task = set != nullptr ? set(L"Capture", &taskIndex) : nullptr;
    if (task != nullptr)
        return std::make_unique<MultimediaClass>(library, task);
    ::FreeLibrary(library);
    return nullptr;
}

} // namespace

std::unique_ptr<IRaisedPriority> RaiseThreadPriority()
{
    if (auto joined = JoinMultimediaClass())
        return joined;
    const int before = ::GetThreadPriority(::GetCurrentThread());
    if (before == THREAD_PRIORITY_ERROR_RETURN ||
        !::SetThreadPriority(::GetCurrentThread(), THREAD_PRIORITY_HIGHEST))
        return nullptr;
    return std::make_unique<HighPriority>(before);
}

} // namespace transport
