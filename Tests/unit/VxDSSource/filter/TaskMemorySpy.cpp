#include "TaskMemorySpy.h"

#include <oleauto.h>

#include <gtest/gtest.h>

// The compiler's headers do not declare it.
extern "C" void WINAPI SetOaNoCache(void);

TaskMemorySpy& TheTaskMemory()
{
    static auto* const spy = new TaskMemorySpy; // blocks that it has seen may outlive every variable
    return *spy;
}

TaskMemorySpy::TaskMemorySpy()
{
    ::SetOaNoCache();
    EXPECT_EQ(::CoRegisterMallocSpy(this), S_OK);
}

STDMETHODIMP TaskMemorySpy::QueryInterface(REFIID riid, void** object)
{
    *object = riid == IID_IUnknown || riid == IID_IMallocSpy ? this : nullptr;
    return *object != nullptr ? S_OK : E_NOINTERFACE;
}

STDMETHODIMP_(void*) TaskMemorySpy::PostAlloc(void* block)
{
    m_live += block != nullptr ? 1 : 0;
    return block;
}

STDMETHODIMP_(void*) TaskMemorySpy::PreFree(void* block, BOOL wasSeen)
{
    m_live -= block != nullptr && wasSeen ? 1 : 0;
    return block;
}

STDMETHODIMP_(SIZE_T) TaskMemorySpy::PreRealloc(void* block, SIZE_T bytes, void** newBlock, BOOL)
{
    *newBlock = block;
    return bytes;
}
