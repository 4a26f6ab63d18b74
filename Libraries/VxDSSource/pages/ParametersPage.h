#pragma once

#include "VxDSSource/pages/DeviceList.h"
#include "VxDSSource/pages/ParameterValues.h"
#include "VxDSSource/pages/SourcePage.h"

/// The property page "Parameters": which camera, and how the filter uses it. The filter changes at Apply
/// only.
///
/// Owner:  its references.
/// Thread: the property frame's window thread; showing the values holds it for up to 250 ms (the search for
///         cameras), Apply for as long as a connect takes.
class ParametersPage final : public pages::SourcePage {
public:
    explicit ParametersPage(LPUNKNOWN outer);

    HRESULT OnConnect(IUnknown* object) override;
    HRESULT OnActivate() override;
    HRESULT OnDeactivate() override;
    HRESULT OnApplyChanges() override;
    INT_PTR OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void OnCommand(int control, int notification);
    void LoadValues();

    // From the working copy into the controls.
    void ShowValues();
    void ShowNumbers();
    void ShowLists();
    void EnableControls();

    // From the controls into the working copy.
    void ReadControls();
    void ReadNumbers();
    void ReadLists();

    pages::ParameterValues m_values;
    pages::DeviceList m_devices;
};
