#include "VxCamera/surface/ParameterList.h"

VxGenParameter* ParameterList::Get(std::size_t index) const
{
    return index < m_parameters.size() ? m_parameters[index].get() : nullptr;
}

VxGenParameter* ParameterList::Get(const VxString& name) const
{
    for (const auto& parameter : m_parameters)
        if (parameter->GetName() == name)
            return parameter.get();
    return nullptr;
}
