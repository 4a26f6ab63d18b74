#include "BaseClasses/CSourceStream.h"

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/CSource.h"
#include "BaseClasses/VxComPtr.h"
#include "BaseClasses/WideStrings.h"

#include <evcode.h>
#include <objbase.h>
#include <vfwmsgs.h>

#include <tuple>

namespace {

// Chosen by the platform: pause before another attempt when there was no sample to fill.
constexpr DWORD kRetryMs = 1;

// What a thread of the platform's source streams returns when one of its hooks failed.
constexpr DWORD kFailedExitCode = 1;

} // namespace

CSourceStream::CSourceStream(LPCTSTR objectName, HRESULT* phr, CSource* filter, LPCWSTR pinName)
    : CAMThread(phr),
      CBaseOutputPin(objectName, filter, filter->pStateLock(), phr, pinName),
      m_pFilter(filter)
{
    *phr = m_pFilter->AddPin(this);
}

CSourceStream::CSourceStream(LPCSTR objectName, HRESULT* phr, CSource* filter, LPCWSTR pinName)
    : CAMThread(phr),
      CBaseOutputPin(objectName, filter, filter->pStateLock(), phr, pinName),
      m_pFilter(filter)
{
    *phr = m_pFilter->AddPin(this);
}

CSourceStream::~CSourceStream()
{
    m_pFilter->RemovePin(this);
}

STDMETHODIMP CSourceStream::QueryId(LPWSTR* id)
{
    if (id == nullptr)
        return E_POINTER;

    *id = nullptr;
    const int number = m_pFilter->FindPinNumber(this);
    if (number < 0)
        return VFW_E_NOT_FOUND;
    *id = static_cast<LPWSTR>(::CoTaskMemAlloc(kIntToWstrUnits * sizeof(WCHAR)));
    if (*id == nullptr)
        return E_OUTOFMEMORY;
    IntToWstr(number + 1, *id);
    return S_OK;
}

HRESULT CSourceStream::GetMediaType(int position, CMediaType* type)
{
    const CAutoLock lock(m_pFilter->pStateLock());
    if (position < 0)
        return E_INVALIDARG;
    if (position > 0)
        return VFW_S_NO_MORE_ITEMS;
    return GetMediaType(type);
}

HRESULT CSourceStream::GetMediaType(CMediaType* /*type*/)
{
    return E_UNEXPECTED;
}

HRESULT CSourceStream::CheckMediaType(const CMediaType* type)
{
    const CAutoLock lock(m_pFilter->pStateLock());
    CMediaType own;
    std::ignore = GetMediaType(&own); // a pin without a type of its own is left with an empty one
    return own == *type ? S_OK : E_FAIL;
}

HRESULT CSourceStream::Active()
{
    const CAutoLock lock(m_pFilter->pStateLock());
    if (m_pFilter->IsActive())
        return S_FALSE;
    if (!IsConnected())
        return S_OK;

    const HRESULT committed = CBaseOutputPin::Active();
    if (FAILED(committed))
        return committed;

    const HRESULT started = StartWorker();
    if (FAILED(started))
        std::ignore = CBaseOutputPin::Inactive(); // the filter stays stopped, so nobody else would decommit
    return started;
}

/// On failure there is no worker, so that the next start finds none.
HRESULT CSourceStream::StartWorker()
{
    if (!Create())
        return E_FAIL;

    HRESULT hr = Init();
    if (SUCCEEDED(hr))
        hr = Pause();
    if (FAILED(hr)) {
        std::ignore = Exit(); // a worker whose OnThreadCreate failed has ended by itself
        Close();
    }
    return hr;
}

HRESULT CSourceStream::Inactive()
{
    const CAutoLock lock(m_pFilter->pStateLock());
    if (!IsConnected())
        return S_OK;

    // Before the worker is asked to stop: it may be waiting for a sample.
    const HRESULT decommitted = CBaseOutputPin::Inactive();
    if (FAILED(decommitted))
        return decommitted;
    return ThreadExists() ? EndWorker() : S_OK;
}

HRESULT CSourceStream::EndWorker()
{
    HRESULT hr = Stop();
    if (SUCCEEDED(hr))
        hr = Exit();
    if (SUCCEEDED(hr) || HasThreadEnded())
        Close();
    return FAILED(hr) ? hr : S_OK;
}

