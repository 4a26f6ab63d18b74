#pragma once

#include "VxCamera/transport/Ipv4Address.h"
#include "VxDSSource/camera/VxGenTypes.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vxctl {

enum class Action { List, ForceIp, Features, Get, Set, Execute, Save, Load };

/// How results are written.
enum class Form {
    Text, ///< for people
    Json, ///< for programs
};

/// Whose features are meant.
enum class Subject {
    Camera,
    Link, ///< the connection between this host and the camera
};

struct Assignment {
    std::string name;
    std::string value;
};

/// A new network set-up for a camera.
struct ForcedAddress {
    transport::Ipv4Address address;
    transport::Ipv4Address mask;
    transport::Ipv4Address gateway; ///< 0.0.0.0: none
};

/// What the user asks for. Texts are UTF-8.
struct Request {
    Action action = Action::List;
    Form form = Form::Text;
    std::string camera;                   ///< MAC address, IP address, serial number or user-defined name
    std::string file;                     ///< for a configuration; "-" stands for the standard streams
    std::optional<std::string> xml;       ///< file with a description to use instead of the camera's own
    std::optional<std::string> registers; ///< value of the link's feature RegisterByteOrder
    bool isCaching = true;                ///< else every read asks the camera
    Subject subject = Subject::Camera;
    VxGenVisibility visibility = VxGenVisibility::Guru; ///< show features up to this level
    std::vector<std::string> names;                     ///< of features
    std::vector<Assignment> assignments;
    ForcedAddress forced;
    std::chrono::milliseconds patience{}; ///< how long to wait for cameras, or for the end of a command
};

} // namespace vxctl
