#include "support/screen/PropertyFrame.h"

#include "VxDSSource/pages/ResourceIds.h"

#include "support/screen/WindowPicture.h"

#include <gtest/gtest.h>

#include <ocidl.h>
#include <prsht.h>

#include <array>

namespace {

constexpr UINT kRunMessage = WM_APP + 1;
constexpr wchar_t kRunnerClass[] = L"VxTestRunner";

LRESULT CALLBACK RunnerProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != kRunMessage)
        return ::DefWindowProcW(window, message, wParam, lParam);
    (*reinterpret_cast<const std::function<void()>*>(lParam))();
    return 0;
}

HWND MakeRunner()
{
    WNDCLASSW kind{};
    kind.lpfnWndProc = &RunnerProcedure;
    kind.hInstance = ::GetModuleHandleW(nullptr);
    kind.lpszClassName = kRunnerClass;
    ::RegisterClassW(&kind); // fails harmlessly the second time
    return ::CreateWindowExW(0, kRunnerClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, kind.hInstance,
                             nullptr);
}

/// A control that only one of the pages has.
int MarkOf(PropertyFrame::Tab tab)
{
    switch (tab) {
    case PropertyFrame::Tab::Parameters:
        return IDC_ROLE_MULTICAST;
    case PropertyFrame::Tab::Browser:
        return IDC_FEATURE_SET;
    default:
        return IDC_LEGAL_NOTICE;
    }
}

struct Search {
    const std::function<bool(HWND)>& isMeant;
    HWND found = nullptr;
};

BOOL CALLBACK Look(HWND window, LPARAM search)
{
    auto& wanted = *reinterpret_cast<Search*>(search);
    if (wanted.isMeant(window))
        wanted.found = window;
    return wanted.found == nullptr;
}

