#pragma once

#include "VxBase/VxExpected.h"
#include "VxBase/VxMutex.h"
#include "VxCamera/genapi/xml/Description.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace genapi {

/// Descriptions read before, by the bytes of their files: a second camera of the same model, and the same
/// camera connected again, need no second reading.
///
/// Descriptions are immutable, so those who get the same one share it; it lives for as long as any of them
/// uses it. What was not asked for longest goes first when there is more than fits.
///
/// Owner:  one for the process, see surface/KnownDescriptions.h; tests by value.
/// Thread: any. Reading a file happens outside of the lock, so that a large one makes nobody wait.
class DescriptionCache {
public:
    DescriptionCache() = default;
    DescriptionCache(const DescriptionCache&) = delete;
    DescriptionCache& operator=(const DescriptionCache&) = delete;

    /// @param file  see Description::Parse, whose results these are
    [[nodiscard]] VxExpected<std::shared_ptr<const Description>> Get(std::string_view file);

    /// @return  descriptions kept
    [[nodiscard]] std::size_t Count() const;

private:
    struct Known {
        std::string file;
        std::shared_ptr<const Description> description;

        [[nodiscard]] std::size_t Bytes() const { return file.capacity() + description->Bytes(); }
    };

    [[nodiscard]] std::shared_ptr<const Description> Find(std::string_view file) VX_REQUIRES(m_mutex);
    void MakeRoom(std::size_t bytes) VX_REQUIRES(m_mutex);

    mutable VxMutex m_mutex;
    std::vector<Known> m_known VX_GUARDED_BY(m_mutex); // the one asked for last stands last
};

} // namespace genapi
