#pragma once

#include "VxCamera/surface/ParameterFacts.h"
#include "VxDSSource/camera/VxGenParameter.h"

#include <utility>

/// The common part of every feature of this library's own: a link's time-outs, a receiver's statistics.
///
/// Owner:  ParameterList.
/// Thread: any; the functions behind a feature must be thread-safe.
template <typename Base, VxGenType type>
class ListedParameter : public Base {
public:
    [[nodiscard]] VxString GetName() const final { return m_facts.name; }
    [[nodiscard]] VxString GetCategory() const final { return m_facts.category; }
    VxResult GetType(VxGenType& out) const final
    {
        out = type;
        return VxResult::Ok();
    }
    VxResult GetVisibility(VxGenVisibility& out) const final
    {
        out = m_facts.visibility;
        return VxResult::Ok();
    }
    [[nodiscard]] bool IsAvailable() const final { return true; }

protected:
    explicit ListedParameter(ParameterFacts facts) : m_facts(std::move(facts)) {}

    [[nodiscard]] const VxString& Unit() const { return m_facts.unit; }
    [[nodiscard]] VxResult NotWritable() const
    {
        return VxResult(VxError::NotWritable, m_facts.name.Narrow() + " can only be read");
    }
    [[nodiscard]] VxResult NotA(const char* kind, const VxString& text) const
    {
        return VxResult(VxError::InvalidData,
                        m_facts.name.Narrow() + ": \"" + text.Narrow() + "\" is no " + kind);
    }
    [[nodiscard]] VxResult OutOfRange(const std::string& limits) const
    {
        return VxResult(VxError::OutOfRange, m_facts.name.Narrow() + " takes " + limits);
    }

private:
    const ParameterFacts m_facts;
};
