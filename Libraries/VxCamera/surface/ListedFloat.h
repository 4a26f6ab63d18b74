#pragma once

#include "VxCamera/surface/ListedParameter.h"
#include "VxDSSource/camera/VxGenFloat.h"

#include <functional>

/// A measured number of this library's own, never negative; read only.
///
/// Owner and thread: see ListedParameter.
class ListedFloat final : public ListedParameter<VxGenFloat, VxGenType::Float> {
public:
    ListedFloat(ParameterFacts facts, std::function<double()> get);

    [[nodiscard]] bool IsReadable() const override { return true; }
    [[nodiscard]] bool IsWritable() const override { return false; }
    VxResult ToString(VxString& text) const override;
    VxResult FromString(const VxString& text) override;
    VxResult GetValue(double& value) const override;
    VxResult SetValue(double value) override;
    VxResult GetMin(double& minimum) const override;
    VxResult GetMax(double& maximum) const override;
    VxResult GetUnit(VxString& unit) const override
    {
        unit = Unit();
        return VxResult::Ok();
    }

private:
    const std::function<double()> m_get;
};
