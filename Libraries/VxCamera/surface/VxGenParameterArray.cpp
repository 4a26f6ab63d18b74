#include "VxDSSource/camera/VxGenParameterArray.h"

#include <string>

#include "VxCamera/surface/NoThrow.h"
#include "VxDSSource/camera/VxGenCommand.h"
#include "VxDSSource/camera/VxGenEnum.h"
#include "VxDSSource/camera/VxGenFloat.h"
#include "VxDSSource/camera/VxGenInteger.h"

namespace {

/// Looks a feature up, and calls `use` with it if it is of the type wanted.
template <typename Wanted, typename Use>
VxResult WithFeature(const VxGenParameterArray& array, const VxString& name, const char* kind, Use use)
{
    return NoThrow([&] {
        VxGenParameter* const parameter = array.Get(name);
        if (parameter == nullptr)
            return VxResult(VxError::NotFound, name.Narrow() + ": there is no feature of this name");
        auto* const wanted = dynamic_cast<Wanted*>(parameter);
        if (wanted == nullptr)
            return VxResult(VxError::TypeMismatch, name.Narrow() + ": it is no " + kind);
        return use(*wanted);
    });
}

constexpr const char* kInteger = "integer";

} // namespace

VxGenInteger* VxGenParameterArray::GetInteger(const VxString& name) const
{
    return dynamic_cast<VxGenInteger*>(Get(name));
}

VxGenEnum* VxGenParameterArray::GetEnum(const VxString& name) const
{
    return dynamic_cast<VxGenEnum*>(Get(name));
}

VxGenCommand* VxGenParameterArray::GetCommand(const VxString& name) const
{
    return dynamic_cast<VxGenCommand*>(Get(name));
}

VxResult VxGenParameterArray::GetIntegerValue(const VxString& name, std::int64_t& value) const
{
    return WithFeature<VxGenInteger>(*this, name, kInteger,
                                     [&](VxGenInteger& it) { return it.GetValue(value); });
}

VxResult VxGenParameterArray::SetIntegerValue(const VxString& name, std::int64_t value)
{
    return WithFeature<VxGenInteger>(*this, name, kInteger,
                                     [&](VxGenInteger& it) { return it.SetValue(value); });
}

VxResult VxGenParameterArray::GetFloatValue(const VxString& name, double& value) const
{
    return WithFeature<VxGenFloat>(*this, name, "float", [&](VxGenFloat& it) { return it.GetValue(value); });
}

VxResult VxGenParameterArray::GetEnumValue(const VxString& name, VxString& value) const
{
    return WithFeature<VxGenEnum>(*this, name, "enumeration",
                                  [&](VxGenEnum& it) { return it.GetValue(value); });
}

VxResult VxGenParameterArray::ExecuteCommand(const VxString& name)
{
    return WithFeature<VxGenCommand>(*this, name, "command", [](VxGenCommand& it) { return it.Execute(); });
}
