#pragma once

#include "VxBase/Logger.h"

#include <windows.h>

#include <strmif.h>

/// Writes a media type to the logger, field by field, at priority 20000. For developers who trace how formats
/// are negotiated: nothing in the module calls it.
///
/// The format block is taken for a VIDEOINFOHEADER whatever the type says, but only where a record is
/// written.
///
/// @param logger  null: nothing is written
/// Thread: any.
void LogMediaType(const ZtUtilsLib::Logger* logger, const AM_MEDIA_TYPE& mediaType);
