#pragma once

#include <windows.h>

#include <commctrl.h>

#include <cstddef>
#include <string>
#include <vector>

namespace pages {

/// The tree view with the features under their categories.
///
/// Owner:  BrowserPage, by value.
/// Thread: the window thread.
class FeatureTree final {
public:
    // Fixed: what is read of an item's text at most.
    static constexpr std::size_t kLongestText = 1024;

    /// @param tree  borrowed for as long as the page's window lives
    void Attach(HWND tree) { m_tree = tree; }

    [[nodiscard]] bool IsEmpty() const { return TreeView_GetRoot(m_tree) == nullptr; }
    void Clear();

    /// Adds a feature under its category path, whose missing categories are made.
    /// @param path  parts separated by backslashes; parts that are "root" do not count
    /// @return  the leaf; null when the system has no memory for it
    HTREEITEM Insert(const std::wstring& path, const std::wstring& feature);

    /// Opens every category and shows the first.
    void Expand();

    [[nodiscard]] HTREEITEM Selected() const { return TreeView_GetSelection(m_tree); }

    /// Sets an item's text, unless it has it already: an unchanged one is not drawn again.
    void SetText(HTREEITEM item, std::wstring text);

    [[nodiscard]] std::wstring TextOf(HTREEITEM item) const;

private:
    [[nodiscard]] HTREEITEM FindChild(HTREEITEM parent, const std::wstring& text) const;
    HTREEITEM Append(HTREEITEM parent, const std::wstring& text);

    HWND m_tree = nullptr;
    std::vector<HTREEITEM> m_categories; // in the order in which they were made
};

} // namespace pages
