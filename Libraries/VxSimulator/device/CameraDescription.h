#pragma once

#include <string>
#include <string_view>

namespace simulator {

/// Whether the camera lets an application choose among sources; many do not.
enum class SourceFeatures { Present, Absent };

/// @return  the camera's feature description as it stands in device memory; a multiple of 4 bytes long
[[nodiscard]] std::string CameraDescription(SourceFeatures sources);

/// The text of description/camera.xml, with the marks of its optional sections.
[[nodiscard]] std::string_view WholeCameraDescription();

} // namespace simulator
