#include "fuzz/FuzzTarget.h"

#include "VxCamera/genapi/xml/Unzip.h"

namespace {

// Fixed by what a description may have.
constexpr std::size_t kMostBytes = 64 * 1024 * 1024;

/// A camera's file when it is an archive.
void Unpack(fuzz::Bytes bytes)
{
    const std::string_view archive = fuzz::TextOf(bytes);
    static_cast<void>(genapi::IsZipArchive(archive));
    const auto file = genapi::Unzip(archive);
    if (file)
        fuzz::Require(file->size() <= kMostBytes, "more was unpacked than is allowed");
    else
        fuzz::Require(!file.Error().GetDescription().IsEmpty(), "refused without a reason");
}

const fuzz::Registration kTarget("zip", Unpack);

} // namespace
