#pragma once

#include "BaseClasses/CAMThread.h"
#include "BaseClasses/CBaseOutputPin.h"
#include "BaseClasses/VxComPtr.h"

class CSource;

/// An output pin with a worker thread that fills samples and delivers them while the filter is not stopped.
///
/// The worker exists from Pause to Stop. OnThreadCreate and OnThreadDestroy run on it while another thread
/// holds the state lock and waits: they, and FillBuffer, must not need that lock and must not call the graph.
///
/// Beyond the platform's contract: an exception in a hook or in FillBuffer counts as a failure of it; a start
/// that fails leaves neither thread nor committed allocator, so that the next start can succeed.
///
/// Owner:  the filter (CSource), to which it adds itself.
/// Thread: hooks, FillBuffer and DoBufferProcessingLoop on the worker; everything else on any other thread.
class CSourceStream : public CAMThread, public CBaseOutputPin {
public:
    /// @param phr  not null; always receives the result of adding the pin to the filter
    CSourceStream(LPCTSTR objectName, HRESULT* phr, CSource* filter, LPCWSTR pinName);
    CSourceStream(LPCSTR objectName, HRESULT* phr, CSource* filter, LPCWSTR pinName);
    ~CSourceStream() override;

    /// The number of the pin, from 1, in decimal.
    STDMETHODIMP QueryId(LPWSTR* id) override;

    enum Command { CMD_INIT, CMD_PAUSE, CMD_RUN, CMD_STOP, CMD_EXIT };

    // Commands to the worker; each returns its reply. Nothing here sends CMD_RUN: to the worker, running is
    // pausing.
    HRESULT Init() { return static_cast<HRESULT>(CallWorker(CMD_INIT)); }
    HRESULT Exit() { return static_cast<HRESULT>(CallWorker(CMD_EXIT)); }
    HRESULT Run() { return static_cast<HRESULT>(CallWorker(CMD_RUN)); }
    HRESULT Pause() { return static_cast<HRESULT>(CallWorker(CMD_PAUSE)); }
    HRESULT Stop() { return static_cast<HRESULT>(CallWorker(CMD_STOP)); }
    using CBaseOutputPin::Run; // the filter's Run: does nothing

protected:
    /// Fills an empty sample.
    /// @return  S_OK: it is delivered. S_FALSE: the stream has ended. Anything else: the stream has ended by
    ///          an error, and the graph gets EC_ERRORABORT
    virtual HRESULT FillBuffer(IMediaSample* sample) = 0;

    /// First and last act of the worker; OnThreadStartPlay before the first sample of each start.
    virtual HRESULT OnThreadCreate() { return S_OK; }
    virtual HRESULT OnThreadDestroy() { return S_OK; }
    virtual HRESULT OnThreadStartPlay() { return S_OK; }

    /// Commits the allocator, starts the worker, and waits until it plays.
    HRESULT Active() override;
    /// Decommits the allocator, so that a worker waiting for a sample wakes, and waits for the worker's end.
    HRESULT Inactive() override;

    DWORD ThreadProc() override;
    /// Fills and delivers until a command to stop, the end of the stream, or a peer that wants no more. A
    /// peer that refuses a sample (also with S_FALSE, as while flushing) ends it silently until the next
    /// start.
    virtual HRESULT DoBufferProcessingLoop();

    /// A pin with one type overrides the form without a position, one with several both forms.
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    virtual HRESULT GetMediaType(CMediaType* type);

    /// For the destructor of a derived class, as its first act: ends a worker that still runs, because the
    /// filter was let go without a stop. Later nothing could: the worker would call hooks that are gone. Not
    /// on the worker itself.
    void EndWorkerInDestructor();

    Command GetRequest() { return static_cast<Command>(CAMThread::GetRequest()); }
    BOOL CheckRequest(Command* command);

    CSource* m_pFilter; // borrowed: it owns the pin

private:
    HRESULT StartWorker();
    HRESULT EndWorker();
    bool WaitForInit();
    void ObeyUntilExit();
    HRESULT ProduceUntilRequest(bool& isRequested);
    HRESULT ProduceSample(VxComPtr<IMediaSample> sample, bool& goesOn);
};
