#include "VxDSSource/filter/VxDSSource.h"

#include "BaseClasses/AtComEdge.h"
#include "VxDSSource/stream/VxDSStream.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>

namespace {

constexpr int kLargestConfigurationBytes =
    0x20000; // chosen: a camera of a thousand features has half of that

// Chosen: a length in a broken file costs no more memory than the file has bytes.
constexpr ULONG kReadStepBytes = 0x10000;

/// Reads exactly so many bytes.
std::optional<std::string> ReadBytes(IStream& stream, ULONG bytes)
{
    std::string text;
    while (text.size() < bytes) {
        const ULONG step = std::min<ULONG>(kReadStepBytes, bytes - static_cast<ULONG>(text.size()));
        const std::size_t start = text.size();
        text.resize(start + step);
        ULONG read = 0;
        if (FAILED(stream.Read(text.data() + start, step, &read)) || read != step)
            return std::nullopt;
    }
    return text;
}

/// The configuration in a saved graph: its length in 4 bytes, little endian, then the text with its
/// terminator.
std::optional<std::string> ReadConfiguration(IStream& stream)
{
    std::uint32_t bytes = 0;
    ULONG read = 0;
    if (FAILED(stream.Read(&bytes, sizeof(bytes), &read)) || read != sizeof(bytes) || bytes == 0)
        return std::nullopt;
    auto text = ReadBytes(stream, bytes);
    if (!text || text->back() != '\0')
        return std::nullopt;
    text->resize(text->find('\0'));
    return text;
}

} // namespace

int VxDSSource::SizeMax()
{
    return kLargestConfigurationBytes;
}

HRESULT VxDSSource::WriteToStream(IStream* stream)
{
    return OnPin([&](VxDSStream& pin) {
        const std::string text = pin.StoreConfiguration(VxConfigurationForm::Full).Narrow();
        const auto bytes = static_cast<std::uint32_t>(text.size() + 1); // with its terminator; far below 4 GB
        // The results are not looked at: a graph file that cannot take it is the graph's own failure.
        std::ignore = stream->Write(&bytes, sizeof(bytes), nullptr);
        std::ignore = stream->Write(text.c_str(), bytes, nullptr);
        return S_OK;
    });
}

HRESULT VxDSSource::ReadFromStream(IStream* stream)
{
    return OnPin([&](VxDSStream& pin) {
        // Without a whole configuration the settings stay, and the rest of the graph loads.
        if (const auto text = ReadConfiguration(*stream))
            pin.RestoreConfiguration(*text, VxConfigurationForm::Full);
        return S_OK;
    });
}
