#pragma once

#include "VxBase/VxExpected.h"
#include "VxCamera/control/DescriptionUrl.h"

#include <cstdint>
#include <functional>
#include <string>

namespace control {

class CommandClient;

/// Fetches a camera's GenICam description from its memory.
///
/// Owner:  whoever connects, for a call. Borrows the client.
/// Thread: one.
class DescriptionLoader {
public:
    explicit DescriptionLoader(CommandClient& client) : m_client(client) {}

    /// Tells whether a file that was loaded can be used; OK or why not.
    using Use = std::function<VxResult(const std::string& file)>;

    /// Tries the place that the camera names first, then the second one, also when the first one's file
    /// cannot be used.
    /// @param use  empty: every file can be used
    /// @return  the file's bytes, XML or a zip archive; NOT_SUPPORTED for a place that this library does not
    ///          read, INVALID_DATA, NOT_FOUND, or what the link said; the failure of the first place when
    ///          both fail
    [[nodiscard]] VxExpected<std::string> Load(const Use& use = {});

private:
    VxExpected<std::string> LoadUsable(std::uint32_t urlRegister, const Use& use);
    VxExpected<std::string> LoadFrom(std::uint32_t urlRegister);
    VxExpected<std::string> ReadFile(const DescriptionUrl& url);
    [[nodiscard]] VxResult Named(VxError code, const std::string& text) const;

    CommandClient& m_client;
};

} // namespace control
