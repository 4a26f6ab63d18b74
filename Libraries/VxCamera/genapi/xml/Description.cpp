#include "VxCamera/genapi/xml/Description.h"

#include <algorithm>
#include <utility>

#include "VxCamera/genapi/xml/DescriptionReader.h"
#include "VxCamera/genapi/xml/Unzip.h"

namespace genapi {

namespace {

// Chosen: a large description needs some twenty blocks.
constexpr std::size_t kBlockBytes = 64 * 1024;

constexpr std::pair<std::string_view, NameSpace> kPrefixes[] = {{"Std::", NameSpace::Standard},
                                                                {"Cust::", NameSpace::Custom}};

} // namespace

std::string_view TextPool::Add(std::string_view text)
{
    if (text.empty())
        return {};
    if (m_blocks.empty() || m_blocks.back().capacity() - m_blocks.back().size() < text.size())
        m_blocks.emplace_back().reserve(std::max(kBlockBytes, text.size()));
    std::string& block = m_blocks.back();
    const std::size_t start = block.size();
    block.append(text);
    return std::string_view(block).substr(start);
}

std::size_t TextPool::Bytes() const
{
    std::size_t bytes = 0;
    for (const std::string& block : m_blocks)
        bytes += block.capacity();
    return bytes;
}

VxExpected<std::shared_ptr<const Description>> Description::Parse(std::string_view file)
{
    std::string unzipped;
    if (IsZipArchive(file)) {
        auto content = Unzip(file);
        if (!content)
            return content.Error();
        unzipped = *std::move(content);
        file = unzipped;
    }
    const std::shared_ptr<Description> description(new Description);
    const VxResult result = DescriptionReader(*description).Read(file);
    if (!result.IsOK())
        return result;
    return std::shared_ptr<const Description>(description);
}

std::optional<std::uint32_t> Description::Find(std::string_view name) const
{
    std::optional<NameSpace> wanted;
    for (const auto& [prefix, nameSpace] : kPrefixes) {
        if (name.starts_with(prefix)) {
            name.remove_prefix(prefix.size());
            wanted = nameSpace;
            break;
        }
    }
    for (const auto* const names : {&m_byName, &m_otherNameSpace}) {
        const auto found = names->find(name);
        if (found != names->end() && (!wanted || m_nodes[found->second].nameSpace == *wanted))
            return found->second;
    }
    return std::nullopt;
}

std::size_t Description::Bytes() const
{
    // Chosen: what a name costs in the hash table, with its bucket.
    constexpr std::size_t kNameBytes = 64;
    return sizeof(*this) + m_texts.Bytes() + m_properties.capacity() * sizeof(Property) +
           m_nodes.capacity() * sizeof(NodeDescription) + m_byName.size() * kNameBytes;
}

} // namespace genapi
