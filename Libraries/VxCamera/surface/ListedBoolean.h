#pragma once

#include "VxCamera/surface/ListedParameter.h"
#include "VxDSSource/camera/VxGenBoolean.h"

#include <functional>

/// A switch of this library's own, behind two functions.
///
/// Owner and thread: see ListedParameter.
class ListedBoolean final : public ListedParameter<VxGenBoolean, VxGenType::Boolean> {
public:
    /// @param set  empty: read only
    ListedBoolean(ParameterFacts facts, std::function<bool()> get, std::function<void(bool)> set);

    [[nodiscard]] bool IsReadable() const override { return true; }
    [[nodiscard]] bool IsWritable() const override { return static_cast<bool>(m_set); }
    VxResult ToString(VxString& text) const override;
    VxResult FromString(const VxString& text) override;
    VxResult GetValue(bool& value) const override;
    VxResult SetValue(bool value) override;

private:
    const std::function<bool()> m_get;
    const std::function<void(bool)> m_set;
};
