#include "system/LateRelease.h"

#include "support/directshow/SinkPin.h"
#include "support/graph/GrabberGraph.h"
#include "support/graph/ModuleUnderTest.h"
#include "vxgrab/ComText.h"

#include <windows.h>

#include <cstdio>
#include <string_view>

using vxgrab::ComPtr;
using vxgrab::ComText;

namespace {

// Left to the system: the process ends around them.
IBaseFilter* g_filter = nullptr;
IVxDSSource* g_control = nullptr;
SinkPin* g_sink = nullptr;

/// Without the run-time library, whose locks a thread may have held when it was ended.
void Print(std::string_view text)
{
    DWORD written = 0;
    ::WriteFile(::GetStdHandle(STD_OUTPUT_HANDLE), text.data(), static_cast<DWORD>(text.size()), &written,
                nullptr);
}

/// As an orderly host does, only too late.
void LetGo()
{
    g_filter->Stop(); // fails: the streaming thread cannot answer any more
    Print("stopped\n");
    g_control->Disconnect();
    Print("disconnected\n");
    g_sink->Disconnect();
    g_control->Release();
    if (g_filter->Release() == 0)
        Print("released\n");
}

template <typename T>
T* Keep(ComPtr<T>& reference)
{
    T* const object = reference.Get();
    object->AddRef();
    reference.Reset();
    return object;
}

bool LoadHostModule()
{
    const HMODULE module = ::LoadLibraryW(L"VxTestLastWord.dll"); // beside this program
    using SayAtTheEnd = void (*)(void (*)());
    const auto sayAtTheEnd =
        module == nullptr
            ? nullptr
            : reinterpret_cast<SayAtTheEnd>(reinterpret_cast<void*>(::GetProcAddress(module, "SayAtTheEnd")));
    if (sayAtTheEnd != nullptr)
        sayAtTheEnd(&LetGo);
    return sayAtTheEnd != nullptr;
}

/// Only receives, so that its streaming thread waits for frames that nobody sends.
bool Listen(IVxDSSource& control)
{
    constexpr UINT kRole = 1;
    constexpr UINT kPort = 47'110; // chosen: of no service; in a network of the test's own
    return SUCCEEDED(control.SetRole(kRole)) && SUCCEEDED(control.SetUnicastPort(kPort)) &&
           SUCCEEDED(control.SetDeviceId(ComText("127.0.0.1").Get())) && SUCCEEDED(control.Connect());
}

bool Run(const ComPtr<IBaseFilter>& filter, const ComPtr<IVxDSSource>& control)
{
    const ComPtr<IPin> pin = FirstPin(*filter.Get(), PINDIR_OUTPUT);
    return control && pin && Listen(*control.Get()) && SUCCEEDED(pin->Connect(g_sink, nullptr)) &&
           SUCCEEDED(filter->Run(0));
}

} // namespace

bool EndProcessAndReleaseFilter(HostModule host)
{
    // Chosen: a tenth of the time that one frame waits for a buffer, during which the acquisition mutex is
    // held.
    constexpr DWORD kIntoTheWaitMs = 100;
    if (host == HostModule::Before && !LoadHostModule())
        return false;
    auto* const module = new ModuleUnderTest;
    if (host == HostModule::After && !LoadHostModule())
        return false;
    g_sink = new SinkPin;
    g_sink->AddRef();
    ComPtr<IBaseFilter> filter = module->CreateFilter();
    if (!filter)
        return false;
    ComPtr<IVxDSSource> control = ControlOf(filter);
    if (!Run(filter, control) || !g_sink->samples.WaitFor())
        return false;
    ::Sleep(kIntoTheWaitMs);
    g_filter = Keep(filter);
    g_control = Keep(control);
    Print("ending\n");
    ::ExitProcess(0);
}
