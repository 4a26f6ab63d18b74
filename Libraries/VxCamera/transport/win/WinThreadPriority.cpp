#include "VxCamera/transport/win/WinThreadPriority.h"

#include <utility>

namespace transport {

namespace {

// Both fixed by Windows (avrt.h).
using SetCharacteristics = HANDLE(WINAPI*)(LPCWSTR task, LPDWORD taskIndex);
using RevertCharacteristics = BOOL(WINAPI*)(HANDLE task);

/// The class of Windows. Its library is not on every system, so it is loaded when it is needed. Owner and
/// thread: see IThreadClass.
class WinThreadClass final : public IThreadClass {
public:
    ~WinThreadClass() override
    {
        if (m_library != nullptr)
            ::FreeLibrary(m_library);
    }

    HANDLE Join(const wchar_t* task) override
    {
        m_library = ::LoadLibraryExW(L"avrt.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        if (m_library == nullptr)
            return nullptr;
        // The cast through void tells that the type behind the name is known.
        const auto set = reinterpret_cast<SetCharacteristics>(
            reinterpret_cast<void*>(::GetProcAddress(m_library, "AvSetMmThreadCharacteristicsW")));
        DWORD taskIndex = 0;
        return set != nullptr ? set(task, &taskIndex) : nullptr;
    }
    void Leave(HANDLE membership) override
    {
        const auto revert = reinterpret_cast<RevertCharacteristics>(
            reinterpret_cast<void*>(::GetProcAddress(m_library, "AvRevertMmThreadCharacteristics")));
        if (revert != nullptr)
            revert(membership);
    }

private:
    HMODULE m_library = nullptr;
};

class JoinedClass final : public IRaisedPriority {
public:
    JoinedClass(std::unique_ptr<IThreadClass> threadClass, HANDLE membership)
        : m_class(std::move(threadClass)), m_membership(membership)
    {
    }
    ~JoinedClass() override { m_class->Leave(m_membership); }

private:
    const std::unique_ptr<IThreadClass> m_class;
    const HANDLE m_membership;
};

/// Where there is no such class: the priority of the thread itself.
class HighPriority final : public IRaisedPriority {
public:
    explicit HighPriority(int before) : m_before(before) {}
    ~HighPriority() override { ::SetThreadPriority(::GetCurrentThread(), m_before); }

private:
    const int m_before;
};

} // namespace

std::unique_ptr<IRaisedPriority> RaiseThreadPriority()
{
    return RaiseThreadPriority(std::make_unique<WinThreadClass>());
}

std::unique_ptr<IRaisedPriority> RaiseThreadPriority(std::unique_ptr<IThreadClass> threadClass)
{
    const HANDLE membership = threadClass->Join(L"Capture"); // fixed by Windows: a name of its own
    if (membership != nullptr)
        return std::make_unique<JoinedClass>(std::move(threadClass), membership);
    const int before = ::GetThreadPriority(::GetCurrentThread());
    if (before == THREAD_PRIORITY_ERROR_RETURN ||
        !::SetThreadPriority(::GetCurrentThread(), THREAD_PRIORITY_HIGHEST))
        return nullptr;
    return std::make_unique<HighPriority>(before);
}

} // namespace transport
