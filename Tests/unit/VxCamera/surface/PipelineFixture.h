#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/surface/VxStreamImpl.h"
#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxDSSource/camera/VxPipeline.h"
#include "VxDSSource/camera/VxStream.h"
#include "unit/VxCamera/receive/QueueSocket.h"
#include "unit/VxCamera/receive/StreamPackets.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <utility>

using receive::StreamPackets;

inline constexpr transport::Ipv4Endpoint kCamera{transport::Ipv4Address(192, 168, 1, 20), 50000};
inline constexpr std::uint32_t kPictureBytes = 64 * 48;
inline constexpr std::uint32_t kForEverMs = 3'600'000; // a test that waits so long has failed

/// A stream whose packets a test puts into its socket.
///
/// Owner:  a test. Borrows the clock, if there is one.
/// Thread: that of a stream.
class FedStream final : public VxStream {
public:
    FedStream() : VxStream(std::make_unique<VxStreamImpl>()) {}
    explicit FedStream(const IVxClock& clock) : VxStream(std::make_unique<VxStreamImpl>()), m_clock(clock) {}
    VxResult Open(const VxString&) override
    {
        auto owned = std::make_unique<receive::QueueSocket>();
        socket = owned.get();
        return Impl().Attach(
            std::make_unique<receive::StreamReceiver>(std::move(owned), m_clock, kCamera.address));
    }
    [[nodiscard]] VxStreamType GetType() const override { return VxStreamType::Gev; }

    void Put(const StreamPackets& packets, std::uint64_t blockId)
    {
        for (auto& packet : packets.Block(blockId))
            socket->Put(kCamera, std::move(packet));
    }

    receive::QueueSocket* socket = nullptr; // borrowed from the receiver

private:
    const VxSteadyClock m_steady;
    const IVxClock& m_clock = m_steady;
};

/// A pipeline on a fed stream that is open.
///
/// Owner:  the test framework.
/// Thread: the test's.
class PipelineFixture : public testing::Test {
protected:
    PipelineFixture() { EXPECT_TRUE(m_stream.Open("camera").IsOK()); }

    void Start(std::uint32_t count = 4, std::uint32_t bytes = kPictureBytes)
    {
        ASSERT_TRUE(m_pipeline.SetBufferCount(count).IsOK());
        m_pipeline.SetBufferSize(bytes);
        const VxResult started = m_pipeline.Start();
        ASSERT_TRUE(started.IsOK()) << started.GetDescription().Narrow();
    }
    VxBuffer* Next()
    {
        VxBuffer* buffer = nullptr;
        EXPECT_TRUE(m_pipeline.RetrieveNextBuffer(&buffer, kForEverMs).IsOK());
        return buffer;
    }
    /// Whether the picture is that of the block, byte for byte.
    static bool IsPictureOf(const VxBuffer& buffer, std::uint64_t blockId)
    {
        const VxImage* const image = buffer.GetImage();
        if (image == nullptr || image->GetSize() != kPictureBytes)
            return false;
        for (std::size_t i = 0; i < kPictureBytes; ++i) {
            if (std::byte{image->GetDataPointer()[i]} != StreamPackets::ByteAt(blockId, i))
                return false;
        }
        return true;
    }
    std::int64_t Statistic(const char* name)
    {
        std::int64_t value = -1;
        EXPECT_TRUE(m_stream.GetParameters()->GetIntegerValue(name, value).IsOK());
        return value;
    }

    StreamPackets m_packets;
    FedStream m_stream;
    VxPipeline m_pipeline{&m_stream};
};
