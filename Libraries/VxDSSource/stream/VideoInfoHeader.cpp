#include "VxDSSource/stream/VideoInfoHeader.h"

void* VideoInfoHeader::Clear()
{
    *m_block = {};
    return m_block;
}
