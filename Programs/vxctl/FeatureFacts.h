#pragma once

#include "VxDSSource/camera/VxGenTypes.h"

#include <optional>
#include <string>
#include <vector>

class VxGenParameter;
class VxGenParameterArray;

namespace vxctl {

/// What a user can know of a feature at the moment.
struct FeatureFacts {
    std::string name;
    std::string category; ///< "root\AnalogControl"; "" outside of every category
    VxGenType type = VxGenType::Unknown;
    VxGenVisibility visibility = VxGenVisibility::Beginner;
    bool isAvailable = false;
    bool isReadable = false;
    bool isWritable = false;
    std::optional<std::string> value; ///< none when it cannot be read
    std::string whyNoValue;           ///< the camera's reason, where it should be readable
    std::string unit;                 ///< "us"; may be empty
    std::optional<std::string> minimum;
    std::optional<std::string> maximum;
    std::optional<std::string> increment;
    std::vector<std::string> entries; ///< of an enumeration, as far as the camera offers them now
    std::string description;          ///< a sentence for people; may be empty
    std::vector<std::string> selectedBy;
};

/// @return  "Integer", "Enumeration", ...
[[nodiscard]] const char* TypeName(VxGenType type);

/// @return  "Beginner", "Expert", "Guru", "Invisible"
[[nodiscard]] const char* VisibilityName(VxGenVisibility visibility);

/// Reads everything about a feature; what cannot be read is left out.
[[nodiscard]] FeatureFacts ReadFacts(const VxGenParameterArray& array, VxGenParameter& feature);

} // namespace vxctl
