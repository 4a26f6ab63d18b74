#include "BaseClasses/CBasePropertyPage.h"

#include "BaseClasses/ModuleGlobals.h"
#include "BaseClasses/VxComPtr.h"
#include "support/directshow/TestObject.h"
#include "unit/BaseClasses/FrameworkTest.h"
#include "unit/BaseClasses/Pages.h"

#include <objbase.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr HRESULT kOwnError = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x777);
constexpr RECT kPlace = {5, 7, 305, 207};

class PageSite final : public TestObject<IPropertyPageSite> {
public:
    STDMETHODIMP OnStatusChange(DWORD) override { return S_OK; }
    STDMETHODIMP GetLocaleID(LCID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetPageContainer(IUnknown**) override { return E_NOTIMPL; }
    STDMETHODIMP TranslateAccelerator(MSG*) override { return E_NOTIMPL; }
};

class Object final : public TestObject<IUnknown> {};

/// What happened to a page; outlives it.
struct Record {
    std::vector<std::string> calls;
    std::vector<UINT> messagesWithoutWindow; // while m_hwnd was null
    std::vector<UINT> messages;
    bool ended = false;
};

class Page final : public CBasePropertyPage {
public:
    Page(Record& record, int dialogId, int titleId)
        : CBasePropertyPage("page", nullptr, dialogId, titleId), m_record(record)
    {
    }
    ~Page() override { m_record.ended = true; }

    std::function<HRESULT()> onConnect = [] { return S_OK; };
    std::function<HRESULT()> onActivate = [] { return S_OK; };
    std::function<HRESULT()> onDeactivate = [] { return S_OK; };
    std::function<HRESULT()> onApply = [] { return S_OK; };
    std::function<void(UINT)> onMessage = [](UINT) {};

    HWND Window() const { return m_hwnd; }
    HWND Dialog() const { return m_Dlg; }
    void SetDirty() { m_bDirty = TRUE; }

    HRESULT OnConnect(IUnknown*) override { return Note("connect", onConnect); }
    HRESULT OnDisconnect() override
    {
        return Note("disconnect", [] { return S_OK; });
    }
    HRESULT OnActivate() override { return Note("activate", onActivate); }
    HRESULT OnDeactivate() override { return Note("deactivate", onDeactivate); }
    HRESULT OnApplyChanges() override { return Note("apply", onApply); }
    INT_PTR OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override
    {
        (m_hwnd == nullptr ? m_record.messagesWithoutWindow : m_record.messages).push_back(message);
        onMessage(message);
        return CBasePropertyPage::OnReceiveMessage(window, message, wParam, lParam);
    }

private:
    HRESULT Note(const char* call, const std::function<HRESULT()>& act)
    {
        m_record.calls.emplace_back(call);
        return act();
    }

    Record& m_record;
};

class CBasePropertyPageTest : public FrameworkTest {
protected:
    CBasePropertyPageTest()
    {
        g_hInst = ::GetModuleHandleW(nullptr);
        parent = ::CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW, 0, 0, 600, 400, nullptr, nullptr,
                                   g_hInst, nullptr);
        EXPECT_NE(parent, nullptr) << "the tests of property pages need a display";
    }
    ~CBasePropertyPageTest() override
    {
        held.Reset();
        ::DestroyWindow(parent);
    }
    void SetObject()
    {
        IUnknown* const object = &theObject;
        ASSERT_EQ(page.SetObjects(1, const_cast<IUnknown**>(&object)), S_OK);
    }
    void Activate()
    {
        SetObject();
        ASSERT_EQ(page.Activate(parent, &kPlace, FALSE), S_OK);
    }
    static LONG_PTR ExtendedStyle(HWND window) { return ::GetWindowLongPtrW(window, GWL_EXSTYLE); }

    HWND parent = nullptr;
    Object theObject;
    PageSite site;
    Record record;
    Page& page = *new Page(record, IDD_PLAIN_PAGE, IDS_TITLE);
    VxComPtr<IPropertyPage> held{&page};
};

using Calls = std::vector<std::string>;

TEST_F(CBasePropertyPageTest, AnswersIPropertyPageOnly)
{
    VxComPtr<IPropertyPage> itself;
    VxComPtr<IPropertyPage2> newer;

    EXPECT_EQ(held->QueryInterface(IID_IPropertyPage, itself.PutVoid()), S_OK);
    EXPECT_EQ(held->QueryInterface(IID_IPropertyPage2, newer.PutVoid()), E_NOINTERFACE);
}

TEST_F(CBasePropertyPageTest, HoldsItsSite)
{
    EXPECT_EQ(held->SetPageSite(nullptr), E_UNEXPECTED);

    EXPECT_EQ(held->SetPageSite(&site), S_OK);
    EXPECT_EQ(site.References(), 1);
    EXPECT_EQ(held->SetPageSite(&site), E_UNEXPECTED);
    EXPECT_EQ(held->SetPageSite(nullptr), S_OK);
    EXPECT_EQ(site.References(), 0);
}

