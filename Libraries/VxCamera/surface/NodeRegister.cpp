#include "VxCamera/surface/NodeRegister.h"

namespace surface {

VxResult NodeRegister::GetValue(std::vector<std::byte>& bytes) const
{
    return Store(Map().GetBytes(Node()), bytes);
}

VxResult NodeRegister::SetValue(std::span<const std::byte> bytes)
{
    return Map().SetBytes(Node(), bytes);
}

} // namespace surface
