#pragma once

#include "VxCamera/surface/ListedParameter.h"
#include "VxDSSource/camera/VxGenEnum.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

/// A choice of this library's own.
///
/// Owner and thread: see ListedParameter.
class ListedEnum final : public ListedParameter<VxGenEnum, VxGenType::Enum> {
public:
    /// @param entries  names; an entry's number is its index
    /// @param get      index of the entry in force
    /// @param set      empty: read only
    ListedEnum(ParameterFacts facts, const std::vector<std::string_view>& entries,
               std::function<std::size_t()> get, std::function<VxResult(std::size_t)> set = {});
    ~ListedEnum() override;

    [[nodiscard]] bool IsReadable() const override { return true; }
    [[nodiscard]] bool IsWritable() const override { return static_cast<bool>(m_set); }
    VxResult ToString(VxString& text) const override;
    VxResult FromString(const VxString& text) override;
    VxResult GetEntriesCount(std::int64_t& count) const override;
    VxResult GetEntryByIndex(std::int64_t index, const VxGenEnumEntry** entry) const override;
    VxResult GetValue(VxString& name) const override;
    VxResult SetValue(const VxString& name) override;

private:
    class Entry;
    std::vector<std::unique_ptr<Entry>> m_entries;
    const std::function<std::size_t()> m_get;
    const std::function<VxResult(std::size_t)> m_set;
};
