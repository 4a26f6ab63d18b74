#pragma once

#include "VxBase/VxError.h"
#include "VxBase/VxString.h"

#include <cstdint>

/// Outcome of an operation that can fail: a code, and a sentence that names the thing and, where possible,
/// the remedy.
///
/// A default-constructed result was never assigned: it is not OK and its code is 1541 (0x0605).
///
/// Owner:  anybody, by value.
/// Thread: like std::string.
class VxResult {
public:
    VxResult() = default;
    VxResult(VxError code, VxString description = {}); // NOLINT(google-explicit-constructor)

    [[nodiscard]] static VxResult Ok() { return VxResult(VxError::Ok); }

    [[nodiscard]] bool IsOK() const { return m_code == VxError::Ok; }
    [[nodiscard]] std::uint32_t GetCode() const { return static_cast<std::uint32_t>(m_code); }
    [[nodiscard]] VxError Code() const { return m_code; }

    /// @return  the code's name, for instance "OK", "ACCESS_DENIED", "MISSING_PACKETS"
    [[nodiscard]] VxString GetCodeString() const;

    /// @return  the sentence given with the code; may be empty
    [[nodiscard]] const VxString& GetDescription() const { return m_description; }

private:
    VxError m_code = VxError::NotInitialized;
    VxString m_description;
};
