#include "VxDSSource/filter/VxDSSource.h"

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/CAutoLock.h"
#include "VxDSSource/filter/Identifiers.h"
#include "VxDSSource/stream/VxDSStream.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>

namespace {

constexpr char kObjectName[] = "Vexa DirectShow Source";
constexpr wchar_t kPinName[] = L"Output";
constexpr std::array<GUID, 3> kPages = {CLSID_ParametersPage, CLSID_BrowserPage, CLSID_AboutPage};

} // namespace

CUnknown* CALLBACK VxDSSource::CreateInstance(LPUNKNOWN outer, HRESULT* phr)
{
    CUnknown* filter = nullptr;
    const HRESULT result = AtComEdge([&] {
        filter = new (std::nothrow) VxDSSource(outer, phr);
        return S_OK;
    });
    if (FAILED(result) && phr != nullptr)
        *phr = result;
    return filter;
}

VxDSSource::VxDSSource(LPUNKNOWN outer, HRESULT* phr)
    : CSource(kObjectName, outer, CLSID_VxDSSource), CPersistStream(outer, phr)
{
    const CAutoLock lock(&m_cStateLock);
    m_paStreams = new CSourceStream* [1] {};
    std::unique_ptr<VxDSStream> pin(new (std::nothrow) VxDSStream(phr, this, kPinName));
    // The pin adds itself, with an array of its own in place of this one; without memory for that it is not
    // among the filter's pins, and phr says so.
    if (GetPinCount() == 1)
        m_paStreams[0] = pin.release();
}

VxDSSource::~VxDSSource() = default;

STDMETHODIMP VxDSSource::NonDelegatingQueryInterface(REFIID riid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (riid == IID_IVxDSSource)
        return GetInterface(static_cast<IVxDSSource*>(this), object);
    if (riid == IID_ISpecifyPropertyPages)
        return GetInterface(static_cast<ISpecifyPropertyPages*>(this), object);
    if (riid == IID_IPersistStream)
        return GetInterface(static_cast<IPersistStream*>(this), object);
    if (riid == IID_IAMDroppedFrames)
        return GetInterface(static_cast<IAMDroppedFrames*>(this), object);
    return CSource::NonDelegatingQueryInterface(riid, object);
}

STDMETHODIMP VxDSSource::GetClassID(CLSID* clsid)
{
    if (clsid == nullptr)
        return E_POINTER;
    *clsid = CLSID_VxDSSource;
    return S_OK;
}

STDMETHODIMP VxDSSource::GetPages(CAUUID* pages)
{
    if (pages == nullptr)
        return E_POINTER;
    auto* const ids = static_cast<GUID*>(::CoTaskMemAlloc(sizeof(kPages)));
    if (ids == nullptr)
        return E_OUTOFMEMORY;
    std::ranges::copy(kPages, ids);
    pages->cElems = static_cast<ULONG>(kPages.size()); // three
    pages->pElems = ids;
    return S_OK;
}

VxDSStream* VxDSSource::Pin() const
{
    return static_cast<VxDSStream*>(m_paStreams[0]);
}
