#pragma once

#include <windows.h>

#include <commctrl.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

/// The system's property frame with a filter's pages, on a thread of its own; a test drives it from outside,
/// through window messages, as assistive programs do.
///
/// Owner:  the test; ends before the filter.
/// Thread: the test's. Run carries a function to the frame's thread.
class PropertyFrame final {
public:
    using Duration = std::chrono::steady_clock::duration;

    enum class Tab { Parameters, Browser, About };

    /// Shows the frame and returns when it is closed; the event asks it to close.
    using Show = std::function<HRESULT(HANDLE stop)>;

    /// Opens the frame; a failure is a failure of the test.
    /// @param show  called on the frame's thread, which has a COM apartment of its own
    explicit PropertyFrame(Show show);
    /// Closes it.
    ~PropertyFrame();
    PropertyFrame(const PropertyFrame&) = delete;
    PropertyFrame& operator=(const PropertyFrame&) = delete;

    /// Titles of the tabs.
    [[nodiscard]] std::vector<std::wstring> Titles() const;

    /// Goes to a tab.
    /// @return  the page's window
    HWND GoTo(Tab tab);

    /// Closes the frame as its close button does, and waits for its end.
    /// @return  how long that took
    Duration Close();

    /// Closes the frame, and what is over it, as a program's own stop does.
    Duration Stop();

    /// Does something on the frame's thread and waits for it.
    void Run(const std::function<void()>& action) const;

    /// What the frame's button "Apply" does where there is something to apply. (Wine's button does nothing.)
    [[nodiscard]] HRESULT Apply(HWND page) const;
    [[nodiscard]] bool IsDirty(HWND page) const;

    /// The frame, or null.
    [[nodiscard]] HWND Window() const { return m_frame; }
    /// A window of the frame's thread over the frame, once it is there; null when none comes.
    [[nodiscard]] HWND WaitForMessageBox() const;

    /// Leaves a picture of a window of the frame's thread, as out/test/pages/NAME.png.
    void Save(HWND window, const std::string& name) const;

private:
    void Serve(const Show& show);
    [[nodiscard]] HWND FindWindowOfThread(const std::function<bool(HWND)>& isMeant) const;

    HANDLE m_stop;           // event
    HANDLE m_isReady;        // event: m_runner is there
    HWND m_runner = nullptr; // takes what Run carries
    DWORD m_threadId = 0;
    std::atomic<HRESULT> m_result = E_PENDING;
    HWND m_frame = nullptr;
    std::thread m_thread; // last: uses all of the above
};

/// A tree view of another thread, by the texts of its items.
///
/// Owner:  the test, by value.
/// Thread: the test's.
class TreeReader final {
public:
    explicit TreeReader(HWND tree) : m_tree(tree) {}

    [[nodiscard]] std::wstring TextOf(HTREEITEM item) const;
    /// Paths of all leaves, with backslashes between the levels, "Category\Name: value".
    [[nodiscard]] std::vector<std::wstring> Leaves() const;
    /// The feature or category of a name; null when there is none.
    [[nodiscard]] HTREEITEM Find(const std::wstring& name) const;
    /// Whether a feature is shown with a value.
    [[nodiscard]] bool Shows(const std::wstring& name, const std::wstring& value) const;
    void Select(const std::wstring& name) const;

private:
    void Collect(HTREEITEM first, const std::wstring& path, std::vector<std::wstring>& leaves) const;
    [[nodiscard]] HTREEITEM Find(const std::wstring& name, HTREEITEM first) const;
    [[nodiscard]] HTREEITEM Next(WPARAM which, HTREEITEM from) const;

    HWND m_tree;
};

/// @return  a control's text, also that of another thread's
[[nodiscard]] std::wstring TextOfControl(HWND control);

/// @return  entries of a combo box
[[nodiscard]] std::vector<std::wstring> EntriesOf(HWND list);

/// Chooses an entry of a combo box, as a user does.
void ChooseEntry(HWND list, int entry);

/// Waits until something holds.
/// @return  false when the time is over
[[nodiscard]] bool WaitUntil(const std::function<bool()>& condition,
                             std::chrono::milliseconds patience = std::chrono::seconds(20));
