#include "VxDSSource/stream/VideoInfoHeader2.h"

void* VideoInfoHeader2::Clear()
{
    *m_block = {};
    return m_block;
}
