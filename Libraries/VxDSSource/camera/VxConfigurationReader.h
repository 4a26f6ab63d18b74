#pragma once

#include "VxBase/VxResult.h"
#include "VxBase/VxString.h"

#include <cstddef>
#include <memory>

class VxConfigurationReaderImpl;
class VxDevice;
class VxStream;

/// Reads what VxConfigurationWriter wrote.
///
/// Owner:  whoever restores, by value.
/// Thread: one at a time.
class VxConfigurationReader {
public:
    VxConfigurationReader();
    ~VxConfigurationReader();
    VxConfigurationReader(const VxConfigurationReader&) = delete;
    VxConfigurationReader& operator=(const VxConfigurationReader&) = delete;

    /// @return  INVALID_DATA for a text that no writer wrote, with the character at which it is wrong; the
    ///          reader then holds nothing
    VxResult LoadFromString(const VxString& text);

    [[nodiscard]] std::size_t GetDeviceCount() const;
    [[nodiscard]] std::size_t GetStreamCount() const;

    /// Writes a stored configuration into a camera.
    /// @param index  from 0
    /// @return  NOT_FOUND for an index without one; otherwise the first failure, with a description of all
    ///          features that refused and why, after all were tried
    VxResult Restore(std::size_t index, VxDevice* device) const;
    VxResult Restore(std::size_t index, VxStream* stream) const;

    /// @param[out] value  untouched when there is no text of that name
    /// @return  NOT_FOUND
    VxResult Restore(const VxString& name, VxString& value) const;

private:
    std::unique_ptr<VxConfigurationReaderImpl> m_impl;
};
