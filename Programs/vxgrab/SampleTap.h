#pragma once

#include <windows.h>

#include <qedit.h>

#include <atomic>

namespace vxgrab {

class FrameRecorder;

/// The Sample Grabber's callback: hands every sample to the recorder.
///
/// Owner:  COM counts the references; the session holds one, the Sample Grabber another.
/// Thread: SampleCB on the streaming thread.
class SampleTap final : public ISampleGrabberCB {
public:
    /// @param recorder  borrowed: the session keeps it until the graph is gone
    explicit SampleTap(FrameRecorder& recorder) : m_recorder(recorder) {}

    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP SampleCB(double startSeconds, IMediaSample* sample) override;
    STDMETHODIMP BufferCB(double startSeconds, BYTE* bytes, LONG length) override;

private:
    ~SampleTap() = default; // through Release only

    FrameRecorder& m_recorder;
    std::atomic<ULONG> m_references{1};
};

} // namespace vxgrab
