#include "VxDSSource/pages/FeatureTree.h"

#include <sstream>

namespace pages {

void FeatureTree::Clear()
{
    m_categories.clear();
    TreeView_DeleteAllItems(m_tree);
}

HTREEITEM FeatureTree::Insert(const std::wstring& path, const std::wstring& feature)
{
    HTREEITEM node = TVI_ROOT;
    std::wistringstream parts(path);
    for (std::wstring part; std::getline(parts, part, L'\\');) {
        if (part == L"root")
            continue;
        HTREEITEM child = FindChild(node, part);
        if (child == nullptr) {
            child = Append(node, part);
            m_categories.push_back(child);
        }
        node = child;
    }
    return Append(node, feature);
}

void FeatureTree::Expand()
{
    for (HTREEITEM const category : m_categories)
        TreeView_Expand(m_tree, category, TVE_EXPAND);
    if (!m_categories.empty())
        TreeView_EnsureVisible(m_tree, m_categories.front());
}

void FeatureTree::SetText(HTREEITEM item, std::wstring text)
{
    if (text.size() > kLongestText)
        text.resize(kLongestText); // more is not read back
    if (text == TextOf(item))
        return;
    TVITEMW change{};
    change.mask = TVIF_TEXT;
    change.hItem = item;
    change.pszText = text.data();
    ::SendMessageW(m_tree, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&change));
}

std::wstring FeatureTree::TextOf(HTREEITEM item) const
{
    std::wstring text(kLongestText + 1, L'\0'); // with the terminator
    TVITEMW question{};
    question.mask = TVIF_TEXT;
    question.hItem = item;
    question.pszText = text.data();
    question.cchTextMax = static_cast<int>(text.size()); // 1025
    if (!::SendMessageW(m_tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&question)))
        return {};
    return question.pszText; // the control may point to a text of its own
}

HTREEITEM FeatureTree::FindChild(HTREEITEM parent, const std::wstring& text) const
{
    HTREEITEM child = parent == TVI_ROOT ? TreeView_GetRoot(m_tree) : TreeView_GetChild(m_tree, parent);
    while (child != nullptr && TextOf(child) != text)
        child = TreeView_GetNextSibling(m_tree, child);
    return child;
}

HTREEITEM FeatureTree::Append(HTREEITEM parent, const std::wstring& text)
{
    std::wstring copy = text; // the control's structure is not constant
    TVINSERTSTRUCTW item{};
    item.hParent = parent;
    item.hInsertAfter = TVI_LAST;
    item.item.mask = TVIF_TEXT;
    item.item.pszText = copy.data();
    // NOLINTNEXTLINE(performance-no-int-to-ptr): messages carry pointers as numbers
    return reinterpret_cast<HTREEITEM>(
        ::SendMessageW(m_tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
}

} // namespace pages
