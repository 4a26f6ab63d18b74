#pragma once

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
    INT_PTR OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;
};
