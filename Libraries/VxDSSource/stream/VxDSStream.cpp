#include "VxDSSource/stream/VxDSStream.h"

#include "BaseClasses/AtComEdge.h"
#include "VxDSSource/stream/VxMediaTypes.h"

#include <new>
#include <tuple>

using namespace vxds;

namespace {

constexpr char kObjectName[] = "Video Out";
constexpr int kInitialTypePosition = 1; // RGB32

} // namespace

VxDSStream::VxDSStream(HRESULT* phr, CSource* filter, LPCWSTR pinName)
    : CSourceStream(kObjectName, phr, filter, pinName)
{
    CMediaType initial;
    if (!BuildOfferedType(kInitialTypePosition, DeliveredSize(), initial) || FAILED(StoreMediaType(initial)))
        throw std::bad_alloc();
    LoadDefault();
}

VxDSStream::~VxDSStream()
{
    // Nothing is thrown out of a destructor; what is still open then ends with the link.
    std::ignore = AtComEdge([this] {
        EndWorkerInDestructor();
        CloseConnection();
        return S_OK;
    });
}

STDMETHODIMP VxDSStream::NonDelegatingQueryInterface(REFIID riid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (riid == IID_IAMStreamConfig)
        return GetInterface(static_cast<IAMStreamConfig*>(this), object);
    if (riid == IID_IKsPropertySet)
        return GetInterface(static_cast<IKsPropertySet*>(this), object);
    return CSourceStream::NonDelegatingQueryInterface(riid, object);
}

void VxDSStream::SetDiagnosticsEnabled(bool isEnabled)
{
    const AcquisitionMutex::Lock lock(m_acquisitionMutex);
    if (m_settings.Flag(Setting::DiagnosticsEnabled) && !isEnabled)
        m_statistics.RequestClear(); // of what the diagnostics drew
    m_settings.Store(Setting::DiagnosticsEnabled, isEnabled ? 1U : 0U);
}

HRESULT VxDSStream::SetOutputPixelType(UINT type)
{
    if (!m_settings.Set(Setting::OutputPixelType, static_cast<INT>(type))) // the same 32 bits
        return E_INVALIDARG;
    CloseConnection(); // even when the type is the same: the client connects again
    return S_OK;
}

HRESULT VxDSStream::SetOutputSize(INT widthPx, INT heightPx)
{
    if (!m_settings.SetOutputSize(widthPx, heightPx))
        return E_FAIL;
    UpdateOutputSize();
    return S_OK;
}

HRESULT VxDSStream::SetCameraSize(const char* feature, INT pixels)
{
    if (!m_link.WriteSize(feature, pixels))
        return E_FAIL;
    UpdateOutputSize();
    return S_OK;
}
