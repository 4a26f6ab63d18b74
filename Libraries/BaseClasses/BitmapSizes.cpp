#include "BaseClasses/BitmapSizes.h"

DWORD WINAPI GetBitmapSize(const BITMAPINFOHEADER* header)
{
    return DIBSIZE(*header);
}
