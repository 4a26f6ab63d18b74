#include "VxCamera/surface/PictureMemory.h"

#include <new>
#include <string>

#include "VxBase/VxExpected.h"
#include "VxCamera/pixel/VxPixelFormat.h"

namespace {

/// @return  "640x480 Mono8 (0x01080001)"
std::string PictureText(const PictureGeometry& picture)
{
    return std::to_string(picture.widthPx) + "x" + std::to_string(picture.heightPx) + " " +
           VxPixelFormatText(picture.pixelType);
}

VxExpected<std::size_t> BytesOf(const PictureGeometry& geometry)
{
    const auto joined = VxJoinedPictureBytes(geometry.pixelType, geometry.widthPx, geometry.heightPx);
    if (geometry.areLinesJoined && joined)
        return *joined;
    const auto layout =
        VxLayOutPicture(geometry.pixelType, geometry.widthPx, geometry.heightPx, geometry.rowPaddingBytes);
    if (!layout || geometry.areLinesJoined)
        return VxResult(VxError::InvalidParameter, "no picture has " + PictureText(geometry) + " with " +
                                                       std::to_string(geometry.rowPaddingBytes) +
                                                       " bytes of row padding");
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

void PictureMemory::Detach()
{
    Clear();
    m_memory = {m_own.get(), m_ownBytes};
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
    m_given = AllocFor({width, height, pixelType, rowPaddingBytes, offsetX, offsetY});
    return m_given;
}

VxResult PictureMemory::AllocFor(const PictureGeometry& geometry)
{
    const auto bytes = BytesOf(geometry);
    if (!bytes)
        return bytes.Error();
    if (const VxResult reserved = Reserve(*bytes); !reserved.IsOK())
        return {reserved.Code(), "no memory for the " + std::to_string(*bytes) + " bytes of the picture, " +
                                     PictureText(geometry)};
    return Describe(geometry);
}

VxResult PictureMemory::Attach(std::span<std::uint8_t> memory, std::uint32_t width, std::uint32_t height,
                               std::uint32_t pixelType, std::uint32_t rowPaddingBytes, std::uint32_t offsetX,
                               std::uint32_t offsetY)
{
    m_given = AttachFor(memory, {width, height, pixelType, rowPaddingBytes, offsetX, offsetY});
    return m_given;
}

VxResult PictureMemory::AttachFor(std::span<std::uint8_t> memory, const PictureGeometry& geometry)
{
    const auto bytes = BytesOf(geometry);
    if (!bytes)
        return bytes.Error();
    if (*bytes > memory.size())
        return VxResult(VxError::BufferTooSmall, "the picture, " + PictureText(geometry) + ", takes " +
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
