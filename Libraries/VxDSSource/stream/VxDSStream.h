#pragma once

#include "BaseClasses/CSource.h"
#include "BaseClasses/CSourceStream.h"
#include "BaseClasses/VxComPtr.h"
#include "VxBase/VxString.h"
#include "VxDSSource/filter/DefaultSettings.h"
#include "VxDSSource/filter/SettingsRecord.h"
#include "VxDSSource/overlay/GdiPlusSession.h"
#include "VxDSSource/overlay/StatusSummary.h"
#include "VxDSSource/stream/AcquisitionMutex.h"
#include "VxDSSource/stream/BufferChooser.h"
#include "VxDSSource/stream/CameraLink.h"
#include "VxDSSource/stream/FrameFormat.h"
#include "VxDSSource/stream/FrameStatistics.h"
#include "VxDSSource/stream/PictureDrawer.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

class VxGenParameter;
class VxGenParameterArray;

/// What a stored configuration carries.
enum class VxConfigurationForm {
    SettingsOnly,
    Full, ///< the settings, and the configuration of the camera and the stream
};

/// The filter's output pin: settings, link to the camera, media types and frames.
///
/// Besides construction and simple settings its parts lie in five files: connection, formats, frames, and
/// what the control interface asks for (features, persistence). Lock order: acquisition mutex, filter's state
/// lock, camera link's lock, format lock.
///
/// Owner:  the filter (CSource).
/// Thread: FillBuffer and the thread hooks on the streaming thread; everything else on any thread.
class VxDSStream final : public CSourceStream, public IAMStreamConfig, public IKsPropertySet {
public:
    DECLARE_IUNKNOWN

    /// Takes the user's saved default, if there is one, and connects to the camera it names.
    VxDSStream(HRESULT* phr, CSource* filter, LPCWSTR pinName);
    ~VxDSStream() override;

    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;

    // --- Connection (VxDSStreamConnection.cpp)

    /// Brings device, stream and pipeline in line with the settings; closes and opens again only what
    /// changed.
    void ApplyConnection();
    /// Stops acquisition and releases pipeline, stream and device.
    void CloseConnection();
    /// Follows the camera's size and the output size, and renegotiates the media type if the delivered size
    /// changed.
    void UpdateOutputSize();

    // --- Settings and what acts at once (VxDSStream.cpp)

    [[nodiscard]] vxds::SettingsRecord& Settings() { return m_settings; }
    [[nodiscard]] const vxds::FrameStatistics& Statistics() const { return m_statistics; }

    void SetDiagnosticsEnabled(bool isEnabled);
    /// @return  E_INVALIDARG for anything but 0 and 1
    HRESULT SetOutputPixelType(UINT type);
    /// @return  E_FAIL unless both are at least 1
    HRESULT SetOutputSize(INT widthPx, INT heightPx);
    /// Writes the camera's "Width" or "Height". @return  E_FAIL without a camera or when it refuses
    HRESULT SetCameraSize(const char* feature, INT pixels);

    // --- Features by name (VxDSStreamFeatures.cpp); results as IVxDSSource has them

    [[nodiscard]] UINT SourceCount();
    HRESULT GetSourceName(UINT index, std::wstring& name);
    [[nodiscard]] UINT FeatureSelector() const { return m_featureSelector; }
    HRESULT SetFeatureSelector(UINT selector);
    [[nodiscard]] bool AreFeaturesAvailable();
    HRESULT GetFeatureCount(UINT& count);
    HRESULT GetFeatureName(UINT index, std::wstring& name);
    HRESULT GetFeatureCategory(const std::wstring& name, std::wstring& category);
    HRESULT GetFeatureValue(const std::wstring& name, std::wstring& value);
    HRESULT SetFeatureValue(const std::wstring& name, const std::wstring& value, std::wstring& error);
    HRESULT GetFeatureType(const std::wstring& name, std::wstring& type);
    HRESULT GetFeatureAccess(const std::wstring& name, bool& isAvailable, bool& isReadable, bool& isWritable);
    HRESULT ExecuteFeature(const std::wstring& name, std::wstring& error);
    HRESULT GetEnumEntryCount(const std::wstring& name, UINT& count);
    HRESULT GetEnumEntryName(const std::wstring& name, UINT index, std::wstring& entry);
    HRESULT GetFeatureVisibility(const std::wstring& name, UINT& visibility);

    // --- Persistence (VxDSStreamPersistence.cpp)

