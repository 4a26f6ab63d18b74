#pragma once

#include "support/directshow/TestObject.h"
#include "unit/VxDSSource/stream/CanarySample.h"

#include <strmif.h>
#include <vfwmsgs.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

/// An allocator that promises what it is asked for and hands out samples of another size, between bytes that
/// must not change.
///
/// Owner:  the test; nobody holds a sample when it commits or ends.
/// Thread: GetBuffer on the streaming thread, the others on the test's.
class SmallAllocator final : public TestObject<IMemAllocator> {
public:
    /// Of the samples from the next commit on.
    std::size_t sampleBytes = 1;

    /// Lets the next sample that is handed out carry a type, as a peer does that wants another one from then
    /// on.
    void AttachToNext(const AM_MEDIA_TYPE& type)
    {
        const std::lock_guard lock(m_mutex);
        m_next.emplace(type);
    }
    /// Whether that sample has been handed out.
    [[nodiscard]] bool HasAttached() const
    {
        const std::lock_guard lock(m_mutex);
        return !m_next;
    }

    /// Samples handed out until now.
    [[nodiscard]] int Given() const { return m_given; }

    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override
    {
        m_promised = *request;
        *actual = *request;
        return S_OK;
    }
    STDMETHODIMP GetProperties(ALLOCATOR_PROPERTIES* properties) override
    {
        *properties = m_promised;
        return S_OK;
    }
    STDMETHODIMP Commit() override
    {
        if (m_isCommitted)
            return S_OK;
        m_samples.clear(); // checks the bytes around them
        for (int i = 0; i < 2; ++i)
            m_samples.push_back(std::make_unique<CanarySample>(sampleBytes));
        m_isCommitted = true;
        return S_OK;
    }
    STDMETHODIMP Decommit() override
    {
        m_isCommitted = false;
        return S_OK;
    }
    STDMETHODIMP GetBuffer(IMediaSample** sample, REFERENCE_TIME*, REFERENCE_TIME*, DWORD) override
    {
        *sample = nullptr;
        if (!m_isCommitted)
            return VFW_E_NOT_COMMITTED;
        for (const std::unique_ptr<CanarySample>& each : m_samples) {
            if (each->References() == 0) {
                each->AddRef();
                Attach(*each);
                ++m_given;
                *sample = each.get();
                return S_OK;
            }
        }
        return VFW_E_TIMEOUT;
    }
    STDMETHODIMP ReleaseBuffer(IMediaSample*) override { return E_UNEXPECTED; }

private:
    void Attach(IMediaSample& sample)
    {
        const std::lock_guard lock(m_mutex);
        sample.SetMediaType(m_next ? &*m_next : nullptr);
        m_next.reset();
    }

    ALLOCATOR_PROPERTIES m_promised{};
    mutable std::mutex m_mutex;
    std::optional<CMediaType> m_next; // guarded by m_mutex
    std::atomic<bool> m_isCommitted = false;
    std::atomic<int> m_given = 0;
    std::vector<std::unique_ptr<CanarySample>> m_samples;
};
