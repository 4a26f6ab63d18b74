#include "VxSimulator/device/CameraDescription.h"

#include "VxSimulator/device/InitialMemory.h"
#include "VxSimulator/picture/PictureFormat.h"
#include "VxSimulator/stream/ChunkList.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <cctype>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace {

using namespace simulator;

/// Calls visit for every element below this one.
void ForEach(const pugi::xml_node& parent, const std::function<void(const pugi::xml_node&)>& visit)
{
    for (const pugi::xml_node& child : parent.children()) {
        if (child.type() != pugi::node_element)
            continue;
        visit(child);
        ForEach(child, visit);
    }
}

/// Whether the element is a node of the description, and not an entry or a variable of one.
bool IsNode(const pugi::xml_node& element)
{
    const std::string_view kind = element.name();
    return element.attribute("Name") && kind != "EnumEntry" && kind != "pVariable" && kind != "Constant";
}

/// Whether the element's text is the name of a node: pValue, pFeature, pVariable, ...
bool IsReference(const pugi::xml_node& element)
{
    const std::string_view kind = element.name();
    return kind.size() > 1 && kind[0] == 'p' && std::isupper(static_cast<unsigned char>(kind[1])) != 0;
}

class CameraDescriptionTest : public testing::TestWithParam<SourceFeatures> {
protected:
    CameraDescriptionTest() : m_text(CameraDescription(GetParam()))
    {
        const auto parsed = m_document.load_buffer(m_text.data(), m_text.size());
        EXPECT_TRUE(parsed) << parsed.description();
        ForEach(m_document, [this](const pugi::xml_node& element) {
            if (IsNode(element))
                m_names.insert(element.attribute("Name").value());
        });
    }

    std::string m_text;
    pugi::xml_document m_document;
    std::multiset<std::string> m_names;
};

TEST_P(CameraDescriptionTest, EveryReferenceNamesANode)
{
    int references = 0;
    ForEach(m_document, [&](const pugi::xml_node& element) {
        if (!IsReference(element))
            return;
        ++references;
        EXPECT_EQ(m_names.count(element.child_value()), 1u) << element.name() << " " << element.child_value();
    });
    EXPECT_GT(references, 200);
}

TEST_P(CameraDescriptionTest, EveryNodeHasANameOfItsOwn)
{
    EXPECT_GT(m_names.size(), 150u);
    for (const auto& name : m_names)
        EXPECT_EQ(m_names.count(name), 1u) << name;
}

TEST_P(CameraDescriptionTest, EveryAddressIsInTheMemoryOfTheCamera)
{
    VxSimulatorOptions options;
    options.hasSources = GetParam() == SourceFeatures::Present;
    const DeviceMemory memory = MakeInitialMemory(options, {});
    int addresses = 0;

    ForEach(m_document, [&](const pugi::xml_node& element) {
        const pugi::xml_node node = element.parent();
        const bool isOfChunk = std::string_view(node.child_value("pPort")) != "Device";
        if (std::string_view(element.name()) != "Address" || isOfChunk)
            return;
        ++addresses;
        const std::string_view access = node.child_value("AccessMode");
        const auto address = static_cast<std::uint32_t>(std::stoul(element.child_value(), nullptr, 0));
        bytes::Vector place(std::stoul(node.child_value("Length"), nullptr, 0));
        if (access != "WO") {
            EXPECT_EQ(memory.Read(address, place), gvcp::Status::Success) << node.attribute("Name").value();
        }
        EXPECT_EQ(memory.CheckWrite(address, place.size()) == gvcp::Status::Success, access != "RO")
            << node.attribute("Name").value();
    });
    EXPECT_GT(addresses, 60);
}

TEST_P(CameraDescriptionTest, HasNoMarksLeftAndFillsWholeWords)
{
    EXPECT_EQ(m_text.find("[source]"), std::string::npos);
    EXPECT_EQ(m_text.find("[/source]"), std::string::npos);
    EXPECT_EQ(m_text.size() % 4, 0u);
}

TEST_P(CameraDescriptionTest, HasSourcesOnlyWhereTheyArePresent)
{
    const bool isPresent = GetParam() == SourceFeatures::Present;

    for (const char* name : {"SourceControl", "SourceCount", "SourceSelector", "SourceStreamChannel"})
        EXPECT_EQ(m_names.contains(name), isPresent) << name;
}

TEST_P(CameraDescriptionTest, ListsExactlyTheFormatsThatTheCameraSends)
{
    std::set<std::pair<std::string, std::uint32_t>> listed;
    ForEach(m_document, [&](const pugi::xml_node& element) {
        if (std::string_view(element.name()) == "EnumEntry" &&
            std::string_view(element.parent().attribute("Name").value()) == "PixelFormat")
            listed.emplace(element.attribute("Name").value(),
                           static_cast<std::uint32_t>(std::stoul(element.child_value("Value"), nullptr, 0)));
    });

    std::set<std::pair<std::string, std::uint32_t>> sent;
    for (const PictureFormat& format : PictureFormats())
        sent.emplace(format.name, format.code);
    EXPECT_EQ(listed, sent);
}

TEST_P(CameraDescriptionTest, ItsChunksAreThoseThatTheCameraSends)
{
    std::map<std::string, std::uint32_t> ports;
    ForEach(m_document, [&](const pugi::xml_node& element) {
        if (std::string_view(element.name()) == "Port" && element.child("ChunkID"))
            ports.emplace(
                element.attribute("Name").value(),
                static_cast<std::uint32_t>(std::stoul(element.child_value("ChunkID"), nullptr, 16)));
    });

    const std::map<std::string, std::uint32_t> sent{{"ChunkFrameIDPort", kFrameIdChunk},
                                                    {"ChunkTimestampPort", kTimestampChunk}};
    EXPECT_EQ(ports, sent);
}

INSTANTIATE_TEST_SUITE_P(Both, CameraDescriptionTest,
                         testing::Values(SourceFeatures::Present, SourceFeatures::Absent));

} // namespace
