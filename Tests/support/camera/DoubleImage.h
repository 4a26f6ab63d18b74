#pragma once

#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxImage.h"

#include <vector>

/// A picture in memory of its own or in foreign memory.
///
/// Owner:  VxBufferImpl, by value.
/// Thread: one at a time.
class DoubleImage final : public VxImage {
public:
    [[nodiscard]] const std::uint8_t* GetDataPointer() const override { return m_memory.data(); }
    [[nodiscard]] std::uint8_t* GetDataPointer() override { return m_memory.data(); }
    [[nodiscard]] std::uint32_t GetWidth() const override { return m_width; }
    [[nodiscard]] std::uint32_t GetHeight() const override { return m_height; }
    [[nodiscard]] std::uint32_t GetPixelType() const override { return m_pixelType; }
    [[nodiscard]] std::uint32_t GetRowPadding() const override { return m_rowPaddingBytes; }
    [[nodiscard]] std::size_t GetSize() const override { return m_memory.size(); }
    VxResult Alloc(std::uint32_t width, std::uint32_t height, std::uint32_t pixelType,
                   std::uint32_t rowPaddingBytes, std::uint32_t offsetX, std::uint32_t offsetY) override;
    VxResult Attach(std::span<std::uint8_t> memory, std::uint32_t width, std::uint32_t height,
                    std::uint32_t pixelType, std::uint32_t rowPaddingBytes, std::uint32_t offsetX,
                    std::uint32_t offsetY) override;

    /// Takes bytes as they are, without a check against the size.
    void Become(std::vector<std::uint8_t> bytes, std::uint32_t width, std::uint32_t height,
                std::uint32_t pixelType, std::uint32_t rowPaddingBytes);

    [[nodiscard]] std::size_t BytesPerPixel() const { return (m_pixelType >> 16 & 0xFF) / 8; }
    [[nodiscard]] std::size_t Stride() const { return m_width * BytesPerPixel() + m_rowPaddingBytes; }

private:
    void Describe(std::uint32_t width, std::uint32_t height, std::uint32_t pixelType,
                  std::uint32_t rowPaddingBytes);

    std::vector<std::uint8_t> m_own;
    std::span<std::uint8_t> m_memory;
    std::uint32_t m_width = 0;
    std::uint32_t m_height = 0;
    std::uint32_t m_pixelType = 0;
    std::uint32_t m_rowPaddingBytes = 0;
};

/// What is behind a buffer of the double.
class VxBufferImpl {
public:
    VxResult operationResult; // NOT_INITIALIZED for a buffer that was never filled
    DoubleImage image;
    bool hasImage = true;
    bool isScripted = false; // one that a pipeline hands out
};
