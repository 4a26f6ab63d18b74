#include "VxCamera/surface/StreamLinks.h"

#include "VxBase/VxMutex.h"
#include "VxCamera/surface/VxStreamImpl.h"

namespace {

VxMutex g_mutex;                                                  // ends with the module, after every stream
constinit VxStreamImpl* g_first VX_GUARDED_BY(g_mutex) = nullptr; // a chain through nextStream

} // namespace

void StreamLinks::Add(VxStreamImpl& stream)
{
    const VxLock lock(g_mutex);
    stream.nextStream = g_first;
    g_first = &stream;
}

void StreamLinks::Remove(VxStreamImpl& stream)
{
    const VxLock lock(g_mutex);
    VxStreamImpl** place = &g_first;
    while (*place != nullptr && *place != &stream)
        place = &(*place)->nextStream;
    if (*place != nullptr)
        *place = stream.nextStream;
}

void StreamLinks::Connect(const transport::Ipv4Endpoint& receiver,
                          const std::shared_ptr<const receive::StreamLink>& link)
{
    const VxLock lock(g_mutex);
    for (VxStreamImpl* stream = g_first; stream != nullptr; stream = stream->nextStream)
        stream->TakeLink(receiver, link);
}

void StreamLinks::TellPicture(const std::shared_ptr<const receive::StreamLink>& link,
                              const std::optional<receive::PictureShape>& picture)
{
    const VxLock lock(g_mutex);
    for (VxStreamImpl* stream = g_first; stream != nullptr; stream = stream->nextStream)
        stream->TakePicture(link, picture);
}

void StreamLinks::Disconnect(const std::shared_ptr<const receive::StreamLink>& link)
{
    const VxLock lock(g_mutex);
    for (VxStreamImpl* stream = g_first; stream != nullptr; stream = stream->nextStream)
        stream->DropLink(link);
}
