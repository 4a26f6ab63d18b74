#include "VxDSSource/overlay/GdiPlusSession.h"

#include <objidl.h>

#include <gdiplus.h>

namespace vxds {

namespace {

constexpr UINT32 kGdiPlusVersion = 1; // fixed

} // namespace

GdiPlusSession::GdiPlusSession()
{
    Gdiplus::GdiplusStartupInput input;
    input.GdiplusVersion = kGdiPlusVersion;
    input.DebugEventCallback = nullptr;
    input.SuppressBackgroundThread = FALSE;
    input.SuppressExternalCodecs = FALSE;
    if (Gdiplus::GdiplusStartup(&m_token, &input, nullptr) != Gdiplus::Ok)
        m_token = 0;
}

GdiPlusSession::~GdiPlusSession()
{
    if (m_token != 0)
        Gdiplus::GdiplusShutdown(m_token);
}

} // namespace vxds
