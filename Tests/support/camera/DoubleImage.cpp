#include "support/camera/DoubleImage.h"

#include "support/camera/CameraDouble.h"

#include <utility>

namespace {

std::string Described(const char* how, std::uint32_t width, std::uint32_t height, std::uint32_t pixelType,
                      std::uint32_t rowPaddingBytes)
{
    char code[16];
    std::snprintf(code, sizeof(code), "%08X", pixelType);
    return std::string("image.") + how + " " + std::to_string(width) + "x" + std::to_string(height) + " " +
           code + " padding " + std::to_string(rowPaddingBytes);
}

} // namespace

VxResult DoubleImage::Alloc(std::uint32_t width, std::uint32_t height, std::uint32_t pixelType,
                            std::uint32_t rowPaddingBytes, std::uint32_t, std::uint32_t)
{
    TheCamera().log.Add(CallKind::Picture, Described("Alloc", width, height, pixelType, rowPaddingBytes));
    if (width == 0 || height == 0)
        return VxError::InvalidParameter;
    constexpr std::uint64_t kMostBytes = 1U << 30; // enough for any test
    const std::uint64_t stride = std::uint64_t{width} * ((pixelType >> 16 & 0xFF) / 8) + rowPaddingBytes;
    if (stride > kMostBytes / height)
        return VxError::OutOfMemory;
    Describe(width, height, pixelType, rowPaddingBytes);
    m_own.resize(Stride() * height);
    m_memory = m_own;
    return VxResult::Ok();
}

VxResult DoubleImage::Attach(std::span<std::uint8_t> memory, std::uint32_t width, std::uint32_t height,
                             std::uint32_t pixelType, std::uint32_t rowPaddingBytes, std::uint32_t,
                             std::uint32_t)
{
    TheCamera().log.Add(CallKind::Picture, Described("Attach", width, height, pixelType, rowPaddingBytes));
    const std::uint64_t stride = std::uint64_t{width} * ((pixelType >> 16 & 0xFF) / 8) + rowPaddingBytes;
    if (height != 0 && stride > memory.size() / height)
        return VxError::BufferTooSmall;
    Describe(width, height, pixelType, rowPaddingBytes);
    m_memory = memory;
    return VxResult::Ok();
}

void DoubleImage::Become(std::vector<std::uint8_t> bytes, std::uint32_t width, std::uint32_t height,
                         std::uint32_t pixelType, std::uint32_t rowPaddingBytes)
{
    Describe(width, height, pixelType, rowPaddingBytes);
    m_own = std::move(bytes);
    m_memory = m_own;
}

void DoubleImage::Describe(std::uint32_t width, std::uint32_t height, std::uint32_t pixelType,
                           std::uint32_t rowPaddingBytes)
{
    m_width = width;
    m_height = height;
    m_pixelType = pixelType;
    m_rowPaddingBytes = rowPaddingBytes;
}

// --- The camera surface's buffer.

VxBuffer::VxBuffer(VxPayloadType) : m_impl(std::make_unique<VxBufferImpl>())
{
    ++TheCamera().liveBuffers;
}

VxBuffer::~VxBuffer()
{
    if (!m_impl->isScripted)
        --TheCamera().liveBuffers;
}

VxResult VxBuffer::GetOperationResult() const
{
    return m_impl->operationResult;
}

VxImage* VxBuffer::GetImage()
{
    return m_impl->hasImage ? &m_impl->image : nullptr;
}

const VxImage* VxBuffer::GetImage() const
{
    return m_impl->hasImage ? &m_impl->image : nullptr;
}

VxPayloadType VxBuffer::GetPayloadType() const
{
    return m_impl->hasImage ? VxPayloadType::Image : VxPayloadType::Other;
}

std::uint64_t VxBuffer::GetBlockID() const
{
    return 0;
}

std::uint64_t VxBuffer::GetTimestamp() const
{
    return 0;
}
