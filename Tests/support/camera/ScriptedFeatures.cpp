#include "support/camera/ScriptedFeatures.h"

#include "support/camera/CameraDouble.h"

#include <algorithm>

namespace {

template <typename Feature>
Feature* Find(const VxGenParameterArray& features, const VxString& name)
{
    return dynamic_cast<Feature*>(features.Get(name));
}

/// What the short forms of access return for a feature that is not of the type.
VxResult WhyNot(const VxGenParameterArray& features, const VxString& name)
{
    return features.Get(name) != nullptr ? VxError::TypeMismatch : VxError::NotFound;
}

} // namespace

void FeatureAnswers::NoteRead(const char* what) const
{
    TheCamera().log.Add(CallKind::Query, owner + "." + name + "." + what);
}

template <typename Base, VxGenType kType>
template <typename Value>
VxResult ScriptedFeature<Base, kType>::Write(const Value& from, Value& to, const std::string& text)
{
    TheCamera().log.Add(CallKind::Action, owner + "." + name + " = " + text);
    if (onWrite)
        onWrite();
    if (writing.IsOK())
        to = from;
    return writing;
}

VxResult ScriptedInteger::SetValue(std::int64_t from)
{
    return Write(from, value, std::to_string(from));
}

VxResult ScriptedInteger::FromString(const VxString& text)
{
    if (text.Narrow().find_first_not_of("-0123456789") != std::string::npos)
        return {VxError::InvalidData, "\"" + text.Narrow() + "\" is no integer"};
    return SetValue(std::stoll(text.Narrow()));
}

VxResult ScriptedFloat::SetValue(double from)
{
    return Write(from, value, std::to_string(from));
}

VxResult ScriptedBoolean::SetValue(bool from)
{
    return Write(from, value, from ? "true" : "false");
}

VxResult ScriptedString::SetValue(const VxString& from)
{
    return Write(from, value, from.Narrow());
}

VxResult ScriptedRegister::SetValue(std::span<const std::byte> from)
{
    return Write(std::vector<std::byte>(from.begin(), from.end()), value,
                 std::to_string(from.size()) + " bytes");
}

VxResult ScriptedCommand::Execute()
{
    const VxResult result = TheCamera().Act(owner + "." + name + "()");
    if (onWrite)
        onWrite();
    return result.IsOK() ? writing : result;
}

VxResult ScriptedEnumEntry::GetName(VxString& name) const
{
    TheCamera().log.Add(CallKind::Query, "entry " + m_name + ".GetName");
    name = m_name;
    return VxResult::Ok();
}

VxResult ScriptedEnum::GetEntriesCount(std::int64_t& count) const
{
    return Read("GetEntriesCount", static_cast<std::int64_t>(entries.size()), count);
}

VxResult ScriptedEnum::GetEntryByIndex(std::int64_t index, const VxGenEnumEntry** entry) const
{
    NoteRead("GetEntryByIndex");
    if (index < 0 || index >= static_cast<std::int64_t>(entries.size()))
        return VxError::OutOfRange;
    const std::string& wanted = entries[static_cast<std::size_t>(index)];
    const auto isWanted = [&](const auto& lent) { return lent->Name() == wanted; };
    auto found = std::ranges::find_if(m_lent, isWanted);
    if (found == m_lent.end())
        found = m_lent.insert(m_lent.end(), std::make_unique<ScriptedEnumEntry>(wanted));
    *entry = found->get();
    return VxResult::Ok();
}

VxResult ScriptedEnum::SetValue(const VxString& from)
{
    if (std::ranges::find(entries, from.Narrow()) == entries.end()) {
        TheCamera().log.Add(CallKind::Action, owner + "." + name + " = " + from.Narrow() + " refused");
        return VxError::NotFound;
    }
    return Write(from, value, from.Narrow());
}

ScriptedInteger& ScriptedFeatures::AddInteger(const std::string& name, std::int64_t value)
{
    auto& feature = Add<ScriptedInteger>(name);
    feature.value = value;
    return feature;
}

ScriptedEnum& ScriptedFeatures::AddEnum(const std::string& name, std::vector<std::string> entries)
{
    auto& feature = Add<ScriptedEnum>(name);
    feature.entries = std::move(entries);
    feature.value = feature.entries.at(0);
    return feature;
}

VxGenParameter* ScriptedFeatures::Get(std::size_t index) const
{
    return index < m_features.size() ? m_features[index].get() : nullptr;
}

VxGenParameter* ScriptedFeatures::Get(const VxString& name) const
{
    for (const auto& feature : m_features)
        if (feature->GetName() == name)
            return feature.get();
    return nullptr;
}

// --- The short forms of the camera surface.

VxGenInteger* VxGenParameterArray::GetInteger(const VxString& name) const
{
    return Find<VxGenInteger>(*this, name);
}

VxGenEnum* VxGenParameterArray::GetEnum(const VxString& name) const
{
    return Find<VxGenEnum>(*this, name);
}

VxGenCommand* VxGenParameterArray::GetCommand(const VxString& name) const
{
    return Find<VxGenCommand>(*this, name);
}

VxResult VxGenParameterArray::GetIntegerValue(const VxString& name, std::int64_t& value) const
{
    const auto* feature = Find<VxGenInteger>(*this, name);
    return feature != nullptr ? feature->GetValue(value) : WhyNot(*this, name);
}

VxResult VxGenParameterArray::SetIntegerValue(const VxString& name, std::int64_t value)
{
    auto* feature = Find<VxGenInteger>(*this, name);
    return feature != nullptr ? feature->SetValue(value) : WhyNot(*this, name);
}

VxResult VxGenParameterArray::GetFloatValue(const VxString& name, double& value) const
{
    const auto* feature = Find<VxGenFloat>(*this, name);
    return feature != nullptr ? feature->GetValue(value) : WhyNot(*this, name);
}

VxResult VxGenParameterArray::GetEnumValue(const VxString& name, VxString& value) const
{
    const auto* feature = Find<VxGenEnum>(*this, name);
    return feature != nullptr ? feature->GetValue(value) : WhyNot(*this, name);
}

VxResult VxGenParameterArray::ExecuteCommand(const VxString& name)
{
    auto* feature = Find<VxGenCommand>(*this, name);
    return feature != nullptr ? feature->Execute() : WhyNot(*this, name);
}
