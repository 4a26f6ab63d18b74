#pragma once

#include "VxCamera/genapi/map/NodeMap.h"

#include "support/genapi/FakeRegisterPort.h"
#include "support/network/FakeClock.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

/// Puts nodes into a description of schema 1.1.
inline std::string Describe(std::string_view nodes)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><RegisterDescription ModelName=\"M\" VendorName=\"V\" "
           "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">" +
           std::string(nodes) + "<Port Name=\"Device\"/></RegisterDescription>";
}

/// A node map over a fake camera, with nodes addressed by name.
class NodeMapFixture : public ::testing::Test {
protected:
    void Load(std::string_view nodes, genapi::RegisterOrder order = genapi::RegisterOrder::AsDescribed)
    {
        auto loaded = genapi::NodeMap::Load(Describe(nodes), port, order, &clock);
        if (!loaded)
            throw std::runtime_error(loaded.Error().GetDescription().Narrow());
        map = *std::move(loaded);
    }

    [[nodiscard]] genapi::NodeId Id(std::string_view name) const
    {
        const auto node = map->Find(name);
        if (!node)
            throw std::runtime_error("no node " + std::string(name));
        return *node;
    }

    [[nodiscard]] VxExpected<std::int64_t> Integer(std::string_view name)
    {
        return map->GetInteger(Id(name));
    }
    [[nodiscard]] VxExpected<double> Float(std::string_view name) { return map->GetFloat(Id(name)); }
    [[nodiscard]] VxExpected<std::string> Text(std::string_view name) { return map->ToText(Id(name)); }
    [[nodiscard]] genapi::AccessMode Access(std::string_view name) { return map->Access(Id(name)); }
    [[nodiscard]] VxResult SetInteger(std::string_view name, std::int64_t value)
    {
        return map->SetInteger(Id(name), value);
    }
    [[nodiscard]] VxResult SetText(std::string_view name, std::string_view text)
    {
        return map->FromText(Id(name), text);
    }

    FakeRegisterPort port;
    FakeClock clock;
    std::unique_ptr<genapi::NodeMap> map;
};

/// Code of a result or of a value's failure, and its sentence.
inline VxError CodeOf(const VxResult& result)
{
    return result.Code();
}
inline std::string SentenceOf(const VxResult& result)
{
    return result.GetDescription().Narrow();
}
template <typename T>
VxError CodeOf(const VxExpected<T>& value)
{
    return value.Result().Code();
}
template <typename T>
std::string SentenceOf(const VxExpected<T>& value)
{
    return value.Result().GetDescription().Narrow();
}

/// The value, or a failed test with the reason.
template <typename T>
T ValueOf(const VxExpected<T>& value)
{
    EXPECT_TRUE(value.HasValue()) << value.Result().GetDescription().Narrow();
    return value.HasValue() ? *value : T{};
}
