#include "VxCamera/surface/PictureMemory.h"

#include <new>
#include <string>

#include "VxBase/VxExpected.h"
#include "VxCamera/pixel/VxPixelFormat.h"

namespace {

std::string PictureText(std::uint32_t width, std::uint32_t height, std::uint32_t bitsPerPixel)
{
    return std::to_string(width) + " x " + std::to_string(height) + " pixels of " +
           std::to_string(bitsPerPixel) + " bits";
}

VxExpected<std::size_t> BytesOf(const PictureGeometry& geometry)
{
    const auto layout =
        VxLayOutPicture(geometry.pixelType, geometry.widthPx, geometry.heightPx, geometry.rowPaddingBytes);
    if (!layout)
        return VxResult(VxError::InvalidParameter,
                        "no picture has " + PictureText(geometry.widthPx, geometry.heightPx,
                                                        VxBitsPerPixel(geometry.pixelType)));
    return layout->usedBytes; // the padding behind the last row need not be there
}

} // namespace

VxResult PictureMemory::Reserve(std::size_t bytes)
{
    if (bytes > m_ownBytes) {
        auto* const memory = new (std::nothrow) std::uint8_t[bytes];
        if (memory == nullptr)
            return VxResult(VxError::OutOfMemory, "a buffer of " + std::to_string(bytes) + " bytes");
        m_own.reset(memory);
        m_ownBytes = bytes;
    }
    m_memory = {m_own.get(), m_ownBytes};
    Clear();
    return VxResult::Ok();
}

void PictureMemory::Release()
{
    Clear();
    m_memory = {};
    m_own.reset();
    m_ownBytes = 0;
}

VxResult PictureMemory::Describe(const PictureGeometry& geometry)
{
    Clear();
    const auto bytes = BytesOf(geometry);
    if (!bytes)
        return bytes.Error();
    if (*bytes > m_memory.size())
        return VxResult(VxError::BufferTooSmall, "the picture takes " + std::to_string(*bytes) +
                                                     " bytes, the buffer has " +
                                                     std::to_string(m_memory.size()));
    m_geometry = geometry;
    m_pictureBytes = *bytes;
    return VxResult::Ok();
}

VxResult PictureMemory::Alloc(std::uint32_t width, std::uint32_t height, std::uint32_t pixelType,
                              std::uint32_t rowPaddingBytes, std::uint32_t offsetX, std::uint32_t offsetY)
{
    const PictureGeometry geometry{width, height, pixelType, rowPaddingBytes, offsetX, offsetY};
    const auto bytes = BytesOf(geometry);
    if (!bytes)
        return bytes.Error();
    if (const VxResult reserved = Reserve(*bytes); !reserved.IsOK())
        return reserved;
    return Describe(geometry);
}

VxResult PictureMemory::Attach(std::span<std::uint8_t> memory, std::uint32_t width, std::uint32_t height,
                               std::uint32_t pixelType, std::uint32_t rowPaddingBytes, std::uint32_t offsetX,
                               std::uint32_t offsetY)
{
    const PictureGeometry geometry{width, height, pixelType, rowPaddingBytes, offsetX, offsetY};
    const auto bytes = BytesOf(geometry);
    if (!bytes)
        return bytes.Error();
    if (*bytes > memory.size())
        return VxResult(VxError::BufferTooSmall,
                        "the picture, " + PictureText(width, height, VxBitsPerPixel(pixelType)) + ", takes " +
                            std::to_string(*bytes) + " bytes, the memory has " +
                            std::to_string(memory.size()));
    m_memory = memory;
    return Describe(geometry);
}

void PictureMemory::Clear()
{
    m_geometry = {};
    m_pictureBytes = 0;
}
