#pragma once

#include "VxBase/VxResult.h"
#include "VxBase/VxString.h"
#include "VxDSSource/camera/VxGenTypes.h"

/// One feature of a camera, a stream receiver or a link.
///
/// Owner:  its VxGenParameterArray; everybody else borrows it for as long as that array lives.
/// Thread: any; an array serialises access to its features itself.
class VxGenParameter {
public:
    VxGenParameter(const VxGenParameter&) = delete;
    VxGenParameter& operator=(const VxGenParameter&) = delete;
    virtual ~VxGenParameter() = default;

    /// The feature's GenICam name, for instance "ExposureTime".
    [[nodiscard]] virtual VxString GetName() const = 0;

    /// Path of the categories that lead to the feature, separated by backslashes: "root" for one that stands
    /// at the top, "root\AnalogControl" below that; "" for a node outside of every category.
    [[nodiscard]] virtual VxString GetCategory() const = 0;

    /// @param[out] type  untouched on failure
    /// @return  NOT_SUPPORTED for a feature whose kind cannot be told
    virtual VxResult GetType(VxGenType& type) const = 0;

    /// @param[out] visibility  untouched on failure
    virtual VxResult GetVisibility(VxGenVisibility& visibility) const = 0;

    /// Whether the feature exists in the present state of the camera; false as well when that cannot be read.
    [[nodiscard]] virtual bool IsAvailable() const = 0;
    [[nodiscard]] virtual bool IsReadable() const = 0;
    [[nodiscard]] virtual bool IsWritable() const = 0;

    /// The value as text: integers as their representation asks (decimal, hexadecimal with 0x, dotted IPv4,
    /// MAC), floats in the shortest decimal form that reads back, booleans "true" or "false", enumerations
    /// the entry's name, registers hexadecimal bytes, commands "" .
    /// @param[out] text  untouched on failure
    virtual VxResult ToString(VxString& text) const = 0;

    /// Sets the value from the text form above. For a command, any text executes it.
    /// @return  INVALID_DATA for text that is no value of the type, OUT_OF_RANGE, NOT_WRITABLE, or the
    /// camera's error
    virtual VxResult FromString(const VxString& text) = 0;

protected:
    VxGenParameter() = default;
};
