#pragma once

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/CPersistStream.h"
#include "BaseClasses/CSource.h"
#include "VxDSSource/filter/IVxDSSource.h"

#include <ocidl.h>

#include <cstddef>

class VxDSStream;

namespace vxds {
enum class Setting : std::size_t;
}

/// The filter "Vexa DirectShow Source": identity, interfaces, persistence. Everything with state is in its
/// one pin, to which the methods of IVxDSSource hand their calls.
///
/// Owner:  its references.
/// Thread: any; the filter itself takes no lock in the methods of IVxDSSource and IAMDroppedFrames.
class VxDSSource final : public CSource,
                         public ISpecifyPropertyPages,
                         public CPersistStream,
                         public IVxDSSource,
                         public IAMDroppedFrames {
public:
    DECLARE_IUNKNOWN

    /// For the class table.
    /// @param phr  the failure when an exception ended the construction; else untouched
    /// @return  null when there is no memory
    static CUnknown* CALLBACK CreateInstance(LPUNKNOWN outer, HRESULT* phr);

    VxDSSource(LPUNKNOWN outer, HRESULT* phr);
    ~VxDSSource() override;

    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;

    // IPersist, of IBaseFilter and of IPersistStream
    STDMETHODIMP GetClassID(CLSID* clsid) override;

    // ISpecifyPropertyPages
    /// The classes of the three pages, in the order of their tabs. Naming them asks nothing of a camera.
    STDMETHODIMP GetPages(CAUUID* pages) override;

    // CPersistStream (VxDSSourcePersistence.cpp)
    int SizeMax() override;
    HRESULT WriteToStream(IStream* stream) override;
    HRESULT ReadFromStream(IStream* stream) override;

    // IVxDSSource (VxDSSourceControl.cpp)
    STDMETHODIMP GetRole(UINT* role) override;
    STDMETHODIMP SetRole(UINT role) override;
    STDMETHODIMP GetUnicastPort(UINT* port) override;
    STDMETHODIMP SetUnicastPort(UINT port) override;
    STDMETHODIMP GetMulticastAddress(BSTR* address) override;
    STDMETHODIMP SetMulticastAddress(BSTR address) override;
    STDMETHODIMP GetMulticastPort(UINT* port) override;
    STDMETHODIMP SetMulticastPort(UINT port) override;
    STDMETHODIMP GetDiagnosticsEnabled(BOOL* enabled) override;
    STDMETHODIMP SetDiagnosticsEnabled(BOOL enabled) override;
    STDMETHODIMP GetDeviceId(BSTR* deviceId) override;
    STDMETHODIMP SetDeviceId(BSTR deviceId) override;
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP Connect() override;
    STDMETHODIMP GetSourceCount(UINT* count) override;
    STDMETHODIMP GetSourceName(UINT index, BSTR* name) override;
    STDMETHODIMP GetParamSource(BSTR* source) override;
    STDMETHODIMP SetParamSource(BSTR source) override;
    STDMETHODIMP GetParamChannel(UINT* channel) override;
    STDMETHODIMP SetParamChannel(UINT channel) override;
    STDMETHODIMP GetBufferCount(UINT* count) override;
    STDMETHODIMP SetBufferCount(UINT count) override;
    STDMETHODIMP GetDefaultBufferSize(UINT* bytes) override;
    STDMETHODIMP SetDefaultBufferSize(UINT bytes) override;
    STDMETHODIMP GetDropThreshold(UINT* threshold) override;
    STDMETHODIMP SetDropThreshold(UINT threshold) override;
    STDMETHODIMP GetWidth(UINT* widthPx) override;
    STDMETHODIMP SetWidth(INT widthPx) override;
    STDMETHODIMP GetHeight(UINT* heightPx) override;
    STDMETHODIMP SetHeight(INT heightPx) override;
    STDMETHODIMP GetParameterArray(UINT* selector) override;
    STDMETHODIMP SetParameterArray(UINT selector) override;
    STDMETHODIMP IsParameterArrayAvailable(BOOL* available) override;
    STDMETHODIMP GetParameterCount(UINT* count) override;
    STDMETHODIMP GetParameterName(UINT index, BSTR* name) override;
    STDMETHODIMP GetParameterCategory(BSTR name, BSTR* category) override;
    STDMETHODIMP GetParameterValue(BSTR name, BSTR* value) override;
    STDMETHODIMP SetParameterValue(BSTR name, BSTR value, BSTR* error) override;
    STDMETHODIMP GetParameterType(BSTR name, BSTR* type) override;
    STDMETHODIMP GetParameterAccess(BSTR name, BOOL* available, BOOL* readable, BOOL* writable) override;
    STDMETHODIMP ExecuteCommand(BSTR name, BSTR* error) override;
    STDMETHODIMP GetEnumEntryCount(BSTR name, UINT* count) override;
    STDMETHODIMP GetEnumEntryName(BSTR name, UINT index, BSTR* entry) override;
    STDMETHODIMP GetParameterVisibility(BSTR name, UINT* visibility) override;
    STDMETHODIMP GetOutputPixelType(UINT* type) override;
    STDMETHODIMP SetOutputPixelType(UINT type) override;
    STDMETHODIMP GetKernelSize(UINT* size) override;
    STDMETHODIMP SetKernelSize(INT size) override;
    STDMETHODIMP GetZoomValue(UINT* zoom) override;
    STDMETHODIMP SetZoomValue(INT zoom) override;
    STDMETHODIMP GetOutputSize(UINT* widthPx, UINT* heightPx) override;
    STDMETHODIMP SetOutputSize(INT widthPx, INT heightPx) override;
    STDMETHODIMP SaveDefault() override;
    STDMETHODIMP ClearDefault() override;
    STDMETHODIMP GetDefaultSummary(BSTR* summary) override;

    // IAMDroppedFrames (VxDSSourceDroppedFrames.cpp)
    STDMETHODIMP GetNumDropped(long* dropped) override;
    STDMETHODIMP GetNumNotDropped(long* notDropped) override;
    STDMETHODIMP GetDroppedInfo(long size, long* numbers, long* copied) override;
    STDMETHODIMP GetAverageFrameSize(long* bytes) override;

private:
    /// The one pin there is, for as long as the filter lives: no lock is needed to find it. Null when there
    /// was no memory for it.
    [[nodiscard]] VxDSStream* Pin() const;

    /// Calls the pin; nothing is thrown out, and nothing is allocated on the way.
    /// @return  what the call returns; E_OUTOFMEMORY, also when there was no memory for a pin; E_FAIL for
    ///          every other exception, because E_UNEXPECTED tells that features are not there
    template <typename Call>
    [[nodiscard]] HRESULT OnPin(Call&& call)
    {
        return AtComEdge(
            [&]() -> HRESULT {
                VxDSStream* const pin = Pin();
                return pin != nullptr ? call(*pin) : E_OUTOFMEMORY;
            },
            E_FAIL);
    }

    [[nodiscard]] HRESULT ReadNumber(vxds::Setting setting, UINT* value);
    [[nodiscard]] HRESULT WriteNumber(vxds::Setting setting, UINT value);
    [[nodiscard]] HRESULT ReadText(vxds::Setting setting, BSTR* value);
    [[nodiscard]] HRESULT WriteText(vxds::Setting setting, BSTR value);
};
