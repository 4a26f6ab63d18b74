#include "VxCamera/genapi/xml/DescriptionReader.h"

#include <algorithm>
#include <utility>

#include "VxCamera/genapi/xml/ElementNames.h"
#include "VxCamera/genapi/xml/NumberText.h"
#include "VxCamera/genapi/xml/Utf8.h"

namespace genapi {

namespace {

// Chosen: ten times the largest descriptions known (1.5 MB, 10,000 nodes with the entries of enumerations)
// and more; as many bytes as a zip archive may contain. Marks are tags and attributes: each takes up to 64
// bytes while the document is read.
constexpr std::size_t kMaxXmlBytes = 64 * 1024 * 1024;
constexpr std::ptrdiff_t kMaxMarks = 3'000'000;
constexpr std::size_t kMaxNodes = 100'000;
constexpr std::size_t kMaxProperties = 1'000'000;
constexpr std::size_t kMaxNotices = 1'000;

// Chosen: names get into paths and sentences; the longest seen has 60 characters.
constexpr std::size_t kMaxNameBytes = 255;

constexpr std::string_view kRoot = "RegisterDescription";

std::string_view LocalName(const pugi::xml_node& xml)
{
    const std::string_view name = xml.name();
    const std::size_t colon = name.rfind(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::string_view Attribute(const pugi::xml_node& xml, const char* name)
{
    return Trim(xml.attribute(name).value());
}

/// Text of an element; comments and CDATA may cut it into pieces, which `scratch` then puts together.
std::string_view Text(const pugi::xml_node& xml, std::string& scratch)
{
    std::string_view first;
    bool isJoined = false;
    for (const pugi::xml_node& child : xml.children()) {
        if (child.type() != pugi::node_pcdata && child.type() != pugi::node_cdata)
            continue;
        const std::string_view piece = child.value();
        if (first.empty() && !isJoined) {
            first = piece;
            continue;
        }
        if (!isJoined)
            scratch = first;
        isJoined = true;
        scratch += piece;
    }
    return Trim(isJoined ? std::string_view(scratch) : first);
}

/// A text of the file inside of a sentence.
std::string Shown(std::string_view text)
{
    constexpr std::size_t kShownBytes = 80;
    return std::string(text.substr(0, kShownBytes)) + (text.size() > kShownBytes ? "..." : "");
}

bool IsUtf16(std::string_view xml)
{
    // A byte order mark, or the zero half of the first "<".
    return xml.starts_with("\xFE\xFF") || xml.starts_with("\xFF\xFE") ||
           (xml.size() >= 2 && (xml[0] == '\0' || xml[1] == '\0'));
}

/// Cuts off what cameras leave behind the document: NULs, remains of an older and longer file.
std::string_view WithoutRemains(std::string_view xml)
{
    const std::size_t end = xml.rfind("RegisterDescription>");
    if (end != std::string_view::npos)
        return xml.substr(0, end + std::string_view("RegisterDescription>").size());
    return xml.substr(0, std::min(xml.size(), xml.find_last_not_of('\0') + 1));
}

std::string Place(std::string_view xml, std::ptrdiff_t offset)
{
    const std::string_view before =
        xml.substr(0, static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0)));
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::size_t lineStart = before.rfind('\n');
    const std::size_t column = before.size() - (lineStart == std::string_view::npos ? 0 : lineStart + 1) + 1;
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

bool IsRegister(NodeKind kind)
{
    return kind == NodeKind::IntReg || kind == NodeKind::MaskedIntReg || kind == NodeKind::FloatReg ||
           kind == NodeKind::StringReg || kind == NodeKind::Register;
}

/// The attribute that belongs to an element.
std::string_view ArgumentOf(Element element, const pugi::xml_node& xml)
{
    switch (element) {
    case Element::PVariable:
    case Element::Constant:
    case Element::Expression:
        return Attribute(xml, "Name");
    case Element::ValueIndexed:
    case Element::PValueIndexed:
        return Attribute(xml, "Index");
    case Element::PIndex:
        return Attribute(xml, "Offset");
    case Element::PIndexOffset:
        return Attribute(xml, "pOffset");
    default:
        return {};
    }
}

} // namespace

VxResult DescriptionReader::Read(std::string_view xml)
{
    if (const VxResult result = LoadDocument(xml); !result.IsOK())
        return result;
    const pugi::xml_node root = m_document.document_element();
    if (LocalName(root) != kRoot)
        return VxResult(VxError::InvalidData, "the text is no camera description: its root element is \"" +
                                                  std::string(LocalName(root)) + "\", not \"" +
                                                  std::string(kRoot) + "\"");
    ReadHeader(root);
    ReadNodes(root);
    ReadPending();
    if (IsFull())
        return VxResult(VxError::InvalidData, m_limit);
    ResolveReferences();
    return VxResult::Ok();
}

VxResult DescriptionReader::LoadDocument(std::string_view xml)
{
    if (xml.size() > kMaxXmlBytes)
        return VxResult(VxError::InvalidData, "the camera's description has " + std::to_string(xml.size()) +
                                                  " bytes; at most " + std::to_string(kMaxXmlBytes) +
                                                  " are accepted");
    const auto isMark = [](char c) { return c == '<' || c == '='; };
    if (std::ranges::count_if(xml, isMark) > kMaxMarks)
        return VxResult(VxError::InvalidData, "the camera's description has more than " +
                                                  std::to_string(kMaxMarks) + " tags and attributes");
    const bool isWide = IsUtf16(xml);
    if (!isWide)
        xml = WithoutRemains(xml);
    const auto encoding = isWide || IsUtf8(xml) ? pugi::encoding_auto : pugi::encoding_latin1;
    constexpr unsigned kOptions = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_eol;
    const auto result = m_document.load_buffer(xml.data(), xml.size(), kOptions, encoding);
    if (!result)
        return VxResult(VxError::InvalidData, "the camera's description is no well-formed XML at " +
                                                  Place(xml, isWide ? 0 : result.offset) + ": " +
                                                  result.description());
    return VxResult::Ok();
}

void DescriptionReader::ReadHeader(const pugi::xml_node& root)
{
    const auto number = [&](const char* name, int fallback) {
        const auto value = ParseInteger(Attribute(root, name));
        return value && *value >= 0 && *value <= INT16_MAX ? static_cast<int>(*value) : fallback;
    };
    const auto text = [&](const char* name) { return m_description.m_texts.Add(Attribute(root, name)); };
    DescriptionHeader& header = m_description.m_header;
    header.vendorName = text("VendorName");
    header.modelName = text("ModelName");
    header.toolTip = text("ToolTip");
    header.standardNameSpace = text("StandardNameSpace");
    header.productGuid = text("ProductGuid");
    header.versionGuid = text("VersionGuid");
    header.schemaMajor = number("SchemaMajorVersion", header.schemaMajor);
    header.schemaMinor = number("SchemaMinorVersion", header.schemaMinor);
    header.schemaSubMinor = number("SchemaSubMinorVersion", header.schemaSubMinor);
    header.major = number("MajorVersion", header.major);
    header.minor = number("MinorVersion", header.minor);
    header.subMinor = number("SubMinorVersion", header.subMinor);
}

void DescriptionReader::ReadNodes(const pugi::xml_node& root)
{
    // Groups are transparent. The next node is the next sibling, or the one behind the group that has just
    // ended.
    pugi::xml_node xml = root.first_child();
    while (xml && !IsFull()) {
        const bool isGroup = LocalName(xml) == "Group";
        if (!isGroup && xml.type() == pugi::node_element)
            ReadTopLevel(xml);
        pugi::xml_node next = isGroup ? xml.first_child() : pugi::xml_node();
        while (!next && xml != root) {
            next = xml.next_sibling();
            if (!next)
                xml = xml.parent();
        }
        xml = next;
    }
}

void DescriptionReader::ReadTopLevel(const pugi::xml_node& xml)
{
    const std::string_view tag = LocalName(xml);
    if (tag == "StructReg") {
        ReadStruct(xml);
        return;
    }
    const auto kind = FindNodeKind(tag);
    if (!kind) {
        if (FindElement(tag) != Element::Ignored)
            AddNotice(Attribute(xml, "Name"),
                      "nodes of the kind \"" + Shown(tag) + "\" are not known; it is left out");
        return;
    }
    const std::string_view name = NameOfNode(xml, tag);
    if (name.empty())
        return;
    const std::uint32_t node = AddNode(*kind, name);
    ReadAttributes(xml, node);
    if (*kind == NodeKind::EnumEntry)
        AddTo(m_entries, name, node);
    else
        Register(node);
    m_pending.push_back({xml, node});
}

// The entries share the structure's elements; their own come later and so replace them.
void DescriptionReader::ReadStruct(const pugi::xml_node& xml)
{
    const std::uint32_t container = AddNode(NodeKind::MaskedIntReg, {});
    m_ranges[container].first = m_description.m_properties.size();
    for (const pugi::xml_node& child : xml.children())
        if (child.type() == pugi::node_element && LocalName(child) != "StructEntry")
            ReadElement(child, container);
    m_ranges[container].last = m_description.m_properties.size();
    for (const pugi::xml_node& child : xml.children()) {
        if (LocalName(child) != "StructEntry" || IsFull())
            continue;
        const std::string_view name = NameOfNode(child, "StructEntry");
        if (name.empty())
            continue;
        const std::uint32_t node = AddNode(NodeKind::MaskedIntReg, name);
        ReadAttributes(child, node);
        Register(node);
        const std::size_t first = m_description.m_properties.size();
        const Range shared = m_ranges[container];
        if (first + (shared.last - shared.first) > kMaxProperties) {
            m_limit =
                "the camera's description has more than " + std::to_string(kMaxProperties) + " elements";
            return;
        }
        for (std::size_t i = shared.first; i < shared.last; ++i)
            m_description.m_properties.push_back(Property(m_description.m_properties[i]));
        ReadElements(child, node);
        m_ranges[node].first = first;
    }
    m_ranges[container] = {};
    m_description.m_nodes[container].kind = NodeKind::Unsupported;
}

/// @return  "" for a node that has no usable name and is left out
std::string_view DescriptionReader::NameOfNode(const pugi::xml_node& xml, std::string_view tag)
{
    const std::string_view name = Attribute(xml, "Name");
    if (!name.empty() && name.size() <= kMaxNameBytes)
        return m_description.m_texts.Add(name);
    AddNotice(tag, name.empty() ? "a node of this kind has no name; it is left out"
                                : "a node of this kind has a name of " + std::to_string(name.size()) +
                                      " bytes; it is left out");
    return {};
}

void DescriptionReader::ReadAttributes(const pugi::xml_node& xml, std::uint32_t node)
{
    NodeDescription& description = m_description.m_nodes[node];
    if (Attribute(xml, "NameSpace") == "Standard")
        description.nameSpace = NameSpace::Standard;
    if (const auto priority = ParseInteger(Attribute(xml, "MergePriority")))
        description.mergePriority = static_cast<std::int8_t>(std::clamp<std::int64_t>(*priority, -1, 1));
}

std::uint32_t DescriptionReader::AddNode(NodeKind kind, std::string_view name)
{
    if (m_description.m_nodes.size() >= kMaxNodes)
        m_limit = "the camera's description has more than " + std::to_string(kMaxNodes) + " nodes";
    m_description.m_nodes.push_back({.kind = kind, .name = name, .properties = {}});
    m_ranges.emplace_back();
    return static_cast<std::uint32_t>(m_description.m_nodes.size() - 1); // limited by kMaxNodes
}

void DescriptionReader::ReadPending()
{
    // Grows while it is read: entries and formulas inside a node are put at its end.
    for (std::size_t i = 0; i < m_pending.size() && !IsFull(); ++i) {
        const Pending pending = m_pending[i];
        ReadElements(pending.xml, pending.node);
    }
}

void DescriptionReader::ReadElements(const pugi::xml_node& xml, std::uint32_t node)
{
    m_ranges[node].first = m_description.m_properties.size();
    for (const pugi::xml_node& child : xml.children()) {
        if (IsFull())
            break;
        if (child.type() == pugi::node_element)
            ReadElement(child, node);
    }
    m_ranges[node].last = m_description.m_properties.size();
}

void DescriptionReader::ReadElement(const pugi::xml_node& xml, std::uint32_t node)
{
    const std::string_view tag = LocalName(xml);
    if (ReadNestedNode(xml, node, tag))
        return;
    auto element = FindElement(tag);
    if (!element) {
        AddNotice(m_description.m_nodes[node].name, "the element \"" + Shown(tag) + "\" is not known");
        return;
    }
    if (element == Element::PIndex && xml.attribute("pOffset"))
        element = Element::PIndexOffset;
    if (element != Element::Ignored)
        AddProperty(*element, xml);
}

bool DescriptionReader::ReadNestedNode(const pugi::xml_node& xml, std::uint32_t node, std::string_view name)
{
    const NodeKind kind = m_description.m_nodes[node].kind;
    const bool isEntry = kind == NodeKind::Enumeration && name == "EnumEntry";
    const bool isKnife = IsRegister(kind) && name == "IntSwissKnife";
    if (!isEntry && !isKnife)
        return kind == NodeKind::Unsupported; // whatever stands in there
    const NodeKind nestedKind = isEntry ? NodeKind::EnumEntry : NodeKind::IntSwissKnife;
    std::string_view nestedName = Attribute(xml, "Name");
    if (nestedName.size() <= kMaxNameBytes)
        nestedName = m_description.m_texts.Add(nestedName);
    else
        nestedName = {};
    if (nestedName.empty())
        nestedName =
            isEntry
                ? std::string_view("(entry without a name)")
                : m_description.m_texts.Add("address of " + std::string(m_description.m_nodes[node].name));
    const std::uint32_t nested = AddNode(nestedKind, nestedName);
    if (isKnife)
        AddTo(m_description.m_byName, nestedName, nested);
    m_pending.push_back({xml, nested});
    m_description.m_properties.push_back({.element = isEntry ? Element::EnumEntry : Element::AddressKnife,
                                          .text = nestedName,
                                          .argument = {},
                                          .target = nested});
    return true;
}

void DescriptionReader::AddProperty(Element element, const pugi::xml_node& xml)
{
    if (m_description.m_properties.size() >= kMaxProperties) {
        m_limit = "the camera's description has more than " + std::to_string(kMaxProperties) + " elements";
        return;
    }
    std::string scratch;
    m_description.m_properties.push_back({.element = element,
                                          .text = m_description.m_texts.Add(Text(xml, scratch)),
                                          .argument = m_description.m_texts.Add(ArgumentOf(element, xml))});
}

void DescriptionReader::ResolveReferences()
{
    for (std::uint32_t node = 0; node < m_ranges.size(); ++node) {
        const std::span<Property> properties =
            std::span(m_description.m_properties)
                .subspan(m_ranges[node].first, m_ranges[node].last - m_ranges[node].first);
        for (Property& property : properties)
            if (IsReference(property.element) && property.target == kNoNode)
                Resolve(node, property);
        m_description.m_nodes[node].properties = properties;
    }
}

void DescriptionReader::Resolve(std::uint32_t node, Property& property)
{
    const auto find = [&](std::string_view name) {
        const auto found = m_description.Find(name);
        if (!found)
            AddNotice(m_description.m_nodes[node].name, std::string(NameOf(property.element)) +
                                                            " names the node \"" + Shown(name) +
                                                            "\", which is not there");
        return found.value_or(kNoNode);
    };
    if (property.element == Element::PEnumEntry) {
        const auto entry = m_entries.find(property.text);
        property.target = entry == m_entries.end() ? kNoNode : entry->second;
        property.element = Element::EnumEntry;
        return;
    }
    property.target = find(property.text);
    if (property.element == Element::PIndexOffset)
        property.argumentTarget = find(property.argument);
}

void DescriptionReader::Register(std::uint32_t node)
{
    const NodeDescription& added = m_description.m_nodes[node];
    std::uint32_t& winner = AddTo(m_description.m_byName, added.name, node);
    if (winner == node)
        return;
    const NodeDescription& present = m_description.m_nodes[winner];
    std::uint32_t loser = node;
    if (added.mergePriority > present.mergePriority)
        std::swap(winner, loser);
    if (added.nameSpace != present.nameSpace)
        m_description.m_otherNameSpace.try_emplace(added.name, loser);
    else
        AddNotice(added.name, "there is more than one node of this name; " +
                                  std::string(loser == node ? "the first" : "the one of higher priority") +
                                  " is used");
}

/// @return  the place of the name; what stood there before stays
std::uint32_t& DescriptionReader::AddTo(Names& names, std::string_view name, std::uint32_t node)
{
    // Chosen: chance does not put so many names into one bucket, but somebody who knows the hash function
    // does.
    constexpr std::size_t kMaxInBucket = 64;
    std::uint32_t& place = names.try_emplace(name, node).first->second;
    if (names.bucket_size(names.bucket(name)) > kMaxInBucket)
        m_limit = "the names of the camera's description are made to be slow";
    return place;
}

void DescriptionReader::AddNotice(std::string_view node, std::string text)
{
    if (m_description.m_notices.size() < kMaxNotices)
        m_description.m_notices.push_back({Shown(node), std::move(text)});
}

} // namespace genapi