TEST_F(CBasePropertyPageTest, ChecksItsObjects)
{
    IUnknown* objects[] = {nullptr, &theObject};

    EXPECT_EQ(held->SetObjects(1, nullptr), E_POINTER);
    EXPECT_EQ(held->SetObjects(1, objects), E_POINTER);
    EXPECT_EQ(held->SetObjects(2, objects), E_UNEXPECTED);
    EXPECT_EQ(record.calls, Calls{});
    EXPECT_EQ(held->Activate(parent, &kPlace, FALSE), E_UNEXPECTED);
    EXPECT_EQ(held->Apply(), E_UNEXPECTED);
}

TEST_F(CBasePropertyPageTest, MoreThanOneObjectChangesNothing)
{
    SetObject();
    IUnknown* objects[] = {&theObject, &theObject};

    EXPECT_EQ(held->SetObjects(2, objects), E_UNEXPECTED);

    EXPECT_EQ(held->Activate(parent, &kPlace, FALSE), S_OK);
    held->Deactivate();
}

TEST_F(CBasePropertyPageTest, ObjectCountsAsSetEvenWhenTheConnectionFails)
{
    page.onConnect = [] { return E_NOINTERFACE; };
    IUnknown* objects[] = {&theObject};

    EXPECT_EQ(held->SetObjects(1, objects), E_NOINTERFACE);

    EXPECT_EQ(held->Activate(parent, &kPlace, FALSE), S_OK);
    held->Deactivate();
}

TEST_F(CBasePropertyPageTest, WholeLifeCallsTheHooksInOrder)
{
    SetObject();
    EXPECT_EQ(held->SetPageSite(&site), S_OK);
    PROPPAGEINFO info = {};
    EXPECT_EQ(held->GetPageInfo(&info), S_OK);
    ::CoTaskMemFree(info.pszTitle);
    EXPECT_EQ(held->Activate(parent, &kPlace, FALSE), S_OK);
    page.SetDirty();
    EXPECT_EQ(held->Apply(), S_OK);
    EXPECT_EQ(held->Deactivate(), S_OK);
    EXPECT_EQ(held->Activate(parent, &kPlace, TRUE), S_OK);
    EXPECT_EQ(held->Deactivate(), S_OK);
    EXPECT_EQ(held->SetObjects(0, nullptr), S_OK);
    EXPECT_EQ(held->SetPageSite(nullptr), S_OK);
    EXPECT_EQ(held.Detach()->Release(), 0u);

    EXPECT_EQ(record.calls, (Calls{"connect", "activate", "apply", "deactivate", "activate", "deactivate",
                                   "disconnect", "disconnect"}));
    EXPECT_TRUE(record.ended);
}

TEST_F(CBasePropertyPageTest, LastReleaseLetsGoOfEverything)
{
    SetObject();
    held->SetPageSite(&site);

    EXPECT_EQ(held.Detach()->Release(), 0u);

    EXPECT_EQ(site.References(), 0);
    EXPECT_EQ(record.calls, (Calls{"connect", "disconnect"}));
}

TEST_F(CBasePropertyPageTest, LastReleaseOfAnActivePageEndsItsWindow)
{
    Activate();
    const HWND window = page.Window();

    held.Reset();

    EXPECT_FALSE(::IsWindow(window));
    EXPECT_TRUE(record.ended);
}

TEST_F(CBasePropertyPageTest, ActivateChecksItsArguments)
{
    EXPECT_EQ(held->Activate(parent, nullptr, FALSE), E_POINTER);
    EXPECT_EQ(held->Activate(parent, &kPlace, FALSE), E_UNEXPECTED); // no object
    Activate();
    EXPECT_EQ(held->Activate(parent, &kPlace, FALSE), E_UNEXPECTED); // active
    EXPECT_EQ(held->Deactivate(), S_OK);
    EXPECT_EQ(held->Deactivate(), E_UNEXPECTED);
}

TEST_F(CBasePropertyPageTest, MissingTemplateFailsToActivate)
{
    VxComPtr<IPropertyPage> other(new Page(record, IDD_MISSING_PAGE, IDS_TITLE));
    IUnknown* objects[] = {&theObject};
    other->SetObjects(1, objects);

    EXPECT_EQ(other->Activate(parent, &kPlace, FALSE), E_OUTOFMEMORY);
    EXPECT_EQ(other->Deactivate(), E_UNEXPECTED);
}

