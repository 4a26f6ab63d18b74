#pragma once

#include "VxCamera/genapi/map/NodeMap.h"
#include "VxCamera/surface/NoThrow.h"
#include "VxDSSource/camera/VxGenParameter.h"

#include <string_view>
#include <tuple>
#include <utility>

namespace surface {

/// What all parameters over a node map have in common; `Interface` is the kind that the module sees.
///
/// Owner:  NodeParameterArray. Borrows the map.
/// Thread: any; the map's lock serialises.
template <typename Interface>
class NodeParameterOf : public Interface {
public:
    /// @param category  path of the first category that names the feature; "" for a node outside of all
    ///                  borrowed from the map
    NodeParameterOf(genapi::NodeMap& map, genapi::NodeId node, std::string_view category)
        : m_map(map), m_node(node), m_category(category)
    {
    }

    [[nodiscard]] VxString GetName() const override { return VxString(m_map.Info(m_node).name); }
    [[nodiscard]] VxString GetCategory() const override { return VxString(m_category); }

    VxResult GetType(VxGenType& type) const override
    {
        type = TypeOf(m_map.Info(m_node).type);
        return VxResult::Ok();
    }

    VxResult GetVisibility(VxGenVisibility& visibility) const override
    {
        visibility = static_cast<VxGenVisibility>(m_map.Info(m_node).visibility); // numbered alike
        return VxResult::Ok();
    }

    [[nodiscard]] bool IsAvailable() const override { return genapi::IsAvailable(Access()); }
    [[nodiscard]] bool IsReadable() const override { return genapi::IsReadable(Access()); }
    [[nodiscard]] bool IsWritable() const override { return genapi::IsWritable(Access()); }

    VxResult ToString(VxString& text) const override
    {
        return Store([&] { return m_map.ToText(m_node); }, text);
    }

    VxResult FromString(const VxString& text) override
    {
        return NoThrow([&] { return m_map.FromText(m_node, text.Narrow()); });
    }

protected:
    /// @return  of a number; "" for none
    [[nodiscard]] VxString Unit() const { return VxString(m_map.Info(m_node).unit); }
    [[nodiscard]] genapi::NodeMap& Map() const { return m_map; }
    [[nodiscard]] genapi::NodeId Node() const { return m_node; }

    /// Gives a value out, or says why there is none.
    /// @param read  a function that returns the VxExpected value
    template <typename Read, typename To>
    [[nodiscard]] static VxResult Store(Read read, To& target)
    {
        return NoThrow([&]() -> VxResult {
            auto value = read();
            if (!value)
                return value.Error();
            target = To(*std::move(value));
            return VxResult::Ok();
        });
    }

private:
    /// A node whose access cannot be told for want of memory counts as not available.
    [[nodiscard]] genapi::AccessMode Access() const
    {
        auto mode = genapi::AccessMode::NotAvailable;
        std::ignore = NoThrow([&] {
            mode = m_map.Access(m_node);
            return VxResult::Ok();
        });
        return mode;
    }

    [[nodiscard]] static VxGenType TypeOf(genapi::ValueType type)
    {
        switch (type) {
        case genapi::ValueType::Integer:
            return VxGenType::Integer;
        case genapi::ValueType::Float:
            return VxGenType::Float;
        case genapi::ValueType::Boolean:
            return VxGenType::Boolean;
        case genapi::ValueType::Command:
            return VxGenType::Command;
        case genapi::ValueType::Enumeration:
            return VxGenType::Enum;
        case genapi::ValueType::String:
            return VxGenType::String;
        case genapi::ValueType::Register:
            return VxGenType::Register;
        default:
            return VxGenType::Unknown;
        }
    }

    genapi::NodeMap& m_map; // borrowed: the array owns both and ends this first
    const genapi::NodeId m_node;
    const std::string_view m_category; // borrowed from the map
};

} // namespace surface
