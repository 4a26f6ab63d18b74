/* The control interface as a client in plain C sees it: nothing but this header, and the table's places by
 * number. */
#include "VxDSSource/filter/IVxDSSource.h"

#include <stddef.h>

#define PLACE(method) (offsetof(IVxDSSourceVtbl, method) / sizeof(void*))

/* The first three are IUnknown's; the methods follow in their order. */
_Static_assert(PLACE(QueryInterface) == 0, "first of IUnknown");
_Static_assert(PLACE(Release) == 2, "last of IUnknown");
_Static_assert(PLACE(GetRole) == 2 + 1, "first");
_Static_assert(PLACE(Disconnect) == 2 + 13, "13th");
_Static_assert(PLACE(Connect) == 2 + 14, "14th");
_Static_assert(PLACE(SetHeight) == 2 + 30, "30th");
_Static_assert(PLACE(SetParameterValue) == 2 + 38, "38th");
_Static_assert(PLACE(GetParameterVisibility) == 2 + 44, "44th");
_Static_assert(PLACE(SetOutputSize) == 2 + 52, "52nd");
_Static_assert(PLACE(GetDefaultSummary) == 2 + 55, "last");
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
