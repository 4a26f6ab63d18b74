#include "VxDSSource/pages/CommonControlsScope.h"

#include "BaseClasses/ModuleGlobals.h"

namespace pages {

namespace {

// Fixed by the system: where a library keeps its manifest.
constexpr WORD kManifestId = 2;

HANDLE ContextOfThisModule()
{
    ACTCTXW context{};
    context.cbSize = sizeof(context);
    context.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
    context.hModule = g_hInst;
    context.lpResourceName = MAKEINTRESOURCEW(kManifestId);
    return ::CreateActCtxW(&context);
}

} // namespace

CommonControlsScope::CommonControlsScope() : m_context(ContextOfThisModule())
{
    if (m_context != INVALID_HANDLE_VALUE && !::ActivateActCtx(m_context, &m_cookie))
        m_cookie = 0;
}

CommonControlsScope::~CommonControlsScope()
{
    if (m_cookie != 0)
        ::DeactivateActCtx(0, m_cookie);
    if (m_context != INVALID_HANDLE_VALUE)
        ::ReleaseActCtx(m_context);
}

} // namespace pages
