#include "VxCamera/genapi/node/EnumerationNode.h"

#include <algorithm>

namespace genapi {

namespace {

// Chosen: what fits into a message box.
constexpr std::size_t kMaxNamesShown = 40;

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

EnumEntryNode* EnumerationNode::FindEntry(std::string_view symbol) const
{
    for (EnumEntryNode* const entry : m_entries)
        if (entry->Symbol() == symbol)
            return entry;
    return nullptr;
}

VxExpected<EnumEntryNode*> EnumerationNode::Current()
{
    const auto value = GetInteger();
    if (!value)
        return value.Error();
    for (EnumEntryNode* const entry : m_entries)
        if (entry->Value() == *value)
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
    return Write(*entry);
}

VxResult EnumerationNode::DoSetInteger(std::int64_t value)
{
    // Several entries may share a number, for instance an old and a new name: one of them has to be
    // available.
    EnumEntryNode* found = nullptr;
    for (EnumEntryNode* const entry : m_entries)
        if (entry->Value() == value && (found == nullptr || !IsAvailable(found->Access())))
            found = entry;
    if (found == nullptr)
        return Error(VxError::OutOfRange,
                     "no entry has the number " + std::to_string(value) + "; there are " + KnownNames());
    return Write(*found);
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
    const auto isSmaller = [](const EnumEntryNode* a, const EnumEntryNode* b) {
        return a->Value() < b->Value();
    };
    const auto [first, last] = std::minmax_element(m_entries.begin(), m_entries.end(), isSmaller);
    return IntegerLimits{.minimum = (*first)->Value(), .maximum = (*last)->Value(), .increment = 1};
}

} // namespace genapi
