#include "VxCamera/surface/ListedEnum.h"

#include <string>
#include <utility>

class ListedEnum::Entry final : public VxGenEnumEntry {
public:
    Entry(VxString name, std::int64_t value) : m_name(std::move(name)), m_value(value) {}

    VxResult GetName(VxString& name) const override
    {
        name = m_name;
        return VxResult::Ok();
    }
    VxResult GetValue(std::int64_t& value) const override
    {
        value = m_value;
        return VxResult::Ok();
    }
    [[nodiscard]] bool IsAvailable() const override { return true; }
    [[nodiscard]] const VxString& Name() const { return m_name; }

private:
    const VxString m_name;
    const std::int64_t m_value;
};

ListedEnum::ListedEnum(ParameterFacts facts, const std::vector<std::string_view>& entries,
                       std::function<std::size_t()> get, std::function<VxResult(std::size_t)> set)
    : ListedParameter(std::move(facts)), m_get(std::move(get)), m_set(std::move(set))
{
    for (const std::string_view name : entries)
        m_entries.push_back(std::make_unique<Entry>(name, static_cast<std::int64_t>(m_entries.size())));
}

ListedEnum::~ListedEnum() = default;

VxResult ListedEnum::ToString(VxString& text) const
{
    return GetValue(text);
}

VxResult ListedEnum::FromString(const VxString& text)
{
    return SetValue(text);
}

VxResult ListedEnum::GetEntriesCount(std::int64_t& count) const
{
    count = static_cast<std::int64_t>(m_entries.size()); // a handful
    return VxResult::Ok();
}

VxResult ListedEnum::GetEntryByIndex(std::int64_t index, const VxGenEnumEntry** entry) const
{
    if (index < 0 || index >= static_cast<std::int64_t>(m_entries.size()))
        return OutOfRange("entries 0 to " + std::to_string(m_entries.size() - 1));
    *entry = m_entries[static_cast<std::size_t>(index)].get(); // not negative, tested above
    return VxResult::Ok();
}

VxResult ListedEnum::GetValue(VxString& name) const
{
    const std::size_t index = m_get();
    if (index >= m_entries.size())
        return VxResult(VxError::InvalidData, GetName());
    return m_entries[index]->GetName(name);
}

VxResult ListedEnum::SetValue(const VxString& name)
{
    if (!m_set)
        return NotWritable();
    std::string known;
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        if (m_entries[i]->Name() == name)
            return m_set(i);
        known += (known.empty() ? "" : ", ") + m_entries[i]->Name().Narrow();
    }
    return VxResult(VxError::InvalidData,
                    GetName().Narrow() + " has no entry \"" + name.Narrow() + "\", but " + known);
}
