#include "BaseClasses/MemoryAllocator.h"

#include <objbase.h>

#include <uuids.h>

STDAPI CreateMemoryAllocator(IMemAllocator** allocator)
{
    if (allocator == nullptr)
        return E_POINTER;
    return ::CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator,
                              reinterpret_cast<void**>(allocator));
}
