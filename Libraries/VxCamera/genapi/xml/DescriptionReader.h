#pragma once

#include "VxBase/VxResult.h"
#include "VxCamera/genapi/xml/Description.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace genapi {

/// Fills a Description from XML text.
///
/// It walks two levels of the document, nodes and their elements, and groups with a stack of its own: how
/// deep a document is nested does not matter.
///
/// Owner:  Description::Parse, for one call. Borrows the description.
/// Thread: one.
class DescriptionReader {
public:
    explicit DescriptionReader(Description& description) : m_description(description) {}

    [[nodiscard]] VxResult Read(std::string_view xml);

private:
    /// A node that has its index and waits for its elements to be read.
    struct Pending {
        pugi::xml_node xml;
        std::uint32_t node = 0;
    };
    using Names = std::unordered_map<std::string_view, std::uint32_t>;
    struct Range {
        std::size_t first = 0;
        std::size_t last = 0;
    };

    VxResult LoadDocument(std::string_view xml);
    void ReadHeader(const pugi::xml_node& root);
    void ReadNodes(const pugi::xml_node& root);
    void ReadTopLevel(const pugi::xml_node& xml);
    void ReadStruct(const pugi::xml_node& xml);
    void ReadAttributes(const pugi::xml_node& xml, std::uint32_t node);
    std::uint32_t AddNode(NodeKind kind, std::string_view name);
    [[nodiscard]] std::string_view NameOfNode(const pugi::xml_node& xml, std::string_view tag);
    void ReadPending();
    void ReadElements(const pugi::xml_node& xml, std::uint32_t node);
    void ReadElement(const pugi::xml_node& xml, std::uint32_t node);
    bool ReadNestedNode(const pugi::xml_node& xml, std::uint32_t node, std::string_view name);
    void AddProperty(Element element, const pugi::xml_node& xml);
    void ResolveReferences();
    void Resolve(std::uint32_t node, Property& property);
    void Register(std::uint32_t node);
    std::uint32_t& AddTo(Names& names, std::string_view name, std::uint32_t node);
    void AddNotice(std::string_view node, std::string text);
    [[nodiscard]] bool IsFull() const { return !m_limit.empty(); }

    Description& m_description; // borrowed from the caller of Read
    pugi::xml_document m_document;
    std::vector<Range> m_ranges; // of properties, by node
    std::vector<Pending> m_pending;
    Names m_entries;     // entries that stand outside enumerations
    std::string m_limit; // says which limit the document exceeds; empty while it exceeds none
};

} // namespace genapi
