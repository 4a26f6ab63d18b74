#pragma once

#include <windows.h>

namespace vxds {

/// Keeps GDI+ started.
///
/// Where it does not start, overlays draw nothing.
///
/// Owner:  VxDSStream, by value: every overlay is drawn while the pin lives.
/// Thread: made and destroyed outside of DllMain (GDI+ may have a thread of its own).
class GdiPlusSession {
public:
    GdiPlusSession();
    ~GdiPlusSession();
    GdiPlusSession(const GdiPlusSession&) = delete;
    GdiPlusSession& operator=(const GdiPlusSession&) = delete;

    /// Whether GDI+ is known to draw on copies of the bits that it is given. Streaming thread only.
    [[nodiscard]] bool CopiesBits() const { return m_copiesBits; }
    void NoteThatBitsAreCopied() { m_copiesBits = true; }

private:
    bool m_copiesBits = false;
    ULONG_PTR m_token = 0; // 0: not started
};

} // namespace vxds