void CSourceStream::EndWorkerInDestructor()
{
    if (!ThreadExists())
        return;
    // As in Inactive, except that nobody is left to whom a refusal to decommit could be reported.
    std::ignore = CBaseOutputPin::Inactive();
    std::ignore = EndWorker();
}

BOOL CSourceStream::CheckRequest(Command* command)
{
    DWORD request = 0;
    if (!CAMThread::CheckRequest(&request))
        return FALSE;
    if (command != nullptr)
        *command = static_cast<Command>(request);
    return TRUE;
}

DWORD CSourceStream::ThreadProc()
{
    if (!WaitForInit())
        return kFailedExitCode;

    ObeyUntilExit();
    const HRESULT destroyed = AtComEdge([&] { return OnThreadDestroy(); });
    return FAILED(destroyed) ? kFailedExitCode : 0;
}

/// @return  false: OnThreadCreate failed, the worker has nothing more to do
bool CSourceStream::WaitForInit()
{
    while (GetRequest() != CMD_INIT)
        Reply(static_cast<DWORD>(E_UNEXPECTED));

    const HRESULT created = AtComEdge([&] { return OnThreadCreate(); });
    if (FAILED(created)) {
        std::ignore = AtComEdge([&] { return OnThreadDestroy(); }); // the first failure is the one to report
        Reply(static_cast<DWORD>(created));
        return false;
    }
    Reply(static_cast<DWORD>(S_OK));
    return true;
}

void CSourceStream::ObeyUntilExit()
{
    for (;;) {
        switch (GetRequest()) {
        case CMD_PAUSE:
        case CMD_RUN:
            Reply(static_cast<DWORD>(S_OK)); // first: the client does not wait for the stream's end
            std::ignore =
                AtComEdge([&] { return DoBufferProcessingLoop(); }); // it has reported its failures itself
            break;
        case CMD_STOP:
            Reply(static_cast<DWORD>(S_OK));
            break;
        case CMD_EXIT:
            Reply(static_cast<DWORD>(S_OK));
            return;
        default:
            Reply(static_cast<DWORD>(E_NOTIMPL));
            break;
        }
    }
}

HRESULT CSourceStream::DoBufferProcessingLoop()
{
    std::ignore = AtComEdge([&] { return OnThreadStartPlay(); });

    for (;;) {
        bool isRequested = false;
        const HRESULT produced = ProduceUntilRequest(isRequested);
        if (!isRequested)
            return produced;

        Command command = CMD_STOP;
        CheckRequest(&command);
        if (command == CMD_STOP)
            return S_FALSE; // unanswered: ThreadProc finds it still pending
        Reply(static_cast<DWORD>(command == CMD_RUN || command == CMD_PAUSE ? S_OK : E_UNEXPECTED));
    }
}

/// @param isRequested  receives true when a command is pending; else the stream has ended with the result
HRESULT CSourceStream::ProduceUntilRequest(bool& isRequested)
{
    while (!CheckRequest(nullptr)) {
        VxComPtr<IMediaSample> sample;
        const HRESULT got = AtComEdge([&] { return GetDeliveryBuffer(sample.Put(), nullptr, nullptr, 0); });
        if (FAILED(got) || !sample) {
            ::WaitForSingleObject(GetRequestHandle(), kRetryMs);
            continue;
        }

        bool goesOn = false;
        const HRESULT hr = ProduceSample(std::move(sample), goesOn);
        if (!goesOn)
            return hr;
    }
    isRequested = true;
    return S_OK;
}

/// @param goesOn  receives whether the next sample is wanted
HRESULT CSourceStream::ProduceSample(VxComPtr<IMediaSample> sample, bool& goesOn)
{
    const HRESULT filled = AtComEdge([&] { return FillBuffer(sample.Get()); });
    if (filled == S_OK) {
        goesOn = AtComEdge([&] { return Deliver(sample.Get()); }) == S_OK;
        return S_OK;
    }

    sample.Reset(); // before the peer hears of the end
    std::ignore = AtComEdge([&] { return DeliverEndOfStream(); });
    if (filled == S_FALSE)
        return S_OK;
    std::ignore = m_pFilter->NotifyEvent(EC_ERRORABORT, filled, 0);
    return filled;
}