TEST_F(CBasePropertyPageTest, ActivePageIsPlacedAndShown)
{
    bool wasShown = true;
    page.onActivate = [&] {
        wasShown = (::GetWindowLongPtrW(page.Window(), GWL_STYLE) & WS_VISIBLE) != 0;
        return kOwnError; // ignored
    };

    Activate();

    EXPECT_FALSE(wasShown);
    RECT place = {};
    ::GetWindowRect(page.Window(), &place);
    ::MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&place), 2);
    EXPECT_TRUE(::EqualRect(&place, &kPlace));
    EXPECT_NE(::GetWindowLongPtrW(page.Window(), GWL_STYLE) & WS_VISIBLE, 0);
    EXPECT_EQ(::GetParent(page.Window()), parent);
    EXPECT_EQ(page.Dialog(), page.Window());
}

TEST_F(CBasePropertyPageTest, MovesAndShows)
{
    EXPECT_EQ(held->Move(nullptr), E_POINTER);
    EXPECT_EQ(held->Move(&kPlace), E_UNEXPECTED);
    EXPECT_EQ(held->Show(SW_SHOW), E_UNEXPECTED);
    Activate();

    EXPECT_EQ(held->Show(SW_HIDE), S_OK);
    EXPECT_EQ(::GetWindowLongPtrW(page.Window(), GWL_STYLE) & WS_VISIBLE, 0);
    EXPECT_EQ(held->Show(SW_SHOW), S_OK);
    EXPECT_NE(::GetWindowLongPtrW(page.Window(), GWL_STYLE) & WS_VISIBLE, 0);
    EXPECT_EQ(held->Show(SW_SHOWMAXIMIZED), E_INVALIDARG);
    const RECT elsewhere = {1, 2, 101, 52};
    EXPECT_EQ(held->Move(&elsewhere), S_OK);
    RECT client = {};
    ::GetClientRect(page.Window(), &client);
    EXPECT_EQ(client.right, 100);
    EXPECT_EQ(client.bottom, 50);
}

TEST_F(CBasePropertyPageTest, WindowAndControlsAreThereWhileThePageIsDeactivated)
{
    bool hadControl = false;
    LONG_PTR style = WS_EX_CONTROLPARENT;
    page.onDeactivate = [&] {
        hadControl = ::GetDlgItem(page.Window(), IDC_NAME) != nullptr;
        style = ExtendedStyle(page.Window());
        return kOwnError; // ignored
    };
    Activate();
    const HWND window = page.Window();

    EXPECT_EQ(held->Deactivate(), S_OK);

    EXPECT_TRUE(hadControl);
    EXPECT_EQ(style & WS_EX_CONTROLPARENT, 0);
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_EQ(page.Window(), nullptr);
    EXPECT_EQ(page.Dialog(), window); // never cleared
}

TEST_F(CBasePropertyPageTest, WindowKeepsTheStyleThatLetsTabIn)
{
    Activate();
    EXPECT_NE(ExtendedStyle(page.Window()) & WS_EX_CONTROLPARENT, 0);

    ::SetWindowLongPtrW(page.Window(), GWL_EXSTYLE, 0);

    EXPECT_NE(ExtendedStyle(page.Window()) & WS_EX_CONTROLPARENT, 0);
}

TEST_F(CBasePropertyPageTest, MessagesOfCreationComeBeforeTheWindowIsKnown)
{
    Activate();

    const auto& early = record.messagesWithoutWindow;
    EXPECT_NE(std::find(early.begin(), early.end(), WM_INITDIALOG), early.end());
}

TEST_F(CBasePropertyPageTest, ControlsFilledInOnActivateNotifyAtOnce)
{
    std::size_t commands = 0;
    page.onActivate = [&] {
        ::SetDlgItemTextW(page.Window(), IDC_NAME, L"Camera");
        commands =
            static_cast<std::size_t>(std::count(record.messages.begin(), record.messages.end(), WM_COMMAND));
        return S_OK;
    };

    Activate();

    EXPECT_GE(commands, 1u);
}

TEST_F(CBasePropertyPageTest, CloseDoesNotEndTheWindow)
{
    Activate();

    ::SendMessageW(page.Window(), WM_CLOSE, 0, 0);

    EXPECT_TRUE(::IsWindow(page.Window()));
}

TEST_F(CBasePropertyPageTest, ExceptionsDoNotLeaveTheWindowProcedure)
{
    Activate();
    page.onMessage = [](UINT message) {
        if (message == WM_APP)
            throw std::runtime_error("by the test");
    };

    EXPECT_EQ(::SendMessageW(page.Window(), WM_APP, 0, 0), 0);
}

