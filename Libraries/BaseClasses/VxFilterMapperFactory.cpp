#include "BaseClasses/VxFilterMapperFactory.h"

#include <objbase.h>

#include <uuids.h>

HRESULT VxFilterMapperFactory::CreateMapper2(IFilterMapper2** mapper)
{
    return ::CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper2,
                              reinterpret_cast<void**>(mapper));
}

HRESULT VxFilterMapperFactory::CreateMapper(IFilterMapper** mapper)
{
    return ::CoCreateInstance(CLSID_FilterMapper, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper,
                              reinterpret_cast<void**>(mapper));
}