    [[nodiscard]] VxString StoreConfiguration(VxConfigurationForm form);
    /// Takes what the text holds, connects, and in the full form restores camera and stream. Text that is no
    /// configuration holds nothing.
    void RestoreConfiguration(const VxString& text, VxConfigurationForm form);
    /// @return  false when the registry could not be written
    [[nodiscard]] bool SaveDefault();
    [[nodiscard]] bool ClearDefault();
    [[nodiscard]] std::wstring DefaultSummary() const;

    // --- Media types (VxDSStreamFormats.cpp)

    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT GetMediaType(CMediaType* type) override;
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* properties) override;
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override;

    // IAMStreamConfig
    STDMETHODIMP SetFormat(AM_MEDIA_TYPE* type) override;
    STDMETHODIMP GetFormat(AM_MEDIA_TYPE** type) override;
    STDMETHODIMP GetNumberOfCapabilities(int* count, int* size) override;
    STDMETHODIMP GetStreamCaps(int index, AM_MEDIA_TYPE** type, BYTE* caps) override;

    // IKsPropertySet
    STDMETHODIMP Set(REFGUID set, DWORD id, LPVOID instance, DWORD instanceBytes, LPVOID data,
                     DWORD dataBytes) override;
    STDMETHODIMP Get(REFGUID set, DWORD id, LPVOID instance, DWORD instanceBytes, LPVOID data,
                     DWORD dataBytes, DWORD* returnedBytes) override;
    STDMETHODIMP QuerySupported(REFGUID set, DWORD id, DWORD* support) override;

    // --- Frames (VxDSStreamFrames.cpp)

    HRESULT OnThreadCreate() override;
    HRESULT OnThreadStartPlay() override;
    HRESULT OnThreadDestroy() override;
    /// Always S_OK: without anything better the frame is all zero.
    HRESULT FillBuffer(IMediaSample* sample) override;

private:
    void Reconnect();
    void BeginReconnect();
    void EndReconnect();
    void AbandonReconnect();
    void StopAndClose();
    void StartAcquisition();
    void StopAcquisition();
    void ReadCameraSize();
    void Renegotiate();

    [[nodiscard]] vxds::PictureSize DeliveredSize() const;
    [[nodiscard]] HRESULT StoreMediaType(const AM_MEDIA_TYPE& type);
    [[nodiscard]] CMediaType CopyOfMediaType();
    [[nodiscard]] vxds::FrameFormat CurrentFrameFormat();
    [[nodiscard]] VxComPtr<IPin> ConnectedPeer();

    void AdoptFormatOf(IMediaSample& sample);
    [[nodiscard]] vxds::HeldBuffer TakeBuffer();
    [[nodiscard]] vxds::FrameTarget TargetFor(const VxBuffer& camera, std::span<std::uint8_t> memory);
    void Stamp(IMediaSample& sample);
    [[nodiscard]] bool ProduceFrame(IMediaSample& sample, std::span<std::uint8_t> memory);
    [[nodiscard]] vxds::SummaryValues ValuesForSummary(bool canAskLink);
    void ShowSummary(std::span<std::uint8_t> memory, bool hasAcquisitionMutex);

    [[nodiscard]] HRESULT OnFeatures(const std::function<HRESULT(VxGenParameterArray&)>& action);
    [[nodiscard]] HRESULT OnFeature(const std::wstring& name,
                                    const std::function<HRESULT(VxGenParameter&)>& action);

    void LoadDefault();
    void SetDefaultSummary(std::wstring summary);

    vxds::AcquisitionMutex m_acquisitionMutex;
    vxds::GdiPlusSession m_gdiPlus;
    vxds::SettingsRecord m_settings;
    vxds::DefaultSettings m_defaults;
    vxds::CameraLink m_link;
    bool m_acquisitionRunning = false; // guarded by the link's lock; true while the streaming thread lives
    int m_reconnects = 0;              // guarded by the link's lock; under way: the outermost one starts
    vxds::PictureSize m_source;        // guarded by the acquisition mutex; 0 x 0 until a camera was read
    vxds::ZoomTable m_zoomTable;       // guarded by the acquisition mutex
    CCritSec m_formatLock;             // guards m_mt and m_frameFormat; nothing is called while it is held
    vxds::FrameFormat m_frameFormat;   // of m_mt
    vxds::FrameStatistics m_statistics;
    vxds::PictureDrawer m_drawer{m_statistics};
    VxComPtr<IReferenceClock> m_referenceClock; // streaming thread only; empty when the graph has none
    std::atomic<UINT> m_featureSelector = 0;    // which features the methods by name work on
    mutable VxMutex m_summaryMutex;
    std::wstring m_defaultSummary VX_GUARDED_BY(m_summaryMutex);
};
