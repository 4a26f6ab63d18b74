#include "VxDSSource/camera/VxConfigurationReader.h"

#include <string>
#include <utility>

#include "VxCamera/surface/ConfigurationText.h"
#include "VxCamera/surface/FeatureStore.h"
#include "VxCamera/surface/NoThrow.h"
#include "VxDSSource/camera/VxDevice.h"
#include "VxDSSource/camera/VxStream.h"

class VxConfigurationReaderImpl {
public:
    surface::Configuration configuration;
};

namespace {

VxResult NoSuch(const char* kind, std::size_t index, std::size_t count)
{
    return VxResult(VxError::NotFound, std::string("there is no ") + kind + " configuration " +
                                           std::to_string(index) + "; there are " + std::to_string(count));
}

} // namespace

VxConfigurationReader::VxConfigurationReader() : m_impl(std::make_unique<VxConfigurationReaderImpl>()) {}

VxConfigurationReader::~VxConfigurationReader() = default;

VxResult VxConfigurationReader::LoadFromString(const VxString& text)
{
    m_impl->configuration = {};
    return NoThrow([&]() -> VxResult {
        auto configuration = surface::ReadConfiguration(text.Narrow());
        if (!configuration)
            return configuration.Error();
        m_impl->configuration = *std::move(configuration);
        return VxResult::Ok();
    });
}

std::size_t VxConfigurationReader::GetDeviceCount() const
{
    return m_impl->configuration.devices.size();
}

std::size_t VxConfigurationReader::GetStreamCount() const
{
    return m_impl->configuration.streams.size();
}

VxResult VxConfigurationReader::Restore(std::size_t index, VxDevice* device) const
{
    const auto& devices = m_impl->configuration.devices;
    if (index >= devices.size())
        return NoSuch("device", index, devices.size());
    if (device == nullptr)
        return VxResult(VxError::InvalidParameter, "there is no device to restore into");
    if (!device->IsConnected())
        return VxResult(VxError::NotConnected, "the device cannot be restored: it is not connected");
    return NoThrow([&] {
        return surface::RestoreFeatures(*device->GetParameters(), devices[index].steps, VxSteadyClock());
    });
}

VxResult VxConfigurationReader::Restore(std::size_t index, VxStream* stream) const
{
    const auto& streams = m_impl->configuration.streams;
    if (index >= streams.size())
        return NoSuch("stream", index, streams.size());
    if (stream == nullptr)
        return VxResult(VxError::InvalidParameter, "there is no stream to restore into");
    if (!stream->IsOpen())
        return VxResult(VxError::NotOpen, "the stream cannot be restored: it is not open");
    return NoThrow([&] {
        return surface::RestoreFeatures(*stream->GetParameters(), streams[index].steps, VxSteadyClock());
    });
}

VxResult VxConfigurationReader::Restore(const VxString& name, VxString& value) const
{
    for (const surface::StoredText& text : m_impl->configuration.texts) {
        if (text.name.Wide() != name.Wide())
            continue;
        value = text.value;
        return VxResult::Ok();
    }
    return VxResult(VxError::NotFound, "there is no text \"" + name.Narrow() + "\" in the configuration");
}
