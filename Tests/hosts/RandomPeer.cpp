#include "hosts/RandomPeer.h"

#include <algorithm>
#include <chrono>
#include <span>
#include <thread>

RandomPeer::RandomPeer()
{
    m_filter.shown = &m_pin;
    m_pin.inner.onReceive = [this](IMediaSample* sample) { return Take(*sample); };
    m_pin.inner.onReceiveConnection = [this](IPin*, const AM_MEDIA_TYPE*) {
        ++m_attempts;
        return refusesConnections ? VFW_E_TYPE_NOT_ACCEPTED : S_OK;
    };
}

void RandomPeer::UseOwnBuffers(std::size_t sampleBytes)
{
    m_small.sampleBytes = sampleBytes;
    m_pin.inner.allocator = sampleBytes > 0 ? VxComPtr<IMemAllocator>(&m_small) : VxComPtr<IMemAllocator>();
}

void RandomPeer::ExpectSamples()
{
    m_isStopped = false;
    m_pin.isActive = true;
}

void RandomPeer::ExpectNoMoreSamples()
{
    m_isStopped = true;
    m_pin.isActive = false;
    if (m_isTaking)
        Note("a sample was still being delivered when a stop had returned");
}

std::string RandomPeer::Fault() const
{
    const std::lock_guard lock(m_mutex);
    return m_fault;
}

std::vector<std::byte> RandomPeer::Picture() const
{
    const std::lock_guard lock(m_mutex);
    return m_picture;
}

void RandomPeer::ForgetPicture()
{
    const std::lock_guard lock(m_mutex);
    m_picture.clear();
}

HRESULT RandomPeer::Take(IMediaSample& sample)
{
    m_isTaking = true;
    JudgeArrival("a sample came after a stop had returned");
    JudgeMemory(sample);
    JudgeTime(sample);
    const Taking now = taking;
    if (now == Taking::Slowly)
        std::this_thread::sleep_for(std::chrono::milliseconds(80)); // chosen: longer than a frame takes
    JudgeArrival("a sample was still there after a stop had returned");
    m_isTaking = false;
    return now == Taking::NotAtAll ? E_FAIL : now == Taking::AsWhileFlushing ? S_FALSE : S_OK;
}

void RandomPeer::JudgeArrival(const char* fault)
{
    if (m_isStopped)
        Note(fault);
}

void RandomPeer::JudgeMemory(IMediaSample& sample)
{
    BYTE* data = nullptr;
    const long length = sample.GetActualDataLength();
    if (sample.GetPointer(&data) != S_OK || data == nullptr || length < 0 || length > sample.GetSize()) {
        Note("a sample has no memory, or says that it holds more than it has");
        return;
    }
    const std::span bytes(reinterpret_cast<const std::byte*>(data), static_cast<std::size_t>(length));
    if (std::ranges::all_of(bytes, [](std::byte each) { return each == std::byte{0}; }))
        return;
    ++m_pictures;
    const std::lock_guard lock(m_mutex);
    m_picture.assign(bytes.begin(), bytes.end());
}

void RandomPeer::JudgeTime(IMediaSample& sample)
{
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    if (sample.GetTime(&start, &stop) != S_OK)
        return; // a zero frame
    const bool isRight = hasClock ? 0 <= start && start <= stop : start == 0 && stop == 0;
    if (!isRight)
        Note("a sample from " + std::to_string(start) + " to " + std::to_string(stop) +
             (hasClock ? " with a clock" : " without a clock"));
}

void RandomPeer::Note(const std::string& fault)
{
    const std::lock_guard lock(m_mutex);
    if (m_fault.empty())
        m_fault = fault;
}
