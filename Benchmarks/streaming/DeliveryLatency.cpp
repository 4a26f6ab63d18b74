// Measures how long a frame takes from the moment its last packet is sent to the consumer's hands, and prints
// one line of JSON. Sender and consumer are threads of this program; between them are the system's loopback,
// our receiver and our pipeline.

#include "VxBase/VxByteWriter.h"
#include "VxCamera/transport/SystemNetwork.h"
#include "VxCamera/wire/gvsp/BlockLayout.h"
#include "VxCamera/wire/gvsp/ImageLeader.h"
#include "VxCamera/wire/gvsp/ImageTrailer.h"
#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxPipeline.h"
#include "VxDSSource/camera/VxStreamGEV.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kWidthPx = 1920;
constexpr std::uint32_t kHeightPx = 1080;
constexpr std::uint32_t kMono8 = 0x01080001;
constexpr std::size_t kStepBytes = gvsp::PayloadBytesPerPacket(1500, gvsp::IdMode::Standard);
constexpr std::uint32_t kFrames = 3000;
constexpr std::uint32_t kUnmeasured = 100;
constexpr auto kFramePeriod = 5ms;
constexpr transport::Ipv4Address kLoopback = transport::Ipv4Address::Loopback();

using SentTimes = std::array<std::atomic<Clock::rep>, kFrames + 1>; // of each block's trailer

class Sender {
public:
    Sender(transport::IUdpSocket& socket, const transport::Ipv4Endpoint& receiver, SentTimes& sent)
        : m_socket(socket), m_receiver(receiver), m_sent(sent)
    {
    }

    void SendFrame(std::uint32_t blockId)
    {
        const auto payloadPackets =
            static_cast<std::uint32_t>(gvsp::PayloadPackets(m_picture.size(), kStepBytes)); // some thousand
        gvsp::ImageLeader leader;
        leader.start.payloadType = {gvsp::PayloadType::kImage};
        leader.start.timestampTicks = blockId;
        leader.pixelFormat = kMono8;
        leader.widthPx = kWidthPx;
        leader.heightPx = kHeightPx;
        VxByteWriter first = Begin(blockId, 0, gvsp::PacketFormat::Leader);
        gvsp::WriteImageLeader(first, leader);
        Send(first);
        for (std::uint32_t id = 1; id <= payloadPackets; ++id) {
            VxByteWriter packet = Begin(blockId, id, gvsp::PacketFormat::Payload);
            const std::size_t offset = (id - 1) * kStepBytes;
            packet.Bytes(
                std::span(m_picture).subspan(offset, std::min(kStepBytes, m_picture.size() - offset)));
            Send(packet);
        }
        VxByteWriter last = Begin(blockId, payloadPackets + 1, gvsp::PacketFormat::Trailer);
        gvsp::WriteImageTrailer(last, {.heightPx = kHeightPx});
        m_sent[blockId] = Clock::now().time_since_epoch().count();
        Send(last);
    }

private:
    VxByteWriter Begin(std::uint32_t blockId, std::uint32_t packetId, gvsp::PacketFormat format)
    {
        VxByteWriter out(m_packet);
        gvsp::WritePacketHeader(out, {.format = format, .blockId = blockId, .packetId = packetId});
        return out;
    }
    void Send(const VxByteWriter& packet) { std::ignore = m_socket.SendTo(packet.Written(), m_receiver); }

    transport::IUdpSocket& m_socket;
    const transport::Ipv4Endpoint m_receiver;
    SentTimes& m_sent;
    std::vector<std::byte> m_picture = std::vector<std::byte>(std::size_t{kWidthPx} * kHeightPx);
    std::array<std::byte, 2048> m_packet{};
};

/// @return  of each complete frame, in us
std::vector<double> Consume(VxPipeline& pipeline, const SentTimes& sent)
{
    std::vector<double> latencies;
    VxBuffer* buffer = nullptr;
    while (pipeline.RetrieveNextBuffer(&buffer, 1000).IsOK()) {
        const auto now = Clock::now().time_since_epoch().count();
        const std::uint64_t blockId = buffer->GetBlockID();
        const bool isCounted =
            buffer->GetOperationResult().IsOK() && blockId > kUnmeasured && blockId <= kFrames;
        if (isCounted)
            latencies.push_back(
                std::chrono::duration<double, std::micro>(Clock::duration(now - sent[blockId])).count());
        std::ignore = pipeline.ReleaseBuffer(buffer);
    }
    std::ranges::sort(latencies);
    return latencies;
}

} // namespace

int main()
{
    const auto sent = std::make_unique<SentTimes>();
    VxStreamGEV stream;
    if (const VxResult opened = stream.Open("127.0.0.1", 0, 0, "127.0.0.1", 64); !opened.IsOK()) {
        std::fprintf(stderr, "error: %s\n", opened.GetDescription().GetAscii());
        return 1;
    }
    VxPipeline pipeline(&stream);
    std::ignore = pipeline.SetBufferCount(16);
    pipeline.SetBufferSize(kWidthPx * kHeightPx);
    const auto sockets = transport::MakeSystemSocketFactory();
    transport::UdpSocketOptions options;
    options.local.address = kLoopback;
    auto socket = sockets->OpenUdp(options);
    if (!socket || !pipeline.Start().IsOK()) {
        std::fputs("error: no network\n", stderr);
        return 1;
    }
    std::thread camera([&] {
        Sender sender(**socket, {kLoopback, stream.GetLocalPort()}, *sent);
        auto due = Clock::now();
        for (std::uint32_t id = 1; id <= kFrames; ++id) {
            sender.SendFrame(id);
            due += kFramePeriod;
            std::this_thread::sleep_until(due);
        }
    });
    const auto latencies = Consume(pipeline, *sent);
    camera.join();
    std::ignore = pipeline.Stop();
    const auto quantile = [&](double share) {
        const double index = share * static_cast<double>(latencies.size() - 1);
        return latencies.empty() ? -1 : latencies[static_cast<std::size_t>(index)]; // not negative
    };
    std::printf("{\"frames\": %zu, \"of\": %u, \"median_us\": %.1f, \"p999_us\": %.1f}\n", latencies.size(),
                kFrames - kUnmeasured, quantile(0.5), quantile(0.999));
    return 0;
}
