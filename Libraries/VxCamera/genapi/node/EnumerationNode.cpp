#include "VxCamera/genapi/node/EnumerationNode.h"

#include <algorithm>

namespace genapi {

namespace {

// Chosen: what fits into a message box.
constexpr std::size_t kMaxNamesShown = 40;

// Chosen: looking at an entry costs a fraction of evaluating a node.
constexpr std::size_t kEntriesPerStep = 16;

} // namespace

void EnumerationNode::Apply(const NodeProperty& property)
{
    if (property.element == Element::EnumEntry) {
        if (auto* const entry = dynamic_cast<EnumEntryNode*>(property.target); entry != nullptr)
            m_entries.push_back(entry);
        return;
    }
    m_source.Apply(property, property.element == Element::Value ? IntegerOf(property) : std::nullopt);
}

void EnumerationNode::Finish()
{
    if (m_source.IsEmpty())
        SetFault("it has neither a value nor a node that gives one");
}

AccessMode EnumerationNode::OwnAccess()
{
    const auto isUsable = [](EnumEntryNode* entry) { return IsAvailable(entry->Access()); };
    if (!m_entries.empty() && std::ranges::none_of(m_entries, isUsable))
        return AccessMode::NotAvailable;
    return m_source.Access(*this);
}

EnumEntryNode* EnumerationNode::FindEntry(std::string_view symbol) const
{
    for (EnumEntryNode* const entry : m_entries)
        if (entry->Symbol() == symbol)
            return entry;
    return nullptr;
}

EnumEntryNode* EnumerationNode::EntryOf(std::int64_t value) const
{
    Context().Spend(m_entries.size() / kEntriesPerStep);
    const auto found = std::ranges::find(m_entries, value, &EnumEntryNode::Value);
    return found == m_entries.end() ? nullptr : *found;
}

std::string_view EnumerationNode::NameOfNumber(std::int64_t value) const
{
    const EnumEntryNode* const entry = EntryOf(value);
    return entry != nullptr ? entry->Symbol() : std::string_view();
}

VxExpected<EnumEntryNode*> EnumerationNode::Current()
{
    const auto value = GetInteger();
    if (!value)
        return value.Error();
    if (EnumEntryNode* const entry = EntryOf(*value); entry != nullptr)
        return entry;
    return Error(VxError::InvalidData,
                 "the camera's number " + std::to_string(*value) + " belongs to no entry");
}

VxResult EnumerationNode::Select(std::string_view symbol)
{
    EnumEntryNode* const entry = FindEntry(symbol);
    if (entry == nullptr)
        return Error(VxError::InvalidData,
                     "there is no entry \"" + std::string(symbol) + "\"; there are " + KnownNames());
    return Verified(Write(*entry));
}

VxResult EnumerationNode::DoSetInteger(std::int64_t value)
{
    // Several entries may share a number, for instance an old and a new name: one of them has to be
    // available.
    EnumEntryNode* found = nullptr;
    Context().Spend(m_entries.size() / kEntriesPerStep);
    for (EnumEntryNode* const entry : m_entries)
        if (entry->Value() == value && (found == nullptr || !IsAvailable(found->Access())))
            found = entry;
    if (found == nullptr)
        return Error(VxError::OutOfRange,
                     "no entry has the number " + std::to_string(value) + "; there are " + KnownNames());
    return Write(*found);
}

VxExpected<double> EnumerationNode::DoGetFloat()
{
    const auto value = GetInteger();
    if (!value)
        return value.Error();
    const EnumEntryNode* const entry = EntryOf(*value);
    return entry != nullptr ? entry->Number() : static_cast<double>(*value);
}

VxResult EnumerationNode::DoSetFloat(double value)
{
    Context().Spend(m_entries.size() / kEntriesPerStep);
    const auto found = std::ranges::find(m_entries, value, &EnumEntryNode::Number);
    return found != m_entries.end() ? Write(**found) : SetRounded(value);
}

VxResult EnumerationNode::Write(EnumEntryNode& entry)
{
    if (!IsAvailable(entry.Access()))
        return Error(VxError::NotAvailable, "the entry \"" + std::string(entry.Symbol()) +
                                                "\" is not available in the present state of the camera");
    const VxResult result = m_source.Set(*this, Context(), entry.Value());
    if (entry.IsSelfClearing())
        Context().Listener().Forget(*this);
    return result;
}

std::string EnumerationNode::KnownNames() const
{
    std::string names;
    const std::size_t shown = std::min(m_entries.size(), kMaxNamesShown);
    for (std::size_t i = 0; i < shown; ++i) {
        names += names.empty() ? "" : ", ";
        names += m_entries[i]->Symbol();
    }
    if (shown < m_entries.size())
        names += " and " + std::to_string(m_entries.size() - shown) + " more";
    return names.empty() ? "none" : names;
}

VxExpected<IntegerLimits> EnumerationNode::DoGetIntegerLimits()
{
    if (m_entries.empty())
        return IntegerLimits{};
    if (!m_limits) {
        const auto [first, last] = std::ranges::minmax_element(m_entries, {}, &EnumEntryNode::Value);
        m_limits = {.minimum = (*first)->Value(), .maximum = (*last)->Value(), .increment = 1};
    }
    return *m_limits;
}

} // namespace genapi
