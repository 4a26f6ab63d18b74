#pragma once

#include "VxBase/VxResult.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// A picture in memory: rows from top to bottom, each followed by its padding.
///
/// Owner:  its VxBuffer.
/// Thread: that of the buffer.
class VxImage {
public:
    VxImage(const VxImage&) = delete;
    VxImage& operator=(const VxImage&) = delete;
    virtual ~VxImage() = default;

    /// First byte of the pixels; null while there is no memory.
    [[nodiscard]] virtual const std::uint8_t* GetDataPointer() const = 0;
    [[nodiscard]] virtual std::uint8_t* GetDataPointer() = 0;

    [[nodiscard]] virtual std::uint32_t GetWidth() const = 0;  ///< pixels
    [[nodiscard]] virtual std::uint32_t GetHeight() const = 0; ///< pixels

    /// 32-bit code of the pixel format naming convention, for instance 0x01080001 (Mono8).
    [[nodiscard]] virtual std::uint32_t GetPixelType() const = 0;

    /// Bytes between the end of one row's pixels and the start of the next row.
    [[nodiscard]] virtual std::uint32_t GetRowPadding() const = 0;

    /// Bytes of memory behind GetDataPointer that belong to the picture.
    [[nodiscard]] virtual std::size_t GetSize() const = 0;

    /// Gives the picture memory of its own; present memory is reused when it is large enough.
    /// @param width, height     pixels, not 0
    /// @param pixelType         format code
    /// @param rowPaddingBytes   bytes behind each row
    /// @param offsetX, offsetY  position of the picture on the sensor, pixels
    /// @return  NOT_SUPPORTED for an unknown format, INVALID_PARAMETER when the size overflows, OUT_OF_MEMORY
    virtual VxResult Alloc(std::uint32_t width, std::uint32_t height, std::uint32_t pixelType,
                           std::uint32_t rowPaddingBytes, std::uint32_t offsetX, std::uint32_t offsetY) = 0;

    /// Lets the picture describe foreign memory, which must outlive this use.
    /// @param memory  at least as many bytes as the picture needs, else BUFFER_TOO_SMALL and nothing changes
    virtual VxResult Attach(std::span<std::uint8_t> memory, std::uint32_t width, std::uint32_t height,
                            std::uint32_t pixelType, std::uint32_t rowPaddingBytes, std::uint32_t offsetX,
                            std::uint32_t offsetY) = 0;

protected:
    VxImage() = default;
};
