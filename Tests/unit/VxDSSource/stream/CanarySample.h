#pragma once

#include "BaseClasses/CMediaType.h"
#include "support/directshow/TestObject.h"

#include <strmif.h>
#include <vfwmsgs.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <utility>
#include <vector>

/// A sample whose memory begins at a page, as the platform's own do, and lies between bytes that must not
/// change.
///
/// Owner:  the test.
/// Thread: the test's.
class CanarySample final : public TestObject<IMediaSample> {
public:
    static constexpr std::uint8_t kStale = 0xCD; ///< what the memory holds before it is written

    explicit CanarySample(std::size_t bytes)
        : m_size(bytes),
          m_memory(bytes + 2 * kGuard + kPageBytes, kCanary),
          m_begin(kGuard + kPageBytes - reinterpret_cast<std::uintptr_t>(m_memory.data()) % kPageBytes)
    {
        std::ranges::fill(Bytes(), kStale);
    }
    ~CanarySample() override { EXPECT_TRUE(IsIntact()) << "bytes around the sample were written"; }

    [[nodiscard]] std::span<std::uint8_t> Bytes() { return {m_memory.data() + m_begin, m_size}; }
    [[nodiscard]] std::vector<std::uint8_t> Copy() { return {Bytes().begin(), Bytes().end()}; }
    [[nodiscard]] bool IsAll(std::uint8_t value)
    {
        return std::ranges::all_of(Bytes(), [=](std::uint8_t each) { return each == value; });
    }
    [[nodiscard]] bool IsIntact() const
    {
        const auto isCanary = [](std::uint8_t each) { return each == kCanary; };
        const auto begin = m_memory.begin() + static_cast<std::ptrdiff_t>(m_begin);
        return std::all_of(m_memory.begin(), begin, isCanary) &&
               std::all_of(begin + static_cast<std::ptrdiff_t>(m_size), m_memory.end(), isCanary);
    }

    // What was set.
    std::optional<std::pair<LONGLONG, LONGLONG>> time;
    std::optional<std::pair<LONGLONG, LONGLONG>> mediaTime;
    bool isSyncPoint = false;
    std::optional<CMediaType> attached; ///< a format change that comes with the sample
    std::function<void()> onTypeTaken;  ///< called when it was given out

    STDMETHODIMP GetPointer(BYTE** buffer) override
    {
        *buffer = Bytes().data();
        return S_OK;
    }
    STDMETHODIMP_(long) GetSize() override { return static_cast<long>(m_size); }
    STDMETHODIMP GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override
    {
        if (!time)
            return VFW_E_SAMPLE_TIME_NOT_SET;
        *start = time->first;
        *stop = time->second;
        return S_OK;
    }
    STDMETHODIMP SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override
    {
        time.reset();
        if (start != nullptr && stop != nullptr)
            time = {*start, *stop};
        return S_OK;
    }
    STDMETHODIMP IsSyncPoint() override { return isSyncPoint ? S_OK : S_FALSE; }
    STDMETHODIMP SetSyncPoint(BOOL value) override
    {
        isSyncPoint = value != FALSE;
        return S_OK;
    }
    STDMETHODIMP IsPreroll() override { return S_FALSE; }
    STDMETHODIMP SetPreroll(BOOL) override { return S_OK; }
    STDMETHODIMP_(long) GetActualDataLength() override { return static_cast<long>(m_size); }
    STDMETHODIMP SetActualDataLength(long) override { return S_OK; }
    STDMETHODIMP GetMediaType(AM_MEDIA_TYPE** type) override
    {
        *type = attached ? CreateMediaType(&*attached) : nullptr;
        if (onTypeTaken)
            onTypeTaken();
        return attached ? S_OK : S_FALSE;
    }
    STDMETHODIMP SetMediaType(AM_MEDIA_TYPE* type) override
    {
        attached.reset();
        if (type != nullptr)
            attached.emplace(*type);
        return S_OK;
    }
    STDMETHODIMP IsDiscontinuity() override { return S_FALSE; }
    STDMETHODIMP SetDiscontinuity(BOOL) override { return S_OK; }
    STDMETHODIMP GetMediaTime(LONGLONG*, LONGLONG*) override { return E_NOTIMPL; }
    STDMETHODIMP SetMediaTime(LONGLONG* start, LONGLONG* stop) override
    {
        mediaTime.reset();
        if (start != nullptr && stop != nullptr)
            mediaTime = {*start, *stop};
        return S_OK;
    }

private:
    static constexpr std::uint8_t kCanary = 0xA5;
    static constexpr std::size_t kGuard = 4096;
    // Fixed by the platform: its allocator takes whole pages, so a real sample begins at one.
    static constexpr std::size_t kPageBytes = 4096;

    const std::size_t m_size;
    std::vector<std::uint8_t> m_memory;
    const std::size_t m_begin; // of the sample in m_memory
};
