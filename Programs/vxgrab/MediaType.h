#pragma once

#include <strmif.h>

namespace vxgrab {

/// Owns one media type with its format block.
///
/// Owner:  the calling function, by value.
/// Thread: like any value.
class MediaType final {
public:
    MediaType() = default;
    ~MediaType() { Reset(); }
    MediaType(MediaType&& other) noexcept;
    MediaType& operator=(MediaType&& other) noexcept;
    MediaType(const MediaType&) = delete;
    MediaType& operator=(const MediaType&) = delete;

    [[nodiscard]] const AM_MEDIA_TYPE& Get() const { return m_type; }

    /// Place for a method that fills a caller's media type; what was held is freed.
    [[nodiscard]] AM_MEDIA_TYPE* Put();

    /// Takes over a media type in task memory, as the enumerators and samples hand them out; null is allowed.
    void Adopt(AM_MEDIA_TYPE* type);

private:
    void Reset();

    AM_MEDIA_TYPE m_type{};
};

} // namespace vxgrab
