#pragma once

#include "VxCamera/genapi/xml/DescriptionCache.h"

/// The descriptions of cameras that this process has read so far; they are forgotten when it ends, or when
/// the module is unloaded.
///
/// Owner:  the module.
/// Thread: any; see genapi::DescriptionCache.
[[nodiscard]] genapi::DescriptionCache& KnownDescriptions();
