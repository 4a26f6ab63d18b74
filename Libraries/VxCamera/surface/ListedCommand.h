#pragma once

#include "VxCamera/surface/ListedParameter.h"
#include "VxDSSource/camera/VxGenCommand.h"

#include <functional>

/// A command of this library's own; done when Execute returns.
///
/// Owner and thread: see ListedParameter.
class ListedCommand final : public ListedParameter<VxGenCommand, VxGenType::Command> {
public:
    ListedCommand(ParameterFacts facts, std::function<void()> execute);

    [[nodiscard]] bool IsReadable() const override { return true; }
    [[nodiscard]] bool IsWritable() const override { return true; }
    VxResult ToString(VxString& text) const override;
    VxResult FromString(const VxString& text) override;
    VxResult Execute() override;
    VxResult IsDone(bool& isDone) const override;

private:
    const std::function<void()> m_execute;
};
