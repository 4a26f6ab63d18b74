#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// What a link to a camera is made of, as the settings say it.
struct LinkSettings {
    std::uint32_t role = 0;
    std::string deviceId;
    std::uint32_t channel = 0;
    std::string source;
    std::uint32_t unicastPort = 0;
    std::string multicastAddress;
    std::uint32_t multicastPort = 0;
};

/// The camera that the link leads to.
struct ModelCamera {
    bool isUsb = false;
    bool refusesControl = false;
    bool refusesStream = false;
    std::string source = "Left"; ///< selected now, of "Left" and "Right"
};

/// The link as it has to behave, step by step, written from its rules alone: which calls on the camera
/// surface each change of the settings takes.
///
/// Owner:  the test, by value.
/// Thread: the test's.
class LinkModel {
public:
    using Lines = std::vector<std::string>;

    static constexpr std::uint32_t kCameraChannel = 3; ///< the camera's "SourceStreamChannel"

    /// @param isRunning  whether the streaming thread lives
    LinkModel(ModelCamera camera, bool isRunning) : m_camera(std::move(camera)), m_isRunning(isRunning) {}

    /// @param settings  learns the camera's source
    [[nodiscard]] Lines Apply(LinkSettings& settings)
    {
        Lines calls;
        const bool isReconnect = Differs(settings);
        if (isReconnect)
            AddClose(calls);
        std::uint32_t channel = 0;
        if (settings.role == 0 && !m_hasDevice && !settings.deviceId.empty())
            AddConnect(calls, settings, channel);
        if (!m_hasStream && !settings.deviceId.empty())
            AddOpen(calls, settings, channel);
        if (isReconnect && m_hasDevice && m_hasStream && !m_camera.isUsb)
            calls.push_back("device.SetStreamDestination(127.0.0.1, 50000, " + std::to_string(channel) + ")");
        if (isReconnect && m_isRunning)
            AddStart(calls);
        return calls;
    }

    [[nodiscard]] Lines Close()
    {
        Lines calls;
        AddClose(calls);
        return calls;
    }

private:
    [[nodiscard]] bool Differs(const LinkSettings& settings) const
    {
        if (settings.deviceId != m_appliedId || settings.channel != m_appliedChannel)
            return true;
        if (settings.role == 0)
            return settings.source != m_appliedSource || !m_hasDevice;
        if (m_hasDevice)
            return true;
        // What receivers applied is never recorded.
        if (settings.role == 1)
            return settings.unicastPort != 0;
        if (settings.role == 2)
            return !settings.multicastAddress.empty() || settings.multicastPort != 0;
        return false;
    }

    void AddConnect(Lines& calls, LinkSettings& settings, std::uint32_t& channel)
    {
        calls.push_back("CreateAndConnect(" + settings.deviceId + ")");
        if (m_camera.refusesControl) {
            calls.emplace_back("VxDevice::Free");
            return;
        }
        m_hasDevice = true;
        m_appliedSource = m_camera.source;
        if (settings.source.empty()) {
            settings.source = m_camera.source;
        } else if (settings.source == "Left" || settings.source == "Right") {
            calls.push_back("device.SourceSelector = " + settings.source);
            m_camera.source = settings.source;
            m_appliedSource = settings.source;
        } else {
            calls.push_back("device.SourceSelector = " + settings.source + " refused");
        }
        channel = kCameraChannel;
    }

    void AddOpen(Lines& calls, const LinkSettings& settings, std::uint32_t& channel)
    {
        const bool isUsb = m_hasDevice && m_camera.isUsb;
        calls.emplace_back(isUsb ? "new VxStreamU3V" : "new VxStreamGEV");
        if (settings.role == 1 || settings.role == 2)
            channel = settings.channel;
        const std::string id = "\"" + settings.deviceId + "\"";
        const std::string end = ", channel " + std::to_string(channel) + ", \"\", 64)";
        bool isOpened = true;
        if (isUsb)
            calls.push_back("stream.Open(" + id + ")");
        else if (settings.role == 0)
            calls.push_back("stream.Open(" + id + ", port 0" + end);
        else if (settings.role == 1)
            calls.push_back("stream.Open(" + id + ", port " + std::to_string(settings.unicastPort) + end);
        else if (settings.role == 2)
            calls.push_back("stream.Open(" + id + ", group \"" + settings.multicastAddress + "\", port " +
                            std::to_string(settings.multicastPort) + end);
        else
            isOpened = false; // and the last result stays
        if (isOpened)
            m_wasLastOpenOk = !m_camera.refusesStream;
        if (!m_wasLastOpenOk) {
            calls.emplace_back("delete stream");
            return;
        }
        m_hasStream = true;
        m_isStreamOpen = isOpened;
        m_appliedId = settings.deviceId;
        m_appliedChannel = settings.channel;
        calls.insert(calls.end(), {"new VxPipeline", "pipeline.SetBufferSize(4147200)",
                                   "pipeline.SetBufferCount(16)", "pipeline.SetHandleBufferTooSmall(true)"});
    }

    void AddStart(Lines& calls)
    {
        if (m_hasDevice)
            calls.emplace_back("device.GetPayloadSize");
        if (m_hasStream) {
            calls.emplace_back("stream.Reset()");
            calls.emplace_back(m_hasDevice ? "pipeline.SetBufferSize(921600)"
                                           : "pipeline.SetBufferSize(4147200)");
            calls.emplace_back("pipeline.Start");
            m_isPipelineStarted = true;
        }
        if (m_hasDevice)
            calls.insert(calls.end(), {"device.StreamEnable(0)", "device.AcquisitionStart()"});
    }

    void AddClose(Lines& calls)
    {
        if (m_hasDevice)
            calls.insert(calls.end(), {"device.AcquisitionStop()", "device.StreamDisable(0)"});
        if (m_isPipelineStarted)
            calls.emplace_back("pipeline.Stop");
        if (m_hasStream)
            calls.emplace_back("delete pipeline");
        if (m_hasStream && m_isStreamOpen)
            calls.emplace_back("stream.Close");
        if (m_hasStream)
            calls.emplace_back("delete stream");
        if (m_hasDevice)
            calls.insert(calls.end(), {"device.Disconnect", "VxDevice::Free"});
        m_hasDevice = m_hasStream = m_isStreamOpen = m_isPipelineStarted = false;
        m_appliedId.clear();
        m_appliedSource.clear();
        m_appliedChannel = 0;
    }

    ModelCamera m_camera;
    bool m_isRunning;
    bool m_hasDevice = false;
    bool m_hasStream = false; // and a pipeline on it
    bool m_isStreamOpen = false;
    bool m_isPipelineStarted = false;
    bool m_wasLastOpenOk = false;
    std::string m_appliedId;
    std::string m_appliedSource;
    std::uint32_t m_appliedChannel = 0;
};
