#include "VxCamera/genapi/xml/DescriptionCache.h"

#include <algorithm>
#include <utility>

namespace genapi {

namespace {

// Chosen: more models of cameras than one process uses, and the memory of twenty usual descriptions.
constexpr std::size_t kMaxCount = 16;
constexpr std::size_t kMaxBytes = 64 * 1024 * 1024;

} // namespace

VxExpected<std::shared_ptr<const Description>> DescriptionCache::Get(std::string_view file)
{
    {
        const VxLock lock(m_mutex);
        if (auto known = Find(file); known != nullptr)
            return known;
    }
    auto description = Description::Parse(file);
    if (!description)
        return description.Error();
    Known known{std::string(file), *description};
    const std::size_t bytes = known.Bytes();
    const VxLock lock(m_mutex);
    if (auto other = Find(file); other != nullptr) // another thread was faster
        return other;
    if (bytes <= kMaxBytes) {
        MakeRoom(bytes);
        m_known.push_back(std::move(known));
    }
    return description;
}

std::size_t DescriptionCache::Count() const
{
    const VxLock lock(m_mutex);
    return m_known.size();
}

std::shared_ptr<const Description> DescriptionCache::Find(std::string_view file)
{
    const auto found = std::ranges::find(m_known, file, &Known::file);
    if (found == m_known.end())
        return nullptr;
    std::rotate(found, found + 1, m_known.end());
    return m_known.back().description;
}

void DescriptionCache::MakeRoom(std::size_t bytes)
{
    std::size_t used = 0;
    for (const Known& known : m_known)
        used += known.Bytes();
    while (!m_known.empty() && (m_known.size() >= kMaxCount || used + bytes > kMaxBytes)) {
        used -= m_known.front().Bytes();
        m_known.erase(m_known.begin());
    }
}

} // namespace genapi
