#include "vxgrab/PropertyPages.h"

#include "vxgrab/ComFailure.h"
#include "vxgrab/Event.h"

#include <windows.h>

#include <olectl.h>

#include <span>
#include <thread>
#include <vector>

namespace vxgrab {
namespace {

/// The classes of a device's pages, as the device names them.
///
/// Owner:  ShowPropertyPages, by value.
/// Thread: the calling thread.
class PageList final {
public:
    PageList() = default;
    ~PageList() { ::CoTaskMemFree(m_pages.pElems); }
    PageList(const PageList&) = delete;
    PageList& operator=(const PageList&) = delete;

    [[nodiscard]] CAUUID* Put() { return &m_pages; }
    [[nodiscard]] std::span<CLSID> Classes() const { return {m_pages.pElems, m_pages.cElems}; }

private:
    CAUUID m_pages{};
};

/// Makes classes of a module known to this thread's apartment for one scope, as if they were registered.
///
/// Owner:  ShowPropertyPages, by value.
/// Thread: the calling thread.
class KnownClasses final {
public:
    KnownClasses() = default;
    ~KnownClasses()
    {
        for (const DWORD cookie : m_cookies)
            ::CoRevokeClassObject(cookie);
    }
    KnownClasses(const KnownClasses&) = delete;
    KnownClasses& operator=(const KnownClasses&) = delete;

    [[nodiscard]] VxResult Add(const LoadedModule& module, REFCLSID classId)
    {
        auto factory = module.FindClass(classId);
        if (!factory)
            return factory.Error();
        DWORD cookie = 0;
        const HRESULT result = ::CoRegisterClassObject(classId, factory->Get(), CLSCTX_INPROC_SERVER,
                                                       REGCLS_MULTIPLEUSE, &cookie);
        if (FAILED(result))
            return ComFailure("use a property page of the module", result);
        m_cookies.push_back(cookie);
        return VxResult::Ok();
    }

private:
    std::vector<DWORD> m_cookies;
};

/// Closes the calling thread's windows when the stop event is set, for one scope: the system's frame has a
/// loop of its own, which does not know the event.
///
/// Owner:  ShowPropertyPages, by value.
/// Thread: the calling thread; its own one waits.
class WindowCloser final {
public:
    explicit WindowCloser(HANDLE stop)
        : m_thread([this, stop, windows = ::GetCurrentThreadId()] { Wait(stop, windows); })
    {
    }
    ~WindowCloser()
    {
        m_isOver.Set();
        m_thread.join();
    }
    WindowCloser(const WindowCloser&) = delete;
    WindowCloser& operator=(const WindowCloser&) = delete;

private:
    // Chosen: a message box over the frame is closed first, the frame with the next try.
    static constexpr DWORD kRetryMs = 250;

    void Wait(HANDLE stop, DWORD windows)
    {
        const HANDLE events[] = {m_isOver.Handle(), stop};
        if (::WaitForMultipleObjects(2, events, FALSE, INFINITE) == WAIT_OBJECT_0)
            return;
        do {
            ::EnumThreadWindows(windows, &WindowCloser::Close, 0);
        } while (::WaitForSingleObject(m_isOver.Handle(), kRetryMs) == WAIT_TIMEOUT);
    }

    static BOOL CALLBACK Close(HWND window, LPARAM)
    {
        if (::IsWindowVisible(window) && ::IsWindowEnabled(window))
            ::PostMessageW(window, WM_CLOSE, 0, 0);
        return TRUE;
    }

    Event m_isOver{Event::Reset::Manual};
    std::thread m_thread; // last: uses the event
};

} // namespace

VxResult ShowPropertyPages(const ComPtr<IBaseFilter>& device, const std::wstring& caption,
                           const LoadedModule* module, HANDLE stop)
{
    ComPtr<ISpecifyPropertyPages> pageSource;
    if (FAILED(device.Query(IID_ISpecifyPropertyPages, pageSource)))
        return {VxError::NotSupported, "the device has no property pages"};
    PageList pages;
    HRESULT result = pageSource->GetPages(pages.Put());
    if (FAILED(result))
        return ComFailure("learn which property pages the device has", result);

    KnownClasses known;
    for (const CLSID& page : pages.Classes()) {
        const VxResult added = module != nullptr ? known.Add(*module, page) : VxResult::Ok();
        if (!added.IsOK())
            return added;
    }
    const WindowCloser closer(stop);
    IUnknown* object = device.Get();
    result = ::OleCreatePropertyFrame(nullptr, 0, 0, caption.c_str(), 1, &object,
                                      static_cast<ULONG>(pages.Classes().size()), pages.Classes().data(),
                                      LOCALE_USER_DEFAULT, 0, nullptr);
    return FAILED(result) ? ComFailure("show the property pages", result) : VxResult::Ok();
}

} // namespace vxgrab
