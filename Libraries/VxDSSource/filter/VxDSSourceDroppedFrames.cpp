#include "VxDSSource/filter/VxDSSource.h"

#include "VxDSSource/stream/VxDSStream.h"

STDMETHODIMP VxDSSource::GetNumDropped(long* dropped)
{
    if (dropped == nullptr)
        return E_POINTER;
    return OnPin([&](VxDSStream& pin) {
        *dropped = static_cast<long>(pin.Statistics().BlocksDroppedByFilter()); // the interface has 32 bits
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::GetNumNotDropped(long* notDropped)
{
    if (notDropped == nullptr)
        return E_POINTER;
    return OnPin([&](VxDSStream& pin) {
        *notDropped = static_cast<long>(pin.Statistics().FrameCounter()); // the interface has 32 bits
        return S_OK;
    });
}

STDMETHODIMP VxDSSource::GetDroppedInfo(long /*size*/, long* /*numbers*/, long* copied)
{
    if (copied == nullptr)
        return E_POINTER;
    *copied = 0; // which frames were dropped is not kept
    return S_OK;
}

STDMETHODIMP VxDSSource::GetAverageFrameSize(long* /*bytes*/)
{
    return S_OK; // fixed, part of the interface's contract: nothing is written
}
