#include "VxDSSource/stream/IVideoInfoHeader.h"

#include "VxDSSource/stream/VideoInfoHeader.h"
#include "VxDSSource/stream/VideoInfoHeader2.h"

#include <uuids.h>

std::unique_ptr<IVideoInfoHeader> MakeVideoInfoHeader(AM_MEDIA_TYPE& type)
{
    if (type.pbFormat == nullptr)
        return nullptr;
    if (type.formattype == FORMAT_VideoInfo2 && type.cbFormat >= sizeof(VIDEOINFOHEADER2))
        return std::make_unique<VideoInfoHeader2>(reinterpret_cast<VIDEOINFOHEADER2*>(type.pbFormat));
    if (type.formattype == FORMAT_VideoInfo && type.cbFormat >= sizeof(VIDEOINFOHEADER))
        return std::make_unique<VideoInfoHeader>(reinterpret_cast<VIDEOINFOHEADER*>(type.pbFormat));
    return nullptr;
}
