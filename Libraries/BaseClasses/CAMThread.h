#pragma once

#include "BaseClasses/CAMEvent.h"
#include "BaseClasses/CCritSec.h"

/// A worker thread that takes commands, one at a time, each with exactly one reply.
///
/// Beyond the platform's contract: a worker that has ended without a reply (returned, left by an exception,
/// or ended by force, as by the system at the end of the process) makes CallWorker return E_FAIL instead of
/// waiting for ever.
///
/// Owner:  the derived class. Its destructor must have sent the command that ends the worker.
/// Thread: clients call Create, CallWorker and Close; the worker calls GetRequest, CheckRequest and Reply.
class CAMThread {
public:
    /// @param phr  E_OUTOFMEMORY when the events cannot be made. No thread yet.
    explicit CAMThread(HRESULT* phr = nullptr);
    /// Waits for the worker's end, see Close.
    virtual ~CAMThread();
    CAMThread(const CAMThread&) = delete;
    CAMThread& operator=(const CAMThread&) = delete;

    /// Starts the worker. FALSE when there is one already (also one that has ended but was not closed), or
    /// when the system refuses.
    BOOL Create();

    /// Sends a command and waits, without limit, for the reply.
    /// @return  the reply; E_FAIL without a worker
    DWORD CallWorker(DWORD command);

    /// Waits, without limit, for the worker's end, and gives its handle back. Sends no command.
    void Close();

    BOOL ThreadExists() const;

    /// Worker: waits for a command. It stays pending until Reply.
    DWORD GetRequest();
    /// Worker: whether a command is pending. Does not consume it.
    /// @param command  receives it; may be null
    BOOL CheckRequest(DWORD* command);
    /// Worker: answers the pending command.
    void Reply(DWORD result);
    /// For waiting on commands and on other handles at once.
    HANDLE GetRequestHandle() const { return m_EventSend; }
    DWORD GetRequestParam() const { return m_dwParam; }

    CCritSec m_AccessLock; // held by a client during a call
    CCritSec m_WorkerLock; // for the derived class; never taken here

protected:
    /// Body of the worker.
    virtual DWORD ThreadProc() = 0;

    /// Start of the worker: COM in the multi-threaded apartment around ThreadProc.
    static DWORD WINAPI InitialThreadProc(LPVOID thread);

    /// Whether a worker was started and has ended, its ThreadProc returned or not.
    BOOL HasThreadEnded();

    HANDLE m_hThread = nullptr; // exchanged atomically

private:
    CAMEvent m_EventSend;     // manual reset: set while a command is pending
    CAMEvent m_EventComplete; // auto reset: the reply is there
    CAMEvent m_EventEnded;    // manual reset: ThreadProc has returned
    DWORD m_dwParam = 0;      // written before m_EventSend is set, read after
    DWORD m_dwReturnVal = 0;  // written before m_EventComplete is set, read after
};
