/* The control interface as a client in plain C sees it: nothing but this header, and the table's places by
 * number. */
#include "VxDSSource/filter/IVxDSSource.h"

#include <stddef.h>

#define PLACE(method) (offsetof(IVxDSSourceVtbl, method) / sizeof(void*))
#define METHOD(number, name) _Static_assert(PLACE(name) == 2 + (number), #name)

/* The first three are IUnknown's; the methods follow in their order. */
_Static_assert(PLACE(QueryInterface) == 0, "first of IUnknown");
_Static_assert(PLACE(Release) == 2, "last of IUnknown");
METHOD(1, GetRole);
METHOD(2, SetRole);
METHOD(3, GetUnicastPort);
METHOD(4, SetUnicastPort);
METHOD(5, GetMulticastAddress);
METHOD(6, SetMulticastAddress);
METHOD(7, GetMulticastPort);
METHOD(8, SetMulticastPort);
METHOD(9, GetDiagnosticsEnabled);
METHOD(10, SetDiagnosticsEnabled);
METHOD(11, GetDeviceId);
METHOD(12, SetDeviceId);
METHOD(13, Disconnect);
METHOD(14, Connect);
METHOD(15, GetSourceCount);
METHOD(16, GetSourceName);
METHOD(17, GetParamSource);
METHOD(18, SetParamSource);
METHOD(19, GetParamChannel);
METHOD(20, SetParamChannel);
METHOD(21, GetBufferCount);
METHOD(22, SetBufferCount);
METHOD(23, GetDefaultBufferSize);
METHOD(24, SetDefaultBufferSize);
METHOD(25, GetDropThreshold);
METHOD(26, SetDropThreshold);
METHOD(27, GetWidth);
METHOD(28, SetWidth);
METHOD(29, GetHeight);
METHOD(30, SetHeight);
METHOD(31, GetParameterArray);
METHOD(32, SetParameterArray);
METHOD(33, IsParameterArrayAvailable);
METHOD(34, GetParameterCount);
METHOD(35, GetParameterName);
METHOD(36, GetParameterCategory);
METHOD(37, GetParameterValue);
METHOD(38, SetParameterValue);
METHOD(39, GetParameterType);
METHOD(40, GetParameterAccess);
METHOD(41, ExecuteCommand);
METHOD(42, GetEnumEntryCount);
METHOD(43, GetEnumEntryName);
METHOD(44, GetParameterVisibility);
METHOD(45, GetOutputPixelType);
METHOD(46, SetOutputPixelType);
METHOD(47, GetKernelSize);
METHOD(48, SetKernelSize);
METHOD(49, GetZoomValue);
METHOD(50, SetZoomValue);
METHOD(51, GetOutputSize);
METHOD(52, SetOutputSize);
METHOD(53, SaveDefault);
METHOD(54, ClearDefault);
METHOD(55, GetDefaultSummary);
_Static_assert(sizeof(IVxDSSourceVtbl) == 58 * sizeof(void*), "55 methods behind IUnknown's three");

/* Called from C++: a getter through the table. */
HRESULT ReadZoomInC(IVxDSSource* control, UINT* zoom);

HRESULT ReadZoomInC(IVxDSSource* control, UINT* zoom)
{
    IVxDSSource* again = NULL;
    HRESULT result = control->lpVtbl->QueryInterface(control, &IID_IVxDSSource, (void**)&again);
    if (FAILED(result))
        return result;
    result = again->lpVtbl->GetZoomValue(again, zoom);
    again->lpVtbl->Release(again);
    return result;
}
