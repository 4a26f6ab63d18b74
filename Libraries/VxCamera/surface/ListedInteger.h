#pragma once

#include "VxCamera/surface/ListedParameter.h"
#include "VxDSSource/camera/VxGenInteger.h"

#include <cstdint>
#include <functional>
#include <limits>

/// An integer of this library's own, behind two functions.
///
/// Owner and thread: see ListedParameter.
class ListedInteger final : public ListedParameter<VxGenInteger, VxGenType::Integer> {
public:
    struct Access {
        std::function<std::int64_t()> get;
        std::function<VxResult(std::int64_t)>
            set; ///< empty: read only; called with values within the limits only
        std::int64_t minimum = 0;
        std::int64_t maximum = std::numeric_limits<std::int64_t>::max();
    };

    ListedInteger(ParameterFacts facts, Access access);

    [[nodiscard]] bool IsReadable() const override { return true; }
    [[nodiscard]] bool IsWritable() const override { return static_cast<bool>(m_access.set); }
    VxResult ToString(VxString& text) const override;
    VxResult FromString(const VxString& text) override;
    VxResult GetValue(std::int64_t& value) const override;
    VxResult SetValue(std::int64_t value) override;
    VxResult GetMin(std::int64_t& minimum) const override;
    VxResult GetMax(std::int64_t& maximum) const override;
    VxResult GetIncrement(std::int64_t& increment) const override;
    VxResult GetUnit(VxString& unit) const override
    {
        unit = Unit();
        return VxResult::Ok();
    }

private:
    const Access m_access;
};
