#pragma once

#include "VxDSSource/pages/FeatureRefresher.h"
#include "VxDSSource/pages/FeatureTree.h"
#include "VxDSSource/pages/SourcePage.h"

/// The property page "Browser": the features of the link, the camera or the stream as a tree with their
/// present values. What is set takes effect at once; Apply does nothing.
///
/// Owner:  its references.
/// Thread: the property frame's window thread; values are read by the refresh thread of FeatureRefresher,
///         which runs from OnActivate to OnDeactivate.
class BrowserPage final : public pages::SourcePage {
public:
    explicit BrowserPage(LPUNKNOWN outer);

    HRESULT OnDisconnect() override;
    HRESULT OnActivate() override;
    HRESULT OnDeactivate() override;
    INT_PTR OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    [[nodiscard]] bool OnCommand(int control, int notification);
    void OnRefresh(HTREEITEM leaf);
    void OnSelectionChanged();

    void BuildTree();
    void InsertFeatures();
    void InsertFeature(const std::wstring& name);

    void FillValueList();
    void SetValue();
    void ExecuteCommand();

    void ShowNoFeature();
    void ShowFailure(const std::wstring& reason);
    /// @return  name of the selected feature; empty when none is
    [[nodiscard]] std::wstring SelectedFeature() const;

    pages::FeatureTree m_tree;
    pages::FeatureRefresher m_refresher;
};
