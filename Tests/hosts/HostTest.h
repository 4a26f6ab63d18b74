#pragma once

#include "VxSimulator/VxSimulatedCamera.h"
#include "VxSimulator/picture/PictureView.h"

#include "BaseClasses/VxComPtr.h"
#include "hosts/HostSink.h"
#include "support/directshow/ComApartment.h"
#include "support/registry/PrivateUserRegistry.h"

#include <dshow.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// An entry of a program's list of cameras.
struct ListedCamera {
    std::wstring friendlyName;
    VxComPtr<IBaseFilter> filter; ///< bound, as programs do it to list the formats
};

/// The camera of an application, and the family of formats that its user saved.
struct HostCamera {
    const char* pixelFormat = "BGR8";
    UINT outputPixelType = 0; ///< 0: RGB; 1: YUV 4:2:2, of a camera that has it
};

/// An application that knows the filter only as the system lists it: registered, with a camera of this user's
/// saved default behind it. A test plays the order of calls of one application.
///
/// Owner:  the test program.
/// Thread: the test's.
class HostTest : public testing::Test {
protected:
    // Chosen: small, so that many frames are compared; rows of RGB24 are whole 32-bit words.
    static constexpr std::uint32_t kWidthPx = 320;
    static constexpr std::uint32_t kHeightPx = 240;

    explicit HostTest(HostCamera camera = {});
    ~HostTest() override;

    /// Reads the list of cameras and binds each, as every program does.
    [[nodiscard]] std::vector<ListedCamera> ListCameras();

    /// The camera with the filter's name; a failure when there is not exactly one.
    [[nodiscard]] VxComPtr<IBaseFilter> ChooseCamera();

    /// Makes the graph and puts both filters into it.
    void BuildGraph(const VxComPtr<IBaseFilter>& camera);

    /// The first output pin that says it is for capturing.
    [[nodiscard]] VxComPtr<IPin> CapturePin(IBaseFilter& camera);

    /// The type that a pin would have, and the entry of its list of capabilities.
    [[nodiscard]] CMediaType Format(IAMStreamConfig& config);
    [[nodiscard]] CMediaType Capability(IAMStreamConfig& config, VIDEO_STREAM_CONFIG_CAPS& caps);

    void Run();
    void Pause();
    /// Stops; nothing may arrive afterwards.
    void StopAndSeeNothingMore();

    /// Every frame that came is a picture of the camera, whole and of the connection's size: pixel for pixel
    /// what the camera sent, upright.
    void ExpectPictures(std::size_t atLeast);

    /// The same of one picture as it lies in memory: RGB24 or RGB32 of a camera that sends BGR8.
    static void ExpectPicture(std::span<const std::byte> bytes, const BITMAPINFOHEADER& header);
    /// The same of a part of a bitmap, which is as large as the camera's picture.
    static void ExpectPicture(const simulator::PictureView& picture);

    static constexpr const wchar_t* kCameraName = L"Booth"; ///< given by its user
    VxSimulatedCamera simulated;
    HostSink sink;
    VxComPtr<IGraphBuilder> graph;

private:
    void SaveCameraAsDefault(UINT outputPixelType);
    [[nodiscard]] HRESULT CallModule(const char* function) const;

    const ComApartment m_com;
    const PrivateUserRegistry m_registry;
    HMODULE m_module = nullptr;
};

/// The bitmap header of a type with a VIDEOINFOHEADER.
[[nodiscard]] BITMAPINFOHEADER& HeaderOf(const AM_MEDIA_TYPE& type);

/// A complete type as an application builds it.
[[nodiscard]] CMediaType BuiltType(const GUID& subtype, WORD bitCount, DWORD compression,
                                   std::uint32_t widthPx, std::uint32_t heightPx);