TEST_F(CBasePropertyPageTest, ExceptionsOfHooksBecomeFailures)
{
    page.onConnect = []() -> HRESULT { throw std::bad_alloc(); };
    IUnknown* objects[] = {&theObject};
    EXPECT_EQ(held->SetObjects(1, objects), E_OUTOFMEMORY);
    page.onActivate = page.onDeactivate =
        page.onApply = []() -> HRESULT { throw std::runtime_error("by the test"); };
    EXPECT_EQ(held->Activate(parent, &kPlace, FALSE), S_OK);
    held->SetPageSite(&site);
    page.SetDirty();
    EXPECT_EQ(held->Apply(), E_UNEXPECTED);
    EXPECT_EQ(held->Deactivate(), S_OK);
}

TEST_F(CBasePropertyPageTest, AppliesOnlyWhatIsDirty)
{
    SetObject();
    EXPECT_EQ(held->Apply(), E_UNEXPECTED); // no site
    held->SetPageSite(&site);
    EXPECT_EQ(held->IsPageDirty(), S_FALSE);
    EXPECT_EQ(held->Apply(), S_OK);
    EXPECT_EQ(record.calls, Calls{"connect"});

    page.SetDirty(); // and not active: Apply works all the same
    EXPECT_EQ(held->IsPageDirty(), S_OK);
    EXPECT_EQ(held->Apply(), S_OK);

    EXPECT_EQ(record.calls, (Calls{"connect", "apply"}));
    EXPECT_EQ(held->IsPageDirty(), S_FALSE);
}

TEST_F(CBasePropertyPageTest, StaysDirtyWhenApplyFails)
{
    SetObject();
    held->SetPageSite(&site);
    page.SetDirty();
    page.onApply = [] { return kOwnError; };

    EXPECT_EQ(held->Apply(), kOwnError);

    EXPECT_EQ(held->IsPageDirty(), S_OK);
}

TEST_F(CBasePropertyPageTest, HasNeitherHelpNorAccelerators)
{
    MSG message = {};
    EXPECT_EQ(held->Help(L""), E_NOTIMPL);
    EXPECT_EQ(held->TranslateAccelerator(&message), E_NOTIMPL);
}

/// Size in pixels of so many dialog units, in the font of a template.
SIZE SizeOfUnits(int dialogId, LONG width, LONG height)
{
    const HWND dialog = ::CreateDialogParamW(
        g_hInst, MAKEINTRESOURCEW(dialogId), ::GetDesktopWindow(),
        [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return TRUE; }, 0);
    RECT units = {0, 0, width, height};
    EXPECT_TRUE(::MapDialogRect(dialog, &units));
    ::DestroyWindow(dialog);
    return {units.right, units.bottom};
}

TEST_F(CBasePropertyPageTest, PageInfoMeasuresTheTemplate)
{
    PROPPAGEINFO info;
    std::memset(&info, 0xCC, sizeof(info)); // as Wine's frame leaves it

    ASSERT_EQ(held->GetPageInfo(&info), S_OK);

    const SIZE expected = SizeOfUnits(IDD_PLAIN_PAGE, 344, 223);
    EXPECT_EQ(info.size.cx, expected.cx);
    EXPECT_EQ(info.size.cy, expected.cy);
    EXPECT_EQ(info.cb, sizeof(PROPPAGEINFO));
    EXPECT_STREQ(info.pszTitle, L"Title of the page");
    EXPECT_EQ(info.pszDocString, nullptr);
    EXPECT_EQ(info.pszHelpFile, nullptr);
    EXPECT_EQ(info.dwHelpContext, 0u);
    ::CoTaskMemFree(info.pszTitle);
    EXPECT_TRUE(record.messages.empty() && record.messagesWithoutWindow.empty());
    EXPECT_EQ(page.Dialog(), nullptr);
    EXPECT_EQ(held->GetPageInfo(nullptr), E_POINTER);
}

TEST_F(CBasePropertyPageTest, PageInfoCountsTheWholeWindow)
{
    VxComPtr<IPropertyPage> other(new Page(record, IDD_PAGE_WITH_CAPTION, IDS_TITLE));
    PROPPAGEINFO info = {};

    ASSERT_EQ(other->GetPageInfo(&info), S_OK);

    EXPECT_GT(info.size.cy, SizeOfUnits(IDD_PAGE_WITH_CAPTION, 200, 100).cy);
    ::CoTaskMemFree(info.pszTitle);
}

TEST_F(CBasePropertyPageTest, PageInfoHasDefaultsForWhatIsMissing)
{
    VxComPtr<IPropertyPage> other(new Page(record, IDD_MISSING_PAGE, IDS_MISSING));
    PROPPAGEINFO info = {};

    ASSERT_EQ(other->GetPageInfo(&info), S_OK);

    EXPECT_EQ(info.size.cx, 340);
    EXPECT_EQ(info.size.cy, 150);
    EXPECT_STREQ(info.pszTitle, L"");
    ::CoTaskMemFree(info.pszTitle);
}

} // namespace
