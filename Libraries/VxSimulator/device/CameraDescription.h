#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace simulator {

/// Whether the camera lets an application choose among sources; many do not.
enum class SourceFeatures { Present, Absent };

/// @param leastBytes  a shorter one is filled up with a comment
/// @return  the camera's feature description as it stands in device memory; a multiple of 4 bytes long
[[nodiscard]] std::string CameraDescription(SourceFeatures sources, std::size_t leastBytes = 0);

/// The text of description/camera.xml, with the marks of its optional sections.
[[nodiscard]] std::string_view WholeCameraDescription();

} // namespace simulator
