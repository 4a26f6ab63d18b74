#pragma once

#include <string>
#include <vector>

class VxSystem;

namespace vxctl {

/// A camera as a user sees it in the list.
struct CameraRow {
    std::string id; ///< what every command accepts as CAMERA
    std::string type;
    std::string manufacturer;
    std::string model;
    std::string serial;
    std::string userName;
    std::string address;
    std::string interface;
    std::string state; ///< "ready", or what stands in the way of a connection
};

/// @param system  after its Find
[[nodiscard]] std::vector<CameraRow> RowsOf(const VxSystem& system);

/// Says of each camera what stands in the way of a connection.
/// @param isValid  for each row, whether the camera's network set-up allows a connection
void TellStates(std::vector<CameraRow>& rows, const std::vector<bool>& isValid);

[[nodiscard]] std::string CameraTableText(const std::vector<CameraRow>& rows);

/// An array of objects.
[[nodiscard]] std::string CameraTableJson(const std::vector<CameraRow>& rows);

/// What a user can do about the states in the list; empty when all is well.
[[nodiscard]] std::string CameraAdvice(const std::vector<CameraRow>& rows);

} // namespace vxctl
