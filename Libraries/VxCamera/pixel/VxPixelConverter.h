#pragma once

#include "VxBase/VxResult.h"
#include "VxCamera/pixel/VxPictureView.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace pixel {
enum class InstructionSet : std::uint8_t;
struct ConversionPlan;
struct RowKernels;
class SourceRows;
class TargetRows;
} // namespace pixel
struct VxPictureLayout;

/// Which row of the picture comes first in memory.
enum class VxRowOrder : std::uint8_t {
    TopDown,
    BottomUp, ///< as in a Windows bitmap
};

/// Converts pictures of every format that it knows to BGR8 and BGRa8.
///
/// Bayer pictures are demosaiced bilinearly: each missing colour is the mean of the two or four nearest
/// pixels of that colour, halves rounded up; at the edges the picture is continued by its mirror image about
/// the outermost pixel. Brightness and colour differences follow the matrix and range that the format's name
/// implies. Components of more than 8 bits keep the highest 8. Alpha is kept where the source has it, and
/// opaque where it does not. Single planes and sparse colour patterns become grey; of two colours per pixel
/// the third is the mean of the rows above and below.
///
/// Owner:  anybody, by value.
/// Thread: one at a time. Temporary memory is kept from picture to picture; it starts no threads.
class VxPixelConverter {
public:
    /// Uses the best instructions that the processor has.
    VxPixelConverter();

    /// @param set  must be available; every set gives the same pictures
    explicit VxPixelConverter(pixel::InstructionSet set);

    /// @return  whether there is a way from one format to the other: OK, or NOT_SUPPORTED, which names both
    [[nodiscard]] static VxResult CheckFormats(std::uint32_t sourceCode, std::uint32_t destinationCode);

    /// Writes the source into the destination. When sizes differ, the part that both have is written, from
    /// the first pixel of the first row on; no other byte of the destination changes, its row padding
    /// included.
    ///
    /// @param source, destination  must not overlap in memory; only the rows of a source can run together
    /// @param order                of the destination; sources are top down
    /// @return  NOT_SUPPORTED when there is no way between the formats; INVALID_PARAMETER for a picture
    ///          without size, with a size that overflows, with less memory than the source needs, with rows
    ///          that run together in a format of which nobody says how, or for overlapping pictures;
    ///          BUFFER_TOO_SMALL when the destination's memory is; OUT_OF_MEMORY. The destination is
    ///          untouched then.
    VxResult Convert(const VxPictureView& source, const VxWritablePictureView& destination, VxRowOrder order);

private:
    [[nodiscard]] bool PrepareMemory(const pixel::ConversionPlan& plan, const VxPictureView& source,
                                     std::size_t targetRowBytes);
    [[nodiscard]] pixel::SourceRows RowsOf(const pixel::ConversionPlan& plan, const VxPictureView& source,
                                           const VxPictureLayout& layout, std::size_t plane);
    void ConvertRows(const pixel::ConversionPlan& plan, pixel::SourceRows& source,
                     const pixel::TargetRows& target) const;
    void ConvertPlanes(const pixel::ConversionPlan& plan, const VxPictureView& source,
                       const VxPictureLayout& layout, const pixel::TargetRows& target);
    void ConvertSemiplanar(const pixel::ConversionPlan& plan, const VxPictureView& source,
                           const VxPictureLayout& layout, const pixel::TargetRows& target);
    void ConvertBiColor(const pixel::ConversionPlan& plan, pixel::SourceRows& source, std::size_t sourceRows,
                        const pixel::TargetRows& target) const;
    void ConvertBayer(const pixel::ConversionPlan& plan, pixel::SourceRows& source, std::size_t sourceRows,
                      const pixel::TargetRows& target);

    const pixel::RowKernels& m_kernels; // static storage
    std::vector<std::uint8_t> m_unpackedRows;
    std::vector<std::uint8_t> m_spareRow; // what is computed for a second row that does not exist
};
