#pragma once

#include "VxCamera/pixel/VxPictureView.h"
#include "VxCamera/pixel/VxPixelFormat.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// A picture in memory of exactly its size, between canaries; padding bytes are canaries, too.
class GuardedPicture {
public:
    GuardedPicture(std::uint32_t code, std::uint32_t widthPx, std::uint32_t heightPx,
                   std::size_t rowPaddingBytes)
        : m_layout(*VxLayOutPicture(code, widthPx, heightPx, rowPaddingBytes)),
          m_code(code),
          m_widthPx(widthPx),
          m_heightPx(heightPx),
          m_rowPaddingBytes(rowPaddingBytes),
          m_bytes(m_layout.usedBytes + 2 * kCanaryBytes, kCanary)
    {
    }

    [[nodiscard]] VxWritablePictureView View()
    {
        return {std::span(m_bytes).subspan(kCanaryBytes, m_layout.usedBytes), m_code, m_widthPx, m_heightPx,
                m_rowPaddingBytes};
    }
    [[nodiscard]] VxPictureView ConstView() const
    {
        return {std::span(m_bytes).subspan(kCanaryBytes, m_layout.usedBytes), m_code, m_widthPx, m_heightPx,
                m_rowPaddingBytes};
    }

    [[nodiscard]] std::span<const std::uint8_t> MemoryRow(std::size_t y) const
    {
        return std::span(m_bytes).subspan(kCanaryBytes + y * m_layout.strideBytes, m_layout.rowBytes);
    }

    /// Whether every byte outside the part (widthPx x heightPx from the top left in memory) is a canary
    /// still.
    [[nodiscard]] bool IsIntactOutside(std::size_t usedRowBytes, std::size_t firstRow,
                                       std::size_t endRow) const
    {
        for (std::size_t i = 0; i < m_bytes.size(); ++i) {
            const std::size_t offset = i - kCanaryBytes; // wraps for the canaries in front, and is large then
            const std::size_t row = offset / m_layout.strideBytes;
            const bool isPixel = i >= kCanaryBytes && row >= firstRow && row < endRow &&
                                 offset % m_layout.strideBytes < usedRowBytes;
            if (!isPixel && m_bytes[i] != kCanary)
                return false;
        }
        return true;
    }

private:
    static constexpr std::size_t kCanaryBytes = 64;
    static constexpr std::uint8_t kCanary = 0xC5;

    VxPictureLayout m_layout;
    std::uint32_t m_code;
    std::uint32_t m_widthPx;
    std::uint32_t m_heightPx;
    std::size_t m_rowPaddingBytes;
    std::vector<std::uint8_t> m_bytes;
};
