#include "VxCamera/pixel/UnpackRows.h"

#include <array>

namespace pixel {

namespace {

struct Row {
    VxPixelPacking packing;
    unsigned bits;
    UnpackKind kind;
};

using Packing = VxPixelPacking;

constexpr std::array kRows{
    Row{Packing::Cells, 10, UnpackKind::Cells10},      Row{Packing::Cells, 12, UnpackKind::Cells12},
    Row{Packing::Cells, 14, UnpackKind::Cells14},      Row{Packing::Cells, 16, UnpackKind::Cells16},
    Row{Packing::LsbPacked, 1, UnpackKind::Stream1},   Row{Packing::LsbPacked, 2, UnpackKind::Stream2},
    Row{Packing::LsbPacked, 4, UnpackKind::Stream4},   Row{Packing::LsbPacked, 10, UnpackKind::Stream10},
    Row{Packing::LsbPacked, 12, UnpackKind::Stream12}, Row{Packing::LsbPacked, 14, UnpackKind::Stream14},
    Row{Packing::GevPacked, 10, UnpackKind::Gev},      Row{Packing::GevPacked, 12, UnpackKind::Gev},
};

} // namespace

std::optional<UnpackKind> UnpackKindOf(VxPixelPacking packing, unsigned bitsPerComponent)
{
    for (const Row& row : kRows)
        if (row.packing == packing && row.bits == bitsPerComponent)
            return row.kind;
    return std::nullopt;
}

} // namespace pixel
