#pragma once

#include "VxBase/VxResult.h"
#include "VxBase/VxString.h"

#include <cstddef>
#include <cstdint>

class VxGenCommand;
class VxGenEnum;
class VxGenInteger;
class VxGenParameter;

/// The features of a camera, of a stream receiver or of the link to a camera.
///
/// The order is that of the description and never changes while the array lives.
///
/// Owner:  the device or stream that returned it; borrowed for as long as that object lives.
/// Thread: any; access is serialised inside.
class VxGenParameterArray {
public:
    VxGenParameterArray(const VxGenParameterArray&) = delete;
    VxGenParameterArray& operator=(const VxGenParameterArray&) = delete;
    virtual ~VxGenParameterArray() = default;

    [[nodiscard]] virtual std::size_t GetCount() const = 0;

    /// @return  borrowed; null for an index without a feature
    [[nodiscard]] virtual VxGenParameter* Get(std::size_t index) const = 0;

    /// @return  borrowed; null when there is no feature of that name (case-sensitive)
    [[nodiscard]] virtual VxGenParameter* Get(const VxString& name) const = 0;

    /// Typed look-up. @return  borrowed; null when absent or of another type
    [[nodiscard]] VxGenInteger* GetInteger(const VxString& name) const;
    [[nodiscard]] VxGenEnum* GetEnum(const VxString& name) const;
    [[nodiscard]] VxGenCommand* GetCommand(const VxString& name) const;

    /// Short forms of look-up and access. NOT_FOUND when there is no such feature, TYPE_MISMATCH when it is
    /// of another type, otherwise what the feature's own method returns. Out-values are untouched on failure.
    VxResult GetIntegerValue(const VxString& name, std::int64_t& value) const;
    VxResult SetIntegerValue(const VxString& name, std::int64_t value);
    VxResult GetFloatValue(const VxString& name, double& value) const;
    VxResult GetEnumValue(const VxString& name, VxString& value) const;
    VxResult ExecuteCommand(const VxString& name);

protected:
    VxGenParameterArray() = default;
};
