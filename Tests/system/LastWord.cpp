#include <windows.h>

// A module of a host that lets go of what it holds when the process ends, as the destructors of its variables
// do: by then the system has ended all other threads.

namespace {

using Word = void (*)();

Word g_lastWord = nullptr;

} // namespace

extern "C" __declspec(dllexport) void SayAtTheEnd(Word word)
{
    g_lastWord = word;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID reserved)
{
    const bool isProcessEnd = reason == DLL_PROCESS_DETACH && reserved != nullptr;
    if (isProcessEnd && g_lastWord != nullptr)
        g_lastWord();
    return TRUE;
}
