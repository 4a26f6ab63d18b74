#pragma once

#include <windows.h>

#include <objidl.h>

#include <atomic>

/// Sees every block of COM's task memory come and go. Texts are among them where the system takes their
/// memory from there, as Wine does; their cache, which would hide them, is switched off.
///
/// The system keeps the spy for as long as blocks live that it has seen, so there is one, for the rest of the
/// program.
///
/// Owner:  the program (TheTaskMemory).
/// Thread: any.
class TaskMemorySpy final : public IMallocSpy {
public:
    TaskMemorySpy();

    /// Blocks that came since this spy was made, and live.
    [[nodiscard]] long Live() const { return m_live.load(); }
    /// Whether no block can be had.
    std::atomic<bool> isExhausted = false;

    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return 2; } // never ends: not counted
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T bytes) override { return isExhausted ? 0 : bytes; }
    STDMETHODIMP_(void*) PostAlloc(void* block) override;
    STDMETHODIMP_(void*) PreFree(void* block, BOOL wasSeen) override;
    STDMETHODIMP_(void) PostFree(BOOL) override {}
    STDMETHODIMP_(SIZE_T) PreRealloc(void* block, SIZE_T bytes, void** newBlock, BOOL) override;
    STDMETHODIMP_(void*) PostRealloc(void* block, BOOL) override { return block; }
    STDMETHODIMP_(void*) PreGetSize(void* block, BOOL) override { return block; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T bytes, BOOL) override { return bytes; }
    STDMETHODIMP_(void*) PreDidAlloc(void* block, BOOL) override { return block; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int result) override { return result; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}

private:
    std::atomic<long> m_live = 0;
};

[[nodiscard]] TaskMemorySpy& TheTaskMemory();
