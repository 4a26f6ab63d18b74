#pragma once

#include <string>

/// The XML of a camera with 2,000 nodes that have names, of the kinds and with the elements of real cameras;
/// entries of enumerations and categories come on top.
///
/// The feature "Width0" is an integer in a register whose value may be kept.
[[nodiscard]] std::string MakeLargeDescription();
