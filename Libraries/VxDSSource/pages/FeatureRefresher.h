#pragma once

#include "BaseClasses/VxComPtr.h"
#include "VxBase/VxMutex.h"
#include "VxDSSource/filter/IVxDSSource.h"

#include <windows.h>

#include <commctrl.h>

#include <atomic>
#include <map>
#include <optional>
#include <string>
#include <thread>

namespace pages {

/// What may be done with a feature now.
struct FeatureAccess {
    bool isAvailable = false;
    bool isReadable = false;
    bool isWritable = false;
};

/// @return  nothing of it for a feature that the filter does not know
[[nodiscard]] FeatureAccess ReadAccess(IVxDSSource& source, const std::wstring& feature);

/// @return  empty when it cannot be read
[[nodiscard]] std::wstring ReadValue(IVxDSSource& source, const std::wstring& feature);

/// One leaf of the tree.
struct FeatureEntry {
    std::wstring name;
    std::wstring type; ///< the filter's word for it

    [[nodiscard]] bool IsCommand() const { return type == L"Command"; }
};

/// The features of the tree, kept current by a thread of its own: once a second it reads each one and posts a
/// message to the page, which then asks for the leaf's text.
///
/// Owner:  BrowserPage, by value.
/// Thread: the window thread, but Run: the refresh thread. Features are added and removed only while no
///         refresh thread runs.
class FeatureRefresher final {
public:
    /// Posted to the page; lParam is the leaf. Fixed.
    static constexpr UINT kRefreshMessage = WM_USER + 0x1000;

    FeatureRefresher() = default;
    ~FeatureRefresher() { Stop(); }
    FeatureRefresher(const FeatureRefresher&) = delete;
    FeatureRefresher& operator=(const FeatureRefresher&) = delete;

    void Clear();
    void Add(HTREEITEM leaf, FeatureEntry feature);

    /// Without memory for a thread the values stay as they are.
    /// @param source  held until Stop
    void Start(VxComPtr<IVxDSSource> source, HWND page);
    /// Waits, without limit, for the call to the filter that is under way; 50 ms where there is none.
    void Stop();
    [[nodiscard]] bool IsRunning() const { return m_thread.joinable(); }

    /// @return  borrowed until Clear; null for an item that is no feature
    [[nodiscard]] const FeatureEntry* Find(HTREEITEM leaf) const;
    /// @return  the feature's name and what was read last; nothing for an item that is no feature
    [[nodiscard]] std::optional<std::wstring> LeafText(HTREEITEM leaf);

private:
    struct Row {
        FeatureEntry feature; // never changes while the thread runs
        std::wstring value;   // guarded by m_mutex
    };

    void Run(IVxDSSource& source, HWND page);
    void Refresh(IVxDSSource& source, Row& row);
    void WaitForNextPass(ULONGLONG passStart) const;

    std::map<HTREEITEM, Row> m_rows;
    VxMutex m_mutex; // the values of all rows
    std::atomic<bool> m_isStopping = false;
    std::thread m_thread; // last: uses all of the above
};

} // namespace pages
