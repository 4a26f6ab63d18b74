#include "VxCamera/genapi/xml/Description.h"

#include <algorithm>

#include "VxCamera/genapi/xml/DescriptionReader.h"

namespace genapi {

namespace {

// Chosen: a large description needs some twenty blocks.
constexpr std::size_t kBlockBytes = 64 * 1024;

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

VxExpected<std::shared_ptr<const Description>> Description::Parse(std::string_view xml)
{
    const std::shared_ptr<Description> description(new Description);
    const VxResult result = DescriptionReader(*description).Read(xml);
    if (!result.IsOK())
        return result;
    return std::shared_ptr<const Description>(description);
}

std::optional<std::uint32_t> Description::Find(std::string_view name) const
{
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? std::nullopt : std::optional(found->second);
}

} // namespace genapi
