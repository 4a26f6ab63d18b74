#pragma once

#include "VxDSSource/camera/VxImage.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

/// Where a picture lies on the sensor and how its rows lie in memory.
struct PictureGeometry {
    std::uint32_t widthPx = 0;
    std::uint32_t heightPx = 0;
    std::uint32_t pixelType = 0;
    std::uint32_t rowPaddingBytes = 0;
    std::uint32_t offsetXPx = 0;
    std::uint32_t offsetYPx = 0;
    bool areLinesJoined =
        false; ///< packed rows that run together: each begins at the bit behind the last one
};

/// The picture of a buffer: memory of its own or of somebody else, and the geometry of what is in it.
///
/// Owner:  its VxBuffer, by value.
/// Thread: that of the buffer.
class PictureMemory final : public VxImage {
public:
    PictureMemory() = default;

    [[nodiscard]] const std::uint8_t* GetDataPointer() const override { return m_memory.data(); }
    [[nodiscard]] std::uint8_t* GetDataPointer() override { return m_memory.data(); }
    [[nodiscard]] std::uint32_t GetWidth() const override { return m_geometry.widthPx; }
    [[nodiscard]] std::uint32_t GetHeight() const override { return m_geometry.heightPx; }
    [[nodiscard]] std::uint32_t GetPixelType() const override { return m_geometry.pixelType; }
    [[nodiscard]] std::uint32_t GetRowPadding() const override { return m_geometry.rowPaddingBytes; }
    [[nodiscard]] std::size_t GetSize() const override { return m_pictureBytes; }

    VxResult Alloc(std::uint32_t width, std::uint32_t height, std::uint32_t pixelType,
                   std::uint32_t rowPaddingBytes, std::uint32_t offsetX, std::uint32_t offsetY) override;
    VxResult Attach(std::span<std::uint8_t> memory, std::uint32_t width, std::uint32_t height,
                    std::uint32_t pixelType, std::uint32_t rowPaddingBytes, std::uint32_t offsetX,
                    std::uint32_t offsetY) override;

    /// @return  what the latest Alloc or Attach has said; NOT_INITIALIZED before
    [[nodiscard]] const VxResult& Given() const { return m_given; }

    /// Gives the picture at least this much memory of its own, without a picture in it; more is kept.
    /// @return  OUT_OF_MEMORY; the present memory then stays
    VxResult Reserve(std::size_t bytes);

    /// Gives its own memory back to the system; without a picture from then on.
    void Release();

    /// Goes back from attached memory to its own; without a picture from then on.
    void Detach();

    /// All memory behind the picture, for a receiver to write into; empty before Reserve.
    [[nodiscard]] std::span<std::uint8_t> Memory() { return m_memory; }
    [[nodiscard]] std::span<const std::uint8_t> Memory() const { return m_memory; }

    /// Says what was written into the memory.
    /// @return  BUFFER_TOO_SMALL when the geometry needs more memory than there is, INVALID_PARAMETER when it
    ///          makes no picture; the buffer then holds none
    VxResult Describe(const PictureGeometry& geometry);

    /// Whether the rows of the picture run together instead of beginning with a byte; only a received picture
    /// can be so.
    [[nodiscard]] bool AreLinesJoined() const { return m_geometry.areLinesJoined; }

    /// Forgets the picture, not the memory.
    void Clear();

private:
    VxResult AllocFor(const PictureGeometry& geometry);
    VxResult AttachFor(std::span<std::uint8_t> memory, const PictureGeometry& geometry);

    std::unique_ptr<std::uint8_t[]> m_own; // not cleared when allocated: a receiver overwrites it
    std::size_t m_ownBytes = 0;
    std::span<std::uint8_t> m_memory; // borrowed from m_own, or attached: the caller of Attach keeps it alive
    PictureGeometry m_geometry;
    std::size_t m_pictureBytes = 0;
    VxResult m_given;
};
