#pragma once

#include "BaseClasses/ModuleGlobals.h"
#include "BaseClasses/VxComPtr.h"
#include "VxDSSource/pages/ResourceIds.h"
#include "VxDSSource/pages/SourcePage.h"
#include "support/directshow/TestObject.h"
#include "support/screen/WindowPicture.h"
#include "unit/VxDSSource/filter/FilterFixture.h"

#include <commctrl.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

/// The frame's side of a page: counts how often the page says that there is something to apply.
class PageSite final : public TestObject<IPropertyPageSite> {
public:
    int dirtyCount = 0;

    STDMETHODIMP OnStatusChange(DWORD status) override
    {
        EXPECT_EQ(status, 1u) << "dirty";
        ++dirtyCount;
        return S_OK;
    }
    STDMETHODIMP GetLocaleID(LCID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetPageContainer(IUnknown**) override { return E_NOTIMPL; }
    STDMETHODIMP TranslateAccelerator(MSG*) override { return E_NOTIMPL; }
};

/// A page in a window, driven as a property frame and a user drive it.
///
/// Owner:  the test; ends before what the page is connected to.
/// Thread: the test's, which handles the window's messages.
class OpenPage final {
public:
    /// @param page  a new page: its first reference is taken
    explicit OpenPage(CUnknown* page)
    {
        g_hInst = ::GetModuleHandleW(nullptr);
        page->NonDelegatingAddRef();
        EXPECT_EQ(page->NonDelegatingQueryInterface(IID_IPropertyPage, m_page.PutVoid()), S_OK);
        page->NonDelegatingRelease();
        EXPECT_EQ(m_page->SetPageSite(&site), S_OK);
        m_parent = ::CreateWindowExW(WS_EX_CONTROLPARENT, L"#32770", L"Page", WS_OVERLAPPEDWINDOW, 0, 0, 600,
                                     400, nullptr, nullptr, g_hInst, nullptr);
        EXPECT_NE(m_parent, nullptr) << "these tests need a display";
    }
    ~OpenPage()
    {
        if (m_window != nullptr)
            Leave();
        if (m_page) {
            m_page->SetObjects(0, nullptr);
            m_page->SetPageSite(nullptr);
            EXPECT_EQ(m_page.Detach()->Release(), 0u);
        }
        ::DestroyWindow(m_parent);
    }
    OpenPage(const OpenPage&) = delete;
    OpenPage& operator=(const OpenPage&) = delete;

    HRESULT Connect(IUnknown& object)
    {
        IUnknown* objects[] = {&object};
        return m_page->SetObjects(1, objects);
    }

    /// Shows the page in a window of its size.
    void Show()
    {
        PROPPAGEINFO info{};
        ASSERT_EQ(m_page->GetPageInfo(&info), S_OK);
        ::CoTaskMemFree(info.pszTitle);
        RECT frame = {0, 0, info.size.cx, info.size.cy};
        ::AdjustWindowRectEx(&frame, WS_OVERLAPPEDWINDOW, FALSE, WS_EX_CONTROLPARENT);
        ::SetWindowPos(m_parent, nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top,
                       SWP_NOZORDER | SWP_SHOWWINDOW);
        const RECT place = {0, 0, info.size.cx, info.size.cy};
        ASSERT_EQ(m_page->Activate(m_parent, &place, TRUE), S_OK);
        m_window = ::GetWindow(m_parent, GW_CHILD);
        ASSERT_NE(m_window, nullptr);
        HandleMessages();
    }
    void Leave()
    {
        EXPECT_EQ(m_page->Deactivate(), S_OK);
        m_window = nullptr;
    }
    HRESULT Apply() { return m_page->Apply(); }
    bool IsDirty() { return m_page->IsPageDirty() == S_OK; }
    IPropertyPage& Page() { return *m_page.Get(); }
    HWND Window() const { return m_window; }
    HWND Frame() const { return m_parent; }

    HWND Item(int id) const
    {
        HWND const item = ::GetDlgItem(m_window, id);
        EXPECT_NE(item, nullptr) << id;
        return item;
    }
    bool IsEnabled(int id) const { return ::IsWindowEnabled(Item(id)) != FALSE; }
    std::wstring Text(int id) const
    {
        std::wstring text(2000, L'\0');
        text.resize(static_cast<std::size_t>(::GetWindowTextW(Item(id), text.data(), 2000)));
        return text;
    }
    /// As a user types it.
    void Type(int id, const wchar_t* text) { ::SetWindowTextW(Item(id), text); }
    void Click(int id) { ::SendMessageW(Item(id), BM_CLICK, 0, 0); }
    bool IsChecked(int id) const { return ::SendMessageW(Item(id), BM_GETCHECK, 0, 0) == BST_CHECKED; }

    /// Entries of a list.
    std::vector<std::wstring> Entries(int id) const
    {
        std::vector<std::wstring> entries;
        const LRESULT count = ::SendMessageW(Item(id), CB_GETCOUNT, 0, 0);
        for (LRESULT i = 0; i < count; ++i) {
            std::array<wchar_t, 300> text{};
            ::SendMessageW(Item(id), CB_GETLBTEXT, static_cast<WPARAM>(i),
                           reinterpret_cast<LPARAM>(text.data()));
            entries.emplace_back(text.data());
        }
        return entries;
    }
    /// @return  -1: none
    int Selection(int id) const { return static_cast<int>(::SendMessageW(Item(id), CB_GETCURSEL, 0, 0)); }
    /// As a user does it: the list tells its dialog.
    void Select(int id, int entry)
    {
        ::SendMessageW(Item(id), CB_SETCURSEL, static_cast<WPARAM>(entry), 0);
        ::SendMessageW(m_window, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE),
                       reinterpret_cast<LPARAM>(Item(id)));
    }

    /// Leaves a picture of the page for people to look at.
    void Save(const std::string& name) const
    {
        ::RedrawWindow(m_parent, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
        HandleMessages();
        SaveWindowPicture(m_parent, name);
    }

    PageSite site;

private:
    VxComPtr<IPropertyPage> m_page;
    HWND m_parent = nullptr;
    HWND m_window = nullptr; // the page's, while it is active
};

/// A page of a real filter with the scripted camera behind it and a registry of its own.
class PageFixture : public FilterFixture {};

template <typename Page>
CUnknown* NewPage()
{
    HRESULT result = S_OK;
    CUnknown* const page = pages::CreatePage<Page>(nullptr, &result);
    EXPECT_EQ(result, S_OK);
    return page;
}
