#pragma once

#include <windows.h>

#include <strmif.h>

#include <string>
#include <string_view>

/// Sends a readable description of a media type to the debugger, in one piece. For developers who trace how
/// formats are negotiated: nothing in the module calls it.
///
/// The format block of FORMAT_VideoInfo and FORMAT_VideoInfo2 is read whatever its length says.
///
/// @param title  heads the text
/// Thread: any.
void DescribeMediaType(std::wstring_view title, const AM_MEDIA_TYPE& mediaType);

namespace vxds {

/// @return  the text that DescribeMediaType sends: lines that end with a line feed
[[nodiscard]] std::wstring MediaTypeDescription(std::wstring_view title, const AM_MEDIA_TYPE& mediaType);

} // namespace vxds
