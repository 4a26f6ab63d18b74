#include "VxDSSource/camera/VxConfigurationWriter.h"

#include <algorithm>
#include <utility>

#include "VxCamera/surface/ConfigurationText.h"
#include "VxCamera/surface/FeatureStore.h"
#include "VxCamera/surface/NoThrow.h"
#include "VxDSSource/camera/VxDevice.h"
#include "VxDSSource/camera/VxStream.h"

class VxConfigurationWriterImpl {
public:
    surface::Configuration configuration;
};

VxConfigurationWriter::VxConfigurationWriter() : m_impl(std::make_unique<VxConfigurationWriterImpl>()) {}

VxConfigurationWriter::~VxConfigurationWriter() = default;

VxResult VxConfigurationWriter::Store(VxDevice* device, const VxString& name)
{
    if (device == nullptr)
        return VxResult(VxError::InvalidParameter, "there is no device to store");
    if (!device->IsConnected())
        return VxResult(VxError::NotConnected, "the device cannot be stored: it is not connected");
    return NoThrow([&]() -> VxResult {
        auto collected = surface::CollectFeatures(*device->GetParameters(), VxSteadyClock());
        if (collected.isGone)
            return collected.result;
        if (!device->IsConnected())
            return VxResult(VxError::LinkLost, "the camera was lost while its configuration was read");
        m_impl->configuration.devices.push_back({name, std::move(collected.steps)});
        return collected.result;
    });
}

VxResult VxConfigurationWriter::Store(VxStream* stream, const VxString& name)
{
    if (stream == nullptr)
        return VxResult(VxError::InvalidParameter, "there is no stream to store");
    if (!stream->IsOpen())
        return VxResult(VxError::NotOpen, "the stream cannot be stored: it is not open");
    return NoThrow([&] {
        auto collected = surface::CollectFeatures(*stream->GetParameters(), VxSteadyClock());
        m_impl->configuration.streams.push_back({name, std::move(collected.steps)});
        return collected.result;
    });
}

VxResult VxConfigurationWriter::Store(const VxString& value, const VxString& name)
{
    return NoThrow([&] {
        auto& texts = m_impl->configuration.texts;
        const auto isSame = [&](const surface::StoredText& text) { return text.name.Wide() == name.Wide(); };
        const auto found = std::find_if(texts.begin(), texts.end(), isSame);
        if (found != texts.end())
            found->value = value;
        else
            texts.push_back({name, value});
        return VxResult::Ok();
    });
}

VxResult VxConfigurationWriter::SaveToString(VxString& text) const
{
    return NoThrow([&] {
        text = VxString(surface::WriteConfiguration(m_impl->configuration));
        return VxResult::Ok();
    });
}
