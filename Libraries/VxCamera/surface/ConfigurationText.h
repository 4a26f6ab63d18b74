#pragma once

#include "VxBase/VxExpected.h"
#include "VxBase/VxString.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace surface {

/// Steps that one camera or receiver can have in a configuration. Chosen: ten times what a camera with many
/// selectors needs; it bounds how long a text can keep a camera busy.
constexpr std::size_t kMaxSteps = 25'000;

/// One thing to do when a configuration is restored.
struct ConfigurationStep {
    enum class Kind {
        Select,  ///< the value of a selector for the steps of higher levels that follow
        Feature, ///< the value of a feature
    };
    Kind kind = Kind::Feature;
    std::size_t level = 0; ///< number of selectors that the step depends on
    std::string name;
    std::string value; ///< in the feature's text form
};

/// The state of one camera or one receiver.
struct StoredFeatures {
    VxString name; ///< given by the caller; may be empty
    std::vector<ConfigurationStep> steps;
};

struct StoredText {
    VxString name;
    VxString value;
};

/// All that a configuration text holds.
struct Configuration {
    std::vector<StoredFeatures> devices;
    std::vector<StoredFeatures> streams;
    std::vector<StoredText> texts;
};

/// Writes a configuration as XML in one line of ASCII characters, whatever its texts contain:
///
///     <VxConfiguration version="1">
///       <Device name=""> <Feature name="Width" value="640"/> <Select name="GainSelector" value="Red"/>
///       </Device> <Stream name=""> ... </Stream> <Text name="role" value="0"/>
///     </VxConfiguration>
///
/// without the blanks shown here. ConfigurationEscapes.h says how characters are written.
[[nodiscard]] std::string WriteConfiguration(const Configuration& configuration);

/// @return  INVALID_DATA, with the character (counted from 1) at which it goes wrong, for a text that
///          WriteConfiguration could not have written, but for blanks and comments between the elements
[[nodiscard]] VxExpected<Configuration> ReadConfiguration(std::string_view text);

} // namespace surface
