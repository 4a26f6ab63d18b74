#include "VxCamera/genapi/node/ValueSource.h"

#include "VxCamera/genapi/xml/NumberText.h"

namespace genapi {

template <typename T>
void ValueSource<T>::Apply(const NodeProperty& property, std::optional<T> number)
{
    const auto slot = Slot{.node = property.target, .number = number.value_or(T{})};
    switch (property.element) {
    case Element::Value:
    case Element::PValue:
        m_single = slot;
        return;
    case Element::PIndex:
        m_index = property.target;
        return;
    case Element::ValueIndexed:
    case Element::PValueIndexed:
        if (const auto index = ParseInteger(property.argument))
            m_indexed.emplace(*index, slot);
        return;
    case Element::ValueDefault:
    case Element::PValueDefault:
        m_default = slot;
        return;
    case Element::PValueCopy:
        m_copies.push_back(property.target);
        return;
    default:
        return;
    }
}

template <typename T>
auto ValueSource<T>::Chosen(const Node& owner) -> VxExpected<Slot*>
{
    if (m_single)
        return &*m_single;
    if (m_index == nullptr)
        return owner.Error(VxError::InvalidData, "the camera's description gives it no value");
    const auto index = m_index->GetInteger();
    if (!index)
        return index.Error();
    if (const auto found = m_indexed.find(*index); found != m_indexed.end())
        return &found->second;
    if (m_default)
        return &*m_default;
    return owner.Error(VxError::NotAvailable,
                       "the camera's description gives it no value for the index " + std::to_string(*index));
}

template <typename T>
VxExpected<T> ValueSource<T>::Get(const Node& owner)
{
    const auto slot = Chosen(owner);
    if (!slot)
        return slot.Error();
    return (*slot)->node != nullptr ? GetNumber<T>(*(*slot)->node) : (*slot)->number;
}

template <typename T>
VxResult ValueSource<T>::Set(Node& owner, NodeContext& context, T value)
{
    const auto slot = Chosen(owner);
    if (!slot)
        return slot.Error();
    if ((*slot)->node != nullptr) {
        if (VxResult result = SetNumber<T>(*(*slot)->node, value); !result.IsOK())
            return result;
    } else {
        (*slot)->number = value;
        context.Listener().Changed(owner);
    }
    for (Node* const copy : m_copies)
        if (VxResult result = SetNumber<T>(*copy, value); !result.IsOK())
            return result;
    return VxResult::Ok();
}

template <typename T>
AccessMode ValueSource<T>::Access(const Node& owner)
{
    const auto slot = Chosen(owner);
    if (!slot)
        return AccessMode::NotAvailable;
    return (*slot)->node != nullptr ? (*slot)->node->Access() : AccessMode::ReadWrite;
}

template <typename T>
Node* ValueSource<T>::Target(const Node& owner)
{
    const auto slot = Chosen(owner);
    return slot ? (*slot)->node : nullptr;
}

template class ValueSource<std::int64_t>;
template class ValueSource<double>;

} // namespace genapi
