#include "hosts/HostSink.h"

HostSink::HostSink()
{
    m_filter.pin.onReceive = [this](IMediaSample* sample) {
        Keep(*sample);
        return S_OK;
    };
}

void HostSink::Keep(IMediaSample& sample)
{
    HostSample kept;
    BYTE* data = nullptr;
    if (SUCCEEDED(sample.GetPointer(&data)) && sample.GetActualDataLength() > 0) {
        const auto* const bytes = reinterpret_cast<const std::byte*>(data);
        kept.bytes.assign(bytes, bytes + sample.GetActualDataLength());
    }
    kept.timed = sample.GetTime(&kept.start, &kept.stop);
    AM_MEDIA_TYPE* type = nullptr;
    kept.hasNewType = sample.GetMediaType(&type) == S_OK;
    DeleteMediaType(type);

    const std::lock_guard lock(m_mutex);
    m_samples.push_back(std::move(kept));
    m_arrived.notify_all();
}

bool HostSink::WaitForSamples(std::size_t count)
{
    std::unique_lock lock(m_mutex);
    return m_arrived.wait_for(lock, kPatience, [&] { return m_samples.size() >= count; });
}

std::vector<HostSample> HostSink::Samples() const
{
    const std::lock_guard lock(m_mutex);
    return m_samples;
}

CMediaType HostSink::Type()
{
    AM_MEDIA_TYPE type{};
    EXPECT_EQ(m_filter.pin.ConnectionMediaType(&type), S_OK);
    CMediaType copy(type);
    FreeMediaType(type);
    return copy;
}
