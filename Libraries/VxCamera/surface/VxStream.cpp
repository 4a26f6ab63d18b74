#include "VxDSSource/camera/VxStream.h"

#include <utility>

#include "VxCamera/surface/VxStreamImpl.h"

VxStream::VxStream(std::unique_ptr<VxStreamImpl> impl) : m_impl(std::move(impl)) {}

VxStream::~VxStream() = default;

bool VxStream::IsOpen() const
{
    return m_impl->IsOpen();
}

VxResult VxStream::Close()
{
    m_impl->Close();
    return VxResult::Ok();
}

VxGenParameterArray* VxStream::GetParameters()
{
    return &m_impl->Parameters();
}
