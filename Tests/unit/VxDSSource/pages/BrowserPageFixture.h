#pragma once

#include "VxDSSource/pages/BrowserPage.h"

#include "support/directshow/Gate.h"
#include "unit/VxDSSource/pages/PageFixture.h"
#include "unit/VxDSSource/pages/ScriptedSource.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// The page with a control interface that has the features of the test.
class BrowserPageFixture : public PageFixture {
protected:
    BrowserPageFixture()
    {
        source.features[0] = {{L"MACAddress", L"root\\Camera", L"String", L"02-00-00-00-00-01"}};
        source.features[1] = {{L"Width", L"root\\ImageFormatControl", L"Integer", L"640"}};
        source.features[2] = {{L"BlockCount", L"root\\Statistics", L"Integer", L"5"}};
    }

    void Show()
    {
        m_page.emplace(NewPage<BrowserPage>());
        ASSERT_EQ(m_page->Connect(source), S_OK);
        m_page->Show();
    }
    OpenPage& Page() { return *m_page; }
    HWND Tree() { return Page().Item(IDC_FEATURES); }

    /// The tree in lines, indented by a blank for each level.
    std::vector<std::wstring> Lines()
    {
        std::vector<std::wstring> lines;
        Describe(TreeView_GetRoot(Tree()), 0, lines);
        return lines;
    }

    /// An item by the beginning of its text; null when there is none.
    HTREEITEM Find(const std::wstring& beginning, HTREEITEM first)
    {
        for (HTREEITEM item = first; item != nullptr; item = TreeView_GetNextSibling(Tree(), item)) {
            if (TextOf(item).starts_with(beginning))
                return item;
            if (HTREEITEM const found = Find(beginning, TreeView_GetChild(Tree(), item)))
                return found;
        }
        return nullptr;
    }
    HTREEITEM Find(const std::wstring& beginning)
    {
        HTREEITEM const item = Find(beginning, TreeView_GetRoot(Tree()));
        EXPECT_NE(item, nullptr);
        return item;
    }
    std::wstring TextOf(HTREEITEM item)
    {
        std::wstring text(2000, L'\0');
        TVITEMW question{};
        question.mask = TVIF_TEXT;
        question.hItem = item;
        question.pszText = text.data();
        question.cchTextMax = 2000;
        ::SendMessageW(Tree(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&question));
        return question.pszText;
    }
    void SelectItem(const std::wstring& beginning)
    {
        TreeView_SelectItem(Tree(), Find(beginning));
        HandleMessages();
    }
    void ChooseSet(int set)
    {
        Page().Select(IDC_FEATURE_SET, set);
        HandleMessages();
    }

    /// Handles messages until a leaf has a text.
    bool WaitForText(const std::wstring& text)
    {
        return WaitUntil([&] { return Find(text, TreeView_GetRoot(Tree())) != nullptr; });
    }
    static bool WaitUntil(const std::function<bool()>& condition)
    {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            HandleMessages();
            ::Sleep(5);
        }
        return true;
    }

    ScriptedSource source;

private:
    void Describe(HTREEITEM first, std::size_t level, std::vector<std::wstring>& lines)
    {
        for (HTREEITEM item = first; item != nullptr; item = TreeView_GetNextSibling(Tree(), item)) {
            const std::wstring text = TextOf(item);
            lines.push_back(std::wstring(level, L' ') + text.substr(0, text.find(L':'))); // without the value
            Describe(TreeView_GetChild(Tree(), item), level + 1, lines);
        }
    }

    std::optional<OpenPage> m_page;
};
