#pragma once

#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"

#include <memory>
#include <utility>
#include <vector>

/// Features of this library's own, in the order in which they were added.
///
/// Owner:  the device or stream. What the features' functions borrow must outlive the list.
/// Thread: Add before anybody reads; then any.
class ParameterList final : public VxGenParameterArray {
public:
    ParameterList() = default;

    /// Adds a feature made from the arguments of its constructor.
    template <typename Parameter, typename... Arguments>
    void Add(Arguments&&... arguments)
    {
        m_parameters.push_back(std::make_unique<Parameter>(std::forward<Arguments>(arguments)...));
    }

    [[nodiscard]] std::size_t GetCount() const override { return m_parameters.size(); }
    [[nodiscard]] VxGenParameter* Get(std::size_t index) const override;
    [[nodiscard]] VxGenParameter* Get(const VxString& name) const override;

private:
    std::vector<std::unique_ptr<VxGenParameter>> m_parameters;
};
