#pragma once

#include "VxBase/VxResult.h"

#include <memory>

class VxBuffer;
class VxBufferConverterImpl;

/// How rows land in the destination.
enum class VxVerticalFlip : bool {
    Off = false, ///< first row first
    On = true,   ///< last row first: a bottom-up bitmap
};

/// Whether a conversion may give the destination memory of another size.
enum class VxReallocate : bool {
    No = false,
    Yes = true,
};

/// Converts the picture in one buffer into the pixel format of another.
///
/// Owner:  the pin, for its lifetime.
/// Thread: one at a time; temporary memory is kept from call to call.
class VxBufferConverter {
public:
    /// @param threadCount  number of threads to use; -1 = the library chooses
    explicit VxBufferConverter(int threadCount);
    ~VxBufferConverter();
    VxBufferConverter(const VxBufferConverter&) = delete;
    VxBufferConverter& operator=(const VxBufferConverter&) = delete;

    /// Writes source's picture into destination's picture, in the destination's pixel format and row layout.
    /// When sizes differ, the common part is written.
    ///
    /// @param reallocate  Yes: the destination is first given the source's size
    /// @return  NOT_SUPPORTED when there is no conversion between the two formats, BUFFER_TOO_SMALL,
    ///          INVALID_PARAMETER for a buffer without a picture
    VxResult Convert(const VxBuffer& source, VxBuffer& destination, VxReallocate reallocate,
                     VxVerticalFlip flip);

private:
    std::unique_ptr<VxBufferConverterImpl> m_impl;
};
