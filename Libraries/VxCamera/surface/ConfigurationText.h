#pragma once

#include "VxBase/VxExpected.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace surface {

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
    std::string name; ///< given by the caller; may be empty
    std::vector<ConfigurationStep> steps;
};

struct StoredText {
    std::string name;
    std::string value;
};

/// All that a configuration text holds. Texts are UTF-8.
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
/// without the blanks shown here. Characters that XML 1.0 cannot hold, and the backslash, are written with a
/// backslash:
/// \\ is the backslash, \x0a the byte 10, \ufffe the character U+FFFE.
[[nodiscard]] std::string WriteConfiguration(const Configuration& configuration);

/// @return  INVALID_DATA, with the character at which it goes wrong, for a text that WriteConfiguration did
/// not write
[[nodiscard]] VxExpected<Configuration> ReadConfiguration(std::string_view text);

} // namespace surface
