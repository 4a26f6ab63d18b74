#include "ReceiverRun.h"

// The peer: an independent receiver, with an ordinary socket whose receive buffer holds a frame, and its own
// defaults for everything else. With its default buffer (the system's, 208 KiB) it loses most of a stream
// that is sent at full speed, so that nothing could be compared.
#include <arv.h>

namespace {

constexpr int kBuffers = 16; // as ours

// Fixed by the protocol: timestamp control, and what it latched.
constexpr guint64 kTimestampControl = 0x0944;
constexpr guint64 kTimestampHigh = 0x0948;
constexpr guint64 kTimestampLow = 0x094C;
constexpr guint32 kLatch = 2;

class AravisReceiver final : public IMeasuredReceiver {
public:
    ~AravisReceiver() override
    {
        if (m_camera != nullptr)
            arv_camera_stop_acquisition(m_camera, nullptr);
        g_clear_object(&m_stream);
        g_clear_object(&m_camera);
    }

    std::string Start(const ReceiverOrder& order) override
    {
        GError* error = nullptr;
        m_camera = arv_camera_new(order.address.c_str(), &error);
        if (m_camera == nullptr)
            return TextOf(error);
        arv_camera_set_integer(m_camera, "Width", order.widthPx, nullptr);
        arv_camera_set_integer(m_camera, "Height", order.heightPx, nullptr);
        arv_camera_set_float(m_camera, "AcquisitionFrameRate", order.framesPerSecond, nullptr);
        arv_camera_gv_set_packet_size_adjustment(m_camera, ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
        arv_camera_gv_set_stream_options(m_camera, ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
        arv_camera_gv_set_packet_size(m_camera, static_cast<int>(order.packetBytes), &error);
        if (error != nullptr)
            return TextOf(error);
        m_stream = arv_camera_create_stream(m_camera, nullptr, nullptr, &error);
        if (m_stream == nullptr)
            return TextOf(error);
        g_object_set(m_stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_AUTO, nullptr);
        const guint payload = arv_camera_get_payload(m_camera, nullptr);
        for (int i = 0; i < kBuffers; ++i)
            arv_stream_push_buffer(m_stream, arv_buffer_new_allocate(payload));
        arv_camera_start_acquisition(m_camera, &error);
        return error != nullptr ? TextOf(error) : std::string();
    }

    bool Next(ReceivedFrame& frame, std::chrono::milliseconds timeout) override
    {
        const auto us = std::chrono::microseconds(timeout).count();
        ArvBuffer* const buffer = arv_stream_timeout_pop_buffer(m_stream, static_cast<guint64>(us));
        if (buffer == nullptr)
            return false;
        frame.isComplete = arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
        frame.blockId = arv_buffer_get_frame_id(buffer);
        frame.timestampNs = arv_buffer_get_timestamp(buffer);
        std::size_t bytes = 0;
        if (arv_buffer_get_data(buffer, &bytes) != nullptr)
            frame.bytes = bytes;
        arv_stream_push_buffer(m_stream, buffer);
        return true;
    }

    std::uint64_t CameraNowNs() override
    {
        ArvDevice* const device = arv_camera_get_device(m_camera);
        guint32 high = 0;
        guint32 low = 0;
        arv_device_write_register(device, kTimestampControl, kLatch, nullptr);
        arv_device_read_register(device, kTimestampHigh, &high, nullptr);
        arv_device_read_register(device, kTimestampLow, &low, nullptr);
        return std::uint64_t{high} << 32 | low;
    }

    std::string Counts() override
    {
        std::string counts;
        for (const char* name : {"n_completed_buffers", "n_failures", "n_underruns", "n_missing_packets",
                                 "n_resend_requests", "n_resent_packets"})
            counts += std::string(name) + " " +
                      std::to_string(arv_stream_get_info_uint64_by_name(m_stream, name)) + "; ";
        return counts;
    }

private:
    static std::string TextOf(GError* error)
    {
        std::string text = error != nullptr ? error->message : "it failed";
        g_clear_error(&error);
        return text;
    }

    ArvCamera* m_camera = nullptr;
    ArvStream* m_stream = nullptr;
};

} // namespace

std::unique_ptr<IMeasuredReceiver> MakeAravisReceiver()
{
    return std::make_unique<AravisReceiver>();
}
