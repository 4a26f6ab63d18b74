#pragma once

#include "VxDSSource/pages/FittedPicture.h"
#include "VxDSSource/pages/SourcePage.h"

/// The property page "About": logo, version and legal notice. It reads nothing of the filter and changes
/// nothing.
///
/// Owner:  its references.
/// Thread: the property frame's window thread.
class AboutPage final : public pages::SourcePage {
public:
    explicit AboutPage(LPUNKNOWN outer);

    HRESULT OnActivate() override;
    HRESULT OnDeactivate() override;
    INT_PTR OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    pages::FittedPicture m_logo;
};
