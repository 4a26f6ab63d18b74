#include "VxDSSource/Utils/MediaTypeNames.h"

#include "VxDSSource/Utils/MediaTypeGuids.h"

#include <uuids.h>

#include <algorithm>
#include <array>

namespace vxds {

namespace {

// The name of a row is that of its constant.
#define VX_NAMED(constant)                                                                                   \
    NamedGuid                                                                                                \
    {                                                                                                        \
        &(constant), #constant                                                                               \
    }

constexpr std::array kMajorTypes = {
    VX_NAMED(MEDIATYPE_AnalogAudio), VX_NAMED(MEDIATYPE_AnalogVideo),
    VX_NAMED(MEDIATYPE_Audio),       VX_NAMED(MEDIATYPE_AUXLine21Data),
    VX_NAMED(MEDIATYPE_File),        VX_NAMED(MEDIATYPE_Interleaved),
    VX_NAMED(MEDIATYPE_LMRT),        VX_NAMED(MEDIATYPE_Midi),
    VX_NAMED(MEDIATYPE_MPEG2_PES),   VX_NAMED(MEDIATYPE_ScriptCommand),
    VX_NAMED(MEDIATYPE_Stream),      VX_NAMED(MEDIATYPE_Text),
    VX_NAMED(MEDIATYPE_Timecode),    NamedGuid{&kMajorTypeUrlStream, "MEDIATYPE_URL_STREAM"},
    VX_NAMED(MEDIATYPE_VBI),         VX_NAMED(MEDIATYPE_Video),
};

constexpr std::array kSubtypes = {
    VX_NAMED(MEDIASUBTYPE_RGB1),
    VX_NAMED(MEDIASUBTYPE_RGB4),
    VX_NAMED(MEDIASUBTYPE_RGB8),
    VX_NAMED(MEDIASUBTYPE_RGB555),
    VX_NAMED(MEDIASUBTYPE_RGB565),
    VX_NAMED(MEDIASUBTYPE_RGB24),
    VX_NAMED(MEDIASUBTYPE_RGB32),
    VX_NAMED(MEDIASUBTYPE_ARGB1555),
    VX_NAMED(MEDIASUBTYPE_ARGB32),
    VX_NAMED(MEDIASUBTYPE_ARGB4444),
    VX_NAMED(MEDIASUBTYPE_A2R10G10B10),
    VX_NAMED(MEDIASUBTYPE_A2B10G10R10),
    VX_NAMED(MEDIASUBTYPE_RGB32_D3D_DX7_RT),
    VX_NAMED(MEDIASUBTYPE_RGB16_D3D_DX7_RT),
    VX_NAMED(MEDIASUBTYPE_ARGB32_D3D_DX7_RT),
    VX_NAMED(MEDIASUBTYPE_ARGB4444_D3D_DX7_RT),
    VX_NAMED(MEDIASUBTYPE_ARGB1555_D3D_DX7_RT),
    VX_NAMED(MEDIASUBTYPE_RGB32_D3D_DX9_RT),
    VX_NAMED(MEDIASUBTYPE_RGB16_D3D_DX9_RT),
    VX_NAMED(MEDIASUBTYPE_ARGB32_D3D_DX9_RT),
    VX_NAMED(MEDIASUBTYPE_ARGB4444_D3D_DX9_RT),
    VX_NAMED(MEDIASUBTYPE_ARGB1555_D3D_DX9_RT),
    VX_NAMED(MEDIASUBTYPE_AYUV),
    VX_NAMED(MEDIASUBTYPE_YUY2),
    VX_NAMED(MEDIASUBTYPE_UYVY),
    VX_NAMED(MEDIASUBTYPE_IMC1),
    VX_NAMED(MEDIASUBTYPE_IMC3),
    VX_NAMED(MEDIASUBTYPE_IMC2),
    VX_NAMED(MEDIASUBTYPE_IMC4),
    VX_NAMED(MEDIASUBTYPE_YV12),
    VX_NAMED(MEDIASUBTYPE_NV12),
    VX_NAMED(MEDIASUBTYPE_IF09),
    VX_NAMED(MEDIASUBTYPE_IYUV),
    VX_NAMED(MEDIASUBTYPE_Y211),
    VX_NAMED(MEDIASUBTYPE_Y411),
    VX_NAMED(MEDIASUBTYPE_Y41P),
    VX_NAMED(MEDIASUBTYPE_YVU9),
    VX_NAMED(MEDIASUBTYPE_YVYU),
    VX_NAMED(MEDIASUBTYPE_dvsl),
    VX_NAMED(MEDIASUBTYPE_dvsd),
    VX_NAMED(MEDIASUBTYPE_dvhd),
    VX_NAMED(MEDIASUBTYPE_dv25),
    VX_NAMED(MEDIASUBTYPE_dv50),
    VX_NAMED(MEDIASUBTYPE_dvh1),
    VX_NAMED(MEDIASUBTYPE_DVCS),
    VX_NAMED(MEDIASUBTYPE_DVSD),
    NamedGuid{&kSubtypeH264, "MEDIASUBTYPE_H264"},
    VX_NAMED(MEDIASUBTYPE_AI44),
    VX_NAMED(MEDIASUBTYPE_IA44),
    VX_NAMED(MEDIASUBTYPE_CFCC),
    VX_NAMED(MEDIASUBTYPE_CLJR),
    VX_NAMED(MEDIASUBTYPE_CPLA),
    VX_NAMED(MEDIASUBTYPE_CLPL),
    VX_NAMED(MEDIASUBTYPE_IJPG),
    VX_NAMED(MEDIASUBTYPE_MDVF),
    VX_NAMED(MEDIASUBTYPE_MJPG),
    VX_NAMED(MEDIASUBTYPE_Overlay),
    VX_NAMED(MEDIASUBTYPE_Plum),
    VX_NAMED(MEDIASUBTYPE_QTJpeg),
    VX_NAMED(MEDIASUBTYPE_QTMovie),
    VX_NAMED(MEDIASUBTYPE_QTRle),
    VX_NAMED(MEDIASUBTYPE_QTRpza),
    VX_NAMED(MEDIASUBTYPE_QTSmc),
    VX_NAMED(MEDIASUBTYPE_TVMJ),
    VX_NAMED(MEDIASUBTYPE_VPVBI),
    VX_NAMED(MEDIASUBTYPE_VPVideo),
    VX_NAMED(MEDIASUBTYPE_WAKE),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_NTSC_M),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_PAL_B),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_PAL_D),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_PAL_G),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_PAL_H),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_PAL_I),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_PAL_M),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_PAL_N),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_SECAM_B),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_SECAM_D),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_SECAM_G),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_SECAM_H),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_SECAM_K),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_SECAM_K1),
    VX_NAMED(MEDIASUBTYPE_AnalogVideo_SECAM_L),
};

constexpr std::array kFormatTypes = {
    VX_NAMED(FORMAT_DvInfo),     VX_NAMED(FORMAT_MPEG2Video),   VX_NAMED(FORMAT_MPEGStreams),
    VX_NAMED(FORMAT_MPEGVideo),  VX_NAMED(FORMAT_None),         VX_NAMED(FORMAT_VideoInfo),
    VX_NAMED(FORMAT_VideoInfo2), VX_NAMED(FORMAT_WaveFormatEx),
};

#undef VX_NAMED

} // namespace

std::span<const NamedGuid> MajorTypeNames()
{
    return kMajorTypes;
}

std::span<const NamedGuid> SubtypeNames()
{
    return kSubtypes;
}

std::span<const NamedGuid> FormatTypeNames()
{
    return kFormatTypes;
}

const char* NameIn(std::span<const NamedGuid> table, const GUID& id)
{
    const auto row = std::ranges::find_if(table, [&](const NamedGuid& each) { return *each.id == id; });
    return row != table.end() ? row->name : nullptr;
}

} // namespace vxds
