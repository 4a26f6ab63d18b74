#pragma once

#include "VxBase/VxResult.h"
#include "VxBase/VxString.h"

#include <memory>

class VxConfigurationWriterImpl;
class VxDevice;
class VxStream;

/// Collects settings and the configuration of cameras and streams, and writes them as one text.
///
/// Owner:  whoever saves, by value.
/// Thread: one at a time.
class VxConfigurationWriter {
public:
    VxConfigurationWriter();
    ~VxConfigurationWriter();
    VxConfigurationWriter(const VxConfigurationWriter&) = delete;
    VxConfigurationWriter& operator=(const VxConfigurationWriter&) = delete;

    /// Adds the camera's features that are streamable and can be read and written, under a name (may be
    /// empty). What selectors select is read for each of their values; afterwards the selectors are as they
    /// were.
    /// @return  NOT_CONNECTED, LINK_LOST: nothing was added; otherwise the first failure, with a description
    ///          of all features that could not be read, after the others were added
    VxResult Store(VxDevice* device, const VxString& name);

    /// Adds the receiver's writable features, under a name (may be empty).
    /// @return  NOT_OPEN: nothing was added; otherwise as above
    VxResult Store(VxStream* stream, const VxString& name);

    /// Adds a text under a name; it comes back exactly as it is here. A second text of the same name replaces
    /// the first.
    VxResult Store(const VxString& value, const VxString& name);

    /// @param[out] text  the whole configuration as XML, one line, without zero characters
    VxResult SaveToString(VxString& text) const;

private:
    std::unique_ptr<VxConfigurationWriterImpl> m_impl;
};
