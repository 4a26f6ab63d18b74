#pragma once

#include "VxCamera/transport/win/ITimerSystem.h"

namespace transport {

/// The functions of Windows. Owner and thread: see ITimerSystem.
class WinTimerSystem final : public ITimerSystem {
public:
    WinTimerSystem() = default;
    ~WinTimerSystem() override;

    KernelHandle MakeTimer(DWORD flags) override;
    bool BeginShortTick() override;
    void EndShortTick() override;
    bool Set(HANDLE timer, std::chrono::nanoseconds duration) override;
    DWORD Wait(std::span<const HANDLE> handles, DWORD timeoutMs) override;

private:
    HMODULE m_multimedia = nullptr; // loaded when it is needed; few systems are that old
};

} // namespace transport
