#include "VxSimulator/device/AnswerMemory.h"

#include <algorithm>

namespace simulator {

std::optional<gvcp::Datagram> AnswerMemory::AnswerFor(const transport::Ipv4Endpoint& application,
                                                      std::span<const std::byte> command) const
{
    const auto entry = std::ranges::find(m_entries, application, &Entry::application);
    if (entry == m_entries.end() || !std::ranges::equal(entry->command.Bytes(), command))
        return std::nullopt;
    return entry->answer;
}

void AnswerMemory::Remember(const transport::Ipv4Endpoint& application, std::span<const std::byte> command,
                            const gvcp::Datagram& answer)
{
    std::erase_if(m_entries, [&](const Entry& entry) { return entry.application == application; });
    if (m_entries.size() == kApplications)
        m_entries.pop_front();
    m_entries.push_back({application, gvcp::Datagram(command), answer});
}

} // namespace simulator
