#include "VxDSSource/filter/VxDSSource.h"

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/CAutoLock.h"
#include "VxDSSource/filter/Identifiers.h"
#include "VxDSSource/stream/VxDSStream.h"

#include <new>

namespace {

constexpr char kObjectName[] = "Vexa DirectShow Source";
constexpr wchar_t kPinName[] = L"Output";

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
    // The pin adds itself, and puts an array of its own in place of this one before it is stored again.
    m_paStreams[0] = new (std::nothrow) VxDSStream(phr, this, kPinName);
}

VxDSSource::~VxDSSource() = default;

STDMETHODIMP VxDSSource::NonDelegatingQueryInterface(REFIID riid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (riid == IID_IVxDSSource)
        return GetInterface(static_cast<IVxDSSource*>(this), object);
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

HRESULT VxDSSource::OnPin(const std::function<HRESULT(VxDSStream&)>& call)
{
    return AtComEdge([&] {
        // The one pin there is, for as long as the filter lives: no lock is needed to find it.
        auto* const pin = static_cast<VxDSStream*>(m_paStreams[0]);
        return pin != nullptr ? call(*pin) : E_OUTOFMEMORY;
    });
}
