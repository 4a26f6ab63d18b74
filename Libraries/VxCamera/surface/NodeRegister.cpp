#include "VxCamera/surface/NodeRegister.h"

namespace surface {

VxResult NodeRegister::GetValue(std::vector<std::byte>& bytes) const
{
    return Store([&] { return Map().GetBytes(Node()); }, bytes);
}

VxResult NodeRegister::SetValue(std::span<const std::byte> bytes)
{
    return NoThrow([&] { return Map().SetBytes(Node(), bytes); });
}

} // namespace surface
