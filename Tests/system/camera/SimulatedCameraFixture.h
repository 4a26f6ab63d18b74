#pragma once

#include "CameraLink.h"

#include "VxBase/VxResult.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxSimulator/VxSimulatedCamera.h"
#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/TestPicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

inline constexpr const char* kAddress = "127.0.0.1";
inline constexpr std::uint32_t kWidthPx = 640; // as the camera starts
inline constexpr std::uint32_t kHeightPx = 480;

/// The picture in a buffer as the bytes that the camera sent.
inline std::span<const std::byte> BytesOf(const VxBuffer& buffer)
{
    const VxImage* const image = buffer.GetImage();
    return std::as_bytes(std::span(image->GetDataPointer(), image->GetSize()));
}

/// @param picture  Mono8 of the usual size
inline std::optional<std::uint32_t> NumberIn(std::span<const std::byte> picture)
{
    simulator::PictureView view;
    view.pixels = picture;
    view.widthPx = kWidthPx;
    view.heightPx = kHeightPx;
    view.strideBytes = kWidthPx;
    view.bytesPerPixel = 1;
    return simulator::ReadFrameNumber(view);
}

/// Whether a Mono8 buffer holds exactly the picture that the camera sent under the number that is in it.
inline testing::AssertionResult IsWholePicture(const VxBuffer& buffer)
{
    const VxResult result = buffer.GetOperationResult();
    if (!result.IsOK())
        return testing::AssertionFailure() << result.GetDescription().Narrow();
    const auto number = NumberIn(BytesOf(buffer));
    if (!number)
        return testing::AssertionFailure() << "no frame number in the picture";
    const VxImage* const image = buffer.GetImage();
    const auto sent =
        simulator::TestPicture(*number, image->GetWidth(), image->GetHeight(), image->GetPixelType());
    const auto received = BytesOf(buffer);
    // Not byte by byte in code without optimisation: it is done with every frame.
    if (received.size() != sent.size() || std::memcmp(received.data(), sent.data(), sent.size()) != 0)
        return testing::AssertionFailure() << "frame " << *number << " differs from what was sent";
    return testing::AssertionSuccess();
}

/// A simulated camera in this process, and a link to it.
///
/// Owner:  the test framework.
/// Thread: the test's.
class SimulatedCameraFixture : public testing::Test {
protected:
    void StartCamera(const VxSimulatorOptions& options)
    {
        const VxResult started = m_camera.Start(options);
        ASSERT_TRUE(started.IsOK()) << started.GetDescription().Narrow();
    }
    void StartCamera()
    {
        VxSimulatorOptions options;
        options.frameRateHz = 100;
        StartCamera(options);
    }
    /// Camera, stream and pipeline, running.
    void StartAll()
    {
        StartCamera();
        m_link.Connect(kAddress);
        m_link.OpenStream(kAddress);
        m_link.Start();
    }
    static std::chrono::milliseconds Since(std::chrono::steady_clock::time_point start)
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                     start);
    }

    VxSimulatedCamera m_camera;
    CameraLink m_link;
};
