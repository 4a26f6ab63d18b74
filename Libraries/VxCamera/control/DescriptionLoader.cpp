#include "VxCamera/control/DescriptionLoader.h"

#include "VxCamera/control/CommandClient.h"
#include "VxCamera/control/ControlText.h"
#include "VxCamera/control/MemoryBlock.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <span>
#include <string_view>

namespace control {

namespace {

// Chosen: the largest descriptions known have about 5 MB; a length that lies must not take all memory and
// time.
constexpr std::size_t kLargestDescription = 16 * 1024 * 1024;

// Chosen: the largest known descriptions come within ten seconds from the slowest cameras known; nobody waits
// for one that comes a few bytes at a time.
constexpr std::chrono::seconds kLongestLoad{30};

// Chosen: what one command carries.
constexpr std::size_t kStepBytes = 512;

// Fixed by the protocol: memory is read in whole words. The step before it, halved again and again, ends
// here.
constexpr std::size_t kSmallestStepBytes = 4;

// Fixed by the protocol: addresses have 32 bits.
constexpr std::uint64_t kAddressSpaceBytes = std::uint64_t{1} << 32;

// Fixed by the zip format: the first bytes of an archive.
constexpr std::string_view kZipSignature = "PK\x03\x04";

/// @param file  its beginning, or all of it
bool IsArchive(std::string_view file, std::string_view name)
{
    constexpr std::string_view kSuffix = ".zip";
    const auto isSame = [](char c, char lower) {
        return (c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) == lower;
    };
    const bool isNamedSo = name.size() >= kSuffix.size() &&
                           std::ranges::equal(name.substr(name.size() - kSuffix.size()), kSuffix, isSame);
    // Some cameras have other bytes before an archive, and some name a text so.
    return file.starts_with(kZipSignature) || (isNamedSo && !file.starts_with('<'));
}

bool IsRefusal(const VxResult& result)
{
    return result.Code() == VxError::CameraError || result.Code() == VxError::AccessDenied ||
           result.Code() == VxError::NotSupported;
}

} // namespace

VxExpected<std::string> DescriptionLoader::Load(const Use& use)
{
    auto first = LoadUsable(bootstrap::kFirstUrl, use);
    if (first)
        return first;
    const VxError code = first.Error().Code();
    if (code == VxError::Timeout || code == VxError::LinkLost || code == VxError::NetworkError)
        return first; // the second would end the same way, later
    auto second = LoadUsable(bootstrap::kSecondUrl, use);
    return second ? second : first;
}

VxExpected<std::string> DescriptionLoader::LoadUsable(std::uint32_t urlRegister, const Use& use)
{
    auto file = LoadFrom(urlRegister);
    if (!file || !use)
        return file;
    if (VxResult used = use(*file); !used.IsOK())
        return used;
    return file;
}

VxExpected<std::string> DescriptionLoader::LoadFrom(std::uint32_t urlRegister)
{
    std::array<char, bootstrap::kUrlBytes> text{};
    if (auto read = m_client.ReadMemory(urlRegister, std::as_writable_bytes(std::span(text))); !read.IsOK())
        return read;
    const auto url = ParseDescriptionUrl({text.data(), text.size()});
    if (!url)
        return Named(url.Error().Code(), url.Error().GetDescription().Narrow());
    if (url->place != DescriptionUrl::Place::Device)
        return Named(VxError::NotSupported, "its description is not in its memory but at \"" + url->name +
                                                "\", which this library does not open");
    return ReadFile(*url);
}

VxExpected<std::string> DescriptionLoader::ReadFile(const DescriptionUrl& url)
{
    const bool isLengthKnown = url.lengthBytes > 0;
    if (url.lengthBytes > kLargestDescription || !IsAddressable(url.address, url.lengthBytes))
        return Named(VxError::InvalidData, "its description \"" + url.name + "\" is said to have " +
                                               std::to_string(url.lengthBytes) + " bytes at " +
                                               HexText(url.address));
    // Memory ends where 32-bit addresses do, and then the file does, too.
    const std::uint64_t toTheEnd = kAddressSpaceBytes - url.address;
    const std::size_t end =
        isLengthKnown ? url.lengthBytes
                      : static_cast<std::size_t>(std::min<std::uint64_t>(kLargestDescription, toTheEnd));
    std::string file;
    std::size_t stepBytes = kStepBytes;
    const auto deadline = m_client.Now() + kLongestLoad;
    while (file.size() < end) {
        if (m_client.Now() > deadline)
            return Named(VxError::Timeout, "its description \"" + url.name + "\" comes too slowly: " +
                                               std::to_string(file.size()) + " bytes until now");
        std::array<char, kStepBytes> step{};
        const auto wanted = std::span(step).first(std::min(stepBytes, end - file.size()));
        const auto address =
            url.address + static_cast<std::uint32_t>(file.size()); // below the largest description
        if (auto read = m_client.ReadMemory(address, std::as_writable_bytes(wanted)); !read.IsOK()) {
            if (!IsRefusal(read) || (file.empty() && stepBytes == kSmallestStepBytes))
                return read;
            if (stepBytes == kSmallestStepBytes)
                break; // the camera has less than it said
            // It refuses a step that goes beyond its end, and so hides what is before that.
            stepBytes /= 2;
            continue;
        }
        file.append(wanted.data(), wanted.size());
        const bool isText = !IsArchive(file, url.name);
        if (!isLengthKnown && isText && std::ranges::find(wanted, '\0') != wanted.end())
            break;
    }
    if (!IsArchive(file, url.name)) // an archive may end with zeros, and finds its end by itself
        file.erase(file.find_last_not_of('\0') + 1); // cameras fill the end
    if (file.empty())
        return Named(VxError::InvalidData, "its description \"" + url.name + "\" is empty");
    return file;
}

VxResult DescriptionLoader::Named(VxError code, const std::string& text) const
{
    return {code, "camera " + m_client.Device().address.ToString() + ": " + text};
}

} // namespace control