HWND FindChild(HWND parent, const std::function<bool(HWND)>& isMeant)
{
    Search search{isMeant};
    ::EnumChildWindows(parent, &Look, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

bool HasClass(HWND window, const wchar_t* name)
{
    std::array<wchar_t, 100> text{};
    ::GetClassNameW(window, text.data(), 100);
    return std::wstring(text.data()) == name;
}

} // namespace

PropertyFrame::PropertyFrame(Show show)
    : m_stop(::CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_isReady(::CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_thread([this, show = std::move(show)] { Serve(show); })
{
    ::WaitForSingleObject(m_isReady, INFINITE);
    EXPECT_TRUE(WaitUntil([this] {
        m_frame = FindWindowOfThread([](HWND window) {
            return ::IsWindowVisible(window) &&
                   FindChild(window, [](HWND child) { return HasClass(child, WC_TABCONTROLW); }) != nullptr;
        });
        return m_frame != nullptr || m_result != E_PENDING;
    }));
    EXPECT_NE(m_frame, nullptr) << "the property frame did not open: " << std::hex << m_result.load();
}

PropertyFrame::~PropertyFrame()
{
    if (m_thread.joinable())
        Close();
    ::CloseHandle(m_isReady);
    ::CloseHandle(m_stop);
}

void PropertyFrame::Serve(const Show& show)
{
    EXPECT_HRESULT_SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    m_threadId = ::GetCurrentThreadId();
    m_runner = MakeRunner();
    ::SetEvent(m_isReady);
    m_result = show(m_stop);
    EXPECT_HRESULT_SUCCEEDED(m_result.load());
    ::DestroyWindow(m_runner);
    ::CoUninitialize();
}

HWND PropertyFrame::FindWindowOfThread(const std::function<bool(HWND)>& isMeant) const
{
    Search search{isMeant};
    ::EnumThreadWindows(m_threadId, &Look, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

std::vector<std::wstring> PropertyFrame::Titles() const
{
    HWND const tabs = FindChild(m_frame, [](HWND child) { return HasClass(child, WC_TABCONTROLW); });
    std::vector<std::wstring> titles;
    const auto count = static_cast<int>(::SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        std::array<wchar_t, 100> text{};
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = text.data();
        item.cchTextMax = 100;
        ::SendMessageW(tabs, TCM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
        titles.emplace_back(item.pszText);
    }
    return titles;
}

HWND PropertyFrame::GoTo(Tab tab)
{
    ::SendMessageW(m_frame, PSM_SETCURSEL, static_cast<WPARAM>(tab), 0);
    HWND page = nullptr;
    EXPECT_TRUE(WaitUntil([&] {
        HWND const mark =
            FindChild(m_frame, [&](HWND child) { return ::GetDlgCtrlID(child) == MarkOf(tab); });
        page = mark != nullptr ? ::GetParent(mark) : nullptr;
        return page != nullptr && ::IsWindowVisible(page);
    })) << "the page does not appear";
    return page;
}

PropertyFrame::Duration PropertyFrame::Close()
{
    const auto start = std::chrono::steady_clock::now();
    ::PostMessageW(m_frame, WM_CLOSE, 0, 0);
    m_thread.join();
    m_frame = nullptr;
    return std::chrono::steady_clock::now() - start;
}

PropertyFrame::Duration PropertyFrame::Stop()
{
    const auto start = std::chrono::steady_clock::now();
    ::SetEvent(m_stop);
    m_thread.join();
    m_frame = nullptr;
    return std::chrono::steady_clock::now() - start;
}

void PropertyFrame::Run(const std::function<void()>& action) const
{
    ::SendMessageW(m_runner, kRunMessage, 0, reinterpret_cast<LPARAM>(&action));
}

HRESULT PropertyFrame::Apply(HWND page) const
{
    HRESULT result = E_PENDING;
    // The page's window keeps the page; its first interface is the frame's.
    Run([&] { result = reinterpret_cast<IPropertyPage*>(::GetWindowLongPtrW(page, DWLP_USER))->Apply(); });
    return result;
}

bool PropertyFrame::IsDirty(HWND page) const
{
    bool isDirty = false;
    Run([&] {
        isDirty =
            reinterpret_cast<IPropertyPage*>(::GetWindowLongPtrW(page, DWLP_USER))->IsPageDirty() == S_OK;
    });
    return isDirty;
}

HWND PropertyFrame::WaitForMessageBox() const
{
    constexpr int kMessageText = 0xFFFF; // fixed by the system: the text of a message box
    HWND box = nullptr;
    std::ignore = WaitUntil([&] {
        box = FindWindowOfThread([this](HWND window) {
            return window != m_frame && ::IsWindowVisible(window) &&
                   ::GetDlgItem(window, kMessageText) != nullptr;
        });
        return box != nullptr;
    });
    return box;
}

void PropertyFrame::Save(HWND window, const std::string& name) const
{
    Run([&] {
        ::RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
        HandleMessages();
        SaveWindowPicture(window, name);
    });
}

std::wstring TreeReader::TextOf(HTREEITEM item) const
{
    std::wstring text(1100, L'\0');
    TVITEMW question{};
    question.mask = TVIF_TEXT;
    question.hItem = item;
    question.pszText = text.data();
    question.cchTextMax = 1100;
    if (!::SendMessageW(m_tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&question)))
        return {};
    return question.pszText;
}

HTREEITEM TreeReader::Next(WPARAM which, HTREEITEM from) const
{
    return reinterpret_cast<HTREEITEM>(
        ::SendMessageW(m_tree, TVM_GETNEXTITEM, which, reinterpret_cast<LPARAM>(from)));
}

std::vector<std::wstring> TreeReader::Leaves() const
{
    std::vector<std::wstring> leaves;
    Collect(Next(TVGN_ROOT, nullptr), L"", leaves);
    return leaves;
}

void TreeReader::Collect(HTREEITEM first, const std::wstring& path, std::vector<std::wstring>& leaves) const
{
    for (HTREEITEM item = first; item != nullptr; item = Next(TVGN_NEXT, item)) {
        const std::wstring text = path + TextOf(item);
        HTREEITEM const child = Next(TVGN_CHILD, item);
        if (child == nullptr)
            leaves.push_back(text);
        else
            Collect(child, text + L"\\", leaves);
    }
}

HTREEITEM TreeReader::Find(const std::wstring& name) const
{
    return Find(name, Next(TVGN_ROOT, nullptr));
}

HTREEITEM TreeReader::Find(const std::wstring& name, HTREEITEM first) const
{
    for (HTREEITEM item = first; item != nullptr; item = Next(TVGN_NEXT, item)) {
        const std::wstring text = TextOf(item);
        if (text == name || text.starts_with(name + L": "))
            return item;
        if (HTREEITEM const found = Find(name, Next(TVGN_CHILD, item)))
            return found;
    }
    return nullptr;
}

bool TreeReader::Shows(const std::wstring& name, const std::wstring& value) const
{
    HTREEITEM const item = Find(name);
    return item != nullptr && TextOf(item) == name + L": " + value;
}

void TreeReader::Select(const std::wstring& name) const
{
    HTREEITEM const item = Find(name);
    EXPECT_NE(item, nullptr);
    ::SendMessageW(m_tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
}

std::wstring TextOfControl(HWND control)
{
    std::wstring text(2000, L'\0');
    text.resize(static_cast<std::size_t>(
        ::SendMessageW(control, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

std::vector<std::wstring> EntriesOf(HWND list)
{
    std::vector<std::wstring> entries;
    const LRESULT count = ::SendMessageW(list, CB_GETCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        std::array<wchar_t, 300> text{};
        ::SendMessageW(list, CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(text.data()));
        entries.emplace_back(text.data());
    }
    return entries;
}

void ChooseEntry(HWND list, int entry)
{
    ::SendMessageW(list, CB_SETCURSEL, static_cast<WPARAM>(entry), 0);
    ::SendMessageW(::GetParent(list), WM_COMMAND, MAKEWPARAM(::GetDlgCtrlID(list), CBN_SELCHANGE),
                   reinterpret_cast<LPARAM>(list));
}

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        ::Sleep(10);
    }
    return true;
}
