#pragma once

#include "VxBase/VxExpected.h"
#include "VxCamera/genapi/xml/DescriptionTypes.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace genapi {

/// Something in a description that was passed over so that the rest could be used.
struct Notice {
    std::string node; ///< name of the node concerned
    std::string text;
};

/// Keeps texts in few pieces of memory, so that views of them stay valid.
///
/// Owner:  Description, by value.
/// Thread: one while it grows; reading the views is safe from any.
class TextPool {
public:
    [[nodiscard]] std::string_view Add(std::string_view text);

private:
    std::deque<std::string> m_blocks; // a block never grows beyond its capacity
};

/// A camera's XML after reading: nodes with their elements, references resolved to indices. It knows nothing
/// of values and access; several node maps may share it.
///
/// Owner:  shared by the node maps made from it.
/// Thread: immutable; any.
class Description {
public:
    /// @param xml  UTF-8, UTF-16 or Latin-1; NULs and other remains behind the end of the document are
    /// ignored
    /// @return  INVALID_DATA with line and column for a text that is no camera description, or one of more
    ///          than 16 MiB or 100,000 nodes
    [[nodiscard]] static VxExpected<std::shared_ptr<const Description>> Parse(std::string_view xml);

    Description(const Description&) = delete;
    Description& operator=(const Description&) = delete;

    [[nodiscard]] const std::vector<NodeDescription>& Nodes() const { return m_nodes; }

    /// @return  index of the node of that name, not of an enumeration's entry
    [[nodiscard]] std::optional<std::uint32_t> Find(std::string_view name) const;

    [[nodiscard]] std::string_view VendorName() const { return m_vendorName; }
    [[nodiscard]] std::string_view ModelName() const { return m_modelName; }
    [[nodiscard]] int SchemaMajor() const { return m_schemaMajor; }
    [[nodiscard]] int SchemaMinor() const { return m_schemaMinor; }

    [[nodiscard]] const std::vector<Notice>& Notices() const { return m_notices; }

private:
    friend class DescriptionReader;
    Description() = default;

    TextPool m_texts;                   // what every view below points into
    std::vector<Property> m_properties; // of all nodes, one after the other
    std::vector<NodeDescription> m_nodes;
    std::unordered_map<std::string_view, std::uint32_t> m_byName;
    std::vector<Notice> m_notices;
    std::string_view m_vendorName;
    std::string_view m_modelName;
    int m_schemaMajor = 1;
    int m_schemaMinor = 0;
};

} // namespace genapi
