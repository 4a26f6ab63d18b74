#pragma once

#include <windows.h>

#include <array>
#include <cstddef>

namespace vxds {

/// What GDI+ does with the bits that a bitmap is made of.
enum class BitsHandling {
    Unknown,
    Wrapped, ///< it draws on them
    Copied,  ///< it draws on a copy
};

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

    /// What was seen of bitmaps of this depth, in bytes a pixel. Streaming thread only, as the next.
    [[nodiscard]] BitsHandling HandlingOf(std::size_t pixelBytes) const
    {
        return pixelBytes < m_handling.size() ? m_handling[pixelBytes] : BitsHandling::Unknown;
    }
    void NoteHandling(std::size_t pixelBytes, BitsHandling handling)
    {
        if (pixelBytes < m_handling.size())
            m_handling[pixelBytes] = handling;
    }

private:
    static constexpr std::size_t kMostPixelBytes = 4; // of bitmaps that frames can be

    std::array<BitsHandling, kMostPixelBytes + 1> m_handling{}; // by bytes a pixel
    ULONG_PTR m_token = 0;                                      // 0: not started
};

} // namespace vxds
