#pragma once

#include "VxBase/VxExpected.h"

#include <string>
#include <string_view>

namespace genapi {

/// Whether a camera's file is a zip archive, by its first bytes: cameras name such files as they like.
[[nodiscard]] bool IsZipArchive(std::string_view bytes);

/// Takes the camera's description out of a zip archive: its first file whose name ends with ".xml" in any
/// case, or the first file of all when no name does.
///
/// Files may be stored or deflated. What stands behind the archive is ignored.
///
/// @param archive  at most 4 GiB
/// @return  the unpacked file; INVALID_DATA for an archive that is damaged, empty, or whose file has more
///          than 64 MiB; NOT_SUPPORTED for an encrypted file and for other ways of packing; OUT_OF_MEMORY
[[nodiscard]] VxExpected<std::string> Unzip(std::string_view archive);

} // namespace genapi
