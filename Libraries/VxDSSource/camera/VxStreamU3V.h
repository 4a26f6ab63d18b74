#pragma once

#include "VxDSSource/camera/VxStream.h"

/// A receiver of a USB3 Vision stream.
///
/// Owner and thread: see VxStream.
class VxStreamU3V : public VxStream {
public:
    VxStreamU3V();
    ~VxStreamU3V() override;

    VxResult Open(const VxString& connectionId) override;

    [[nodiscard]] VxStreamType GetType() const override;
};
