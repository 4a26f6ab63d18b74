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

/// What a description says of itself.
struct DescriptionHeader {
    std::string_view vendorName;
    std::string_view modelName;
    std::string_view toolTip;
    std::string_view standardNameSpace; ///< "GEV", "USB", "IIDC", "CL", "None"
    std::string_view productGuid;
    std::string_view versionGuid;
    int schemaMajor = 1;
    int schemaMinor = 0;
    int schemaSubMinor = 0;
    int major = 0;
    int minor = 0;
    int subMinor = 0;
};

/// Keeps texts in few pieces of memory, so that views of them stay valid.
///
/// Owner:  Description, by value.
/// Thread: one while it grows; reading the views is safe from any.
class TextPool {
public:
    [[nodiscard]] std::string_view Add(std::string_view text);

    /// @return  bytes of memory in use
    [[nodiscard]] std::size_t Bytes() const;

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
    /// @param file  XML in UTF-8, UTF-16 or Latin-1, or a zip archive with it; NULs and other remains behind
    ///              the end of either are ignored
    /// @return  INVALID_DATA with line and column for a text that is no camera description, or one of more
    ///          than 64 MiB, 3,000,000 marks or 100,000 nodes; what Unzip says
    [[nodiscard]] static VxExpected<std::shared_ptr<const Description>> Parse(std::string_view file);

    Description(const Description&) = delete;
    Description& operator=(const Description&) = delete;

    [[nodiscard]] const std::vector<NodeDescription>& Nodes() const { return m_nodes; }

    /// @param name  "Width"; or "Std::Width" or "Cust::Width" for the node of that name space only
    /// @return  index of the node of that name, not of an enumeration's entry
    [[nodiscard]] std::optional<std::uint32_t> Find(std::string_view name) const;

    [[nodiscard]] const DescriptionHeader& Header() const { return m_header; }

    /// @return  bytes of memory in use, roughly
    [[nodiscard]] std::size_t Bytes() const;

    [[nodiscard]] const std::vector<Notice>& Notices() const { return m_notices; }

private:
    friend class DescriptionReader;
    Description() = default;

    TextPool m_texts;                   // what every view below points into
    std::vector<Property> m_properties; // of all nodes, one after the other
    std::vector<NodeDescription> m_nodes;
    std::unordered_map<std::string_view, std::uint32_t> m_byName;
    std::unordered_map<std::string_view, std::uint32_t>
        m_otherNameSpace; // the other of two nodes of one name
    std::vector<Notice> m_notices;
    DescriptionHeader m_header;
};

} // namespace genapi
