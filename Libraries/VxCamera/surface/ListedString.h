#pragma once

#include "VxCamera/surface/ListedParameter.h"
#include "VxDSSource/camera/VxGenString.h"

#include <functional>

/// A text of this library's own; read only.
///
/// Owner and thread: see ListedParameter.
class ListedString final : public ListedParameter<VxGenString, VxGenType::String> {
public:
    ListedString(ParameterFacts facts, std::function<VxString()> get);

    [[nodiscard]] bool IsReadable() const override { return true; }
    [[nodiscard]] bool IsWritable() const override { return false; }
    VxResult ToString(VxString& text) const override;
    VxResult FromString(const VxString& text) override;
    VxResult GetValue(VxString& value) const override;
    VxResult SetValue(const VxString& value) override;

private:
    const std::function<VxString()> m_get;
};
