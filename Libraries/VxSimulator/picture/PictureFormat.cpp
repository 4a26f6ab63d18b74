#include "VxSimulator/picture/PictureFormat.h"

#include <algorithm>
#include <array>

namespace simulator {

namespace {

// Codes fixed by the pixel format naming convention.
constexpr std::array kFormats{
    PictureFormat{"Mono8", 0x01080001, PixelLayout::Grey, 1},
    PictureFormat{"BayerGR8", 0x01080008, PixelLayout::BayerGR, 1},
    PictureFormat{"BayerRG8", 0x01080009, PixelLayout::BayerRG, 1},
    PictureFormat{"BayerGB8", 0x0108000A, PixelLayout::BayerGB, 1},
    PictureFormat{"BayerBG8", 0x0108000B, PixelLayout::BayerBG, 1},
    PictureFormat{"RGB8", 0x02180014, PixelLayout::Rgb, 3},
    PictureFormat{"BGR8", 0x02180015, PixelLayout::Bgr, 3},
    PictureFormat{"RGBa8", 0x02200016, PixelLayout::Rgba, 4},
    PictureFormat{"BGRa8", 0x02200017, PixelLayout::Bgra, 4},
    PictureFormat{"YUV422_8", 0x02100032, PixelLayout::Yuyv, 2},
    PictureFormat{"YUV422_8_UYVY", 0x0210001F, PixelLayout::Uyvy, 2},
};

template <typename Key, typename Member>
const PictureFormat* Find(const Key& key, Member member)
{
    const auto found = std::ranges::find(kFormats, key, member);
    return found != kFormats.end() ? &*found : nullptr;
}

} // namespace

std::span<const PictureFormat> PictureFormats()
{
    return kFormats;
}

const PictureFormat* FindPictureFormat(std::uint32_t code)
{
    return Find(code, &PictureFormat::code);
}

const PictureFormat* FindPictureFormat(std::string_view name)
{
    return Find(name, &PictureFormat::name);
}

} // namespace simulator
