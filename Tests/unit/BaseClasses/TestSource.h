#pragma once

#include "BaseClasses/CSource.h"
#include "BaseClasses/CSourceStream.h"
#include "support/directshow/Gate.h"
#include "unit/BaseClasses/TestFilter.h"

#include <functional>
#include <mutex>
#include <string>
#include <vector>

/// A source filter. Created on the heap; a test holds it by an interface.
class TestSource final : public CSource {
public:
    TestSource() : CSource("source", nullptr, kTestClass) {}

    /// Makes the array in advance, as filters do that store their pins themselves.
    void MakeArrayInAdvance() { m_paStreams = new CSourceStream*[1]; }
    CSourceStream** Array() const { return m_paStreams; }
};

/// A source stream whose every hook the test gives, and which records their order.
class TestStream final : public CSourceStream {
public:
    /// One call of a hook.
    struct Call {
        std::string hook;
        DWORD thread;
        FILTER_STATE state;
    };

    explicit TestStream(CSource* filter, LPCWSTR name = L"Output") : TestStream(filter, name, S_OK) {}
    ~TestStream() override
    {
        if (onEnd)
            onEnd();
    }

    // What it does.
    std::function<HRESULT()> onCreate = [] { return S_OK; };
    std::function<HRESULT()> onStartPlay = [] { return S_OK; };
    std::function<HRESULT()> onDestroy = [] { return S_OK; };
    std::function<HRESULT(IMediaSample*)> onFill = [](IMediaSample*) { return S_OK; };
    std::function<HRESULT()> onGetBuffer = [] {
        return S_OK;
    }; // before the allocator is asked; a failure instead of it
    std::function<void()> onEnd;
    long buffers = 4;
    bool hasType = true;

    // What happened.
    HRESULT added;
    Gate requests; // for samples
    Gate fills;
    Gate loops; // ended
    HRESULT loopResult = E_PENDING;

    std::vector<Call> Calls()
    {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }
    /// Names of the hooks called, one word each; of FillBuffer only the first call in a row.
    std::string Order()
    {
        std::string order;
        std::string last;
        for (const Call& call : Calls()) {
            if (call.hook != last || call.hook != "fill")
                order += (order.empty() ? "" : " ") + call.hook;
            last = call.hook;
        }
        return order;
    }
    IMemAllocator* Allocator() const { return m_pAllocator; }

    HRESULT FillBuffer(IMediaSample* sample) override
    {
        Record("fill");
        fills.Pass();
        return onFill(sample);
    }
    HRESULT OnThreadCreate() override
    {
        Record("create");
        return onCreate();
    }
    HRESULT OnThreadStartPlay() override
    {
        Record("play");
        return onStartPlay();
    }
    HRESULT OnThreadDestroy() override
    {
        Record("destroy");
        return onDestroy();
    }
    HRESULT DoBufferProcessingLoop() override
    {
        loopResult = CSourceStream::DoBufferProcessingLoop();
        loops.Pass();
        return loopResult;
    }
    HRESULT GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                              DWORD flags) override
    {
        requests.Pass();
        const HRESULT hr = onGetBuffer();
        return FAILED(hr) ? hr : CSourceStream::GetDeliveryBuffer(sample, start, stop, flags);
    }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* wanted) override
    {
        wanted->cBuffers = buffers;
        wanted->cbBuffer = 16;
        ALLOCATOR_PROPERTIES actual = {};
        return allocator->SetProperties(wanted, &actual);
    }
    using CSourceStream::GetMediaType;
    HRESULT GetMediaType(CMediaType* type) override
    {
        return hasType ? type->Set(TypeNumber(1)) : CSourceStream::GetMediaType(type);
    }

private:
    TestStream(CSource* filter, LPCWSTR name, HRESULT initial)
        : CSourceStream("stream", &initial, filter, name)
    {
        added = initial;
    }
    void Record(const char* hook)
    {
        FILTER_STATE state = State_Stopped;
        m_pFilter->GetState(0, &state);
        const std::lock_guard lock(m_mutex);
        m_calls.push_back({hook, ::GetCurrentThreadId(), state});
    }

    std::mutex m_mutex;
    std::vector<Call> m_calls; // guarded by m_mutex
};
