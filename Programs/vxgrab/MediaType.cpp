#include "vxgrab/MediaType.h"

#include <objbase.h>

#include <utility>

namespace vxgrab {

MediaType::MediaType(MediaType&& other) noexcept : m_type(std::exchange(other.m_type, {})) {}

MediaType& MediaType::operator=(MediaType&& other) noexcept
{
    std::swap(m_type, other.m_type);
    return *this;
}

AM_MEDIA_TYPE* MediaType::Put()
{
    Reset();
    return &m_type;
}

void MediaType::Adopt(AM_MEDIA_TYPE* type)
{
    Reset();
    if (type == nullptr)
        return;
    m_type = *type; // the format block and the unknown change hands with it
    ::CoTaskMemFree(type);
}

void MediaType::Reset()
{
    ::CoTaskMemFree(m_type.pbFormat);
    if (m_type.pUnk != nullptr)
        m_type.pUnk->Release();
    m_type = {};
}

} // namespace vxgrab
