#include "VxDSSource/stream/VxDSStream.h"

#include "BaseClasses/CAutoLock.h"
#include "VxDSSource/camera/VxGenBoolean.h"
#include "VxDSSource/camera/VxGenCommand.h"
#include "VxDSSource/camera/VxGenEnum.h"
#include "VxDSSource/camera/VxGenParameterArray.h"

#include <array>

using namespace vxds;

namespace {

constexpr UINT kLastSelector = 2; // 0 link, 1 camera, 2 stream receiver

struct TypeName {
    VxGenType type;
    const wchar_t* name;
};

constexpr std::array<TypeName, 7> kTypeNames = {{
    {VxGenType::Integer, L"Integer"},
    {VxGenType::Enum, L"Enum"},
    {VxGenType::Boolean, L"Boolean"},
    {VxGenType::String, L"String"},
    {VxGenType::Command, L"Command"},
    {VxGenType::Float, L"Float"},
    {VxGenType::Register, L"Register"},
}};

/// @param[out] error  what the camera library has to say, if anything
HRESULT Translate(const VxResult& result, std::wstring& error)
{
    if (result.IsOK())
        return S_OK;
    error = result.GetDescription().Wide();
    return E_FAIL;
}

HRESULT EntryName(const VxGenEnum& feature, UINT index, std::wstring& name)
{
    const VxGenEnumEntry* entry = nullptr;
    VxString text;
    if (!feature.GetEntryByIndex(index, &entry).IsOK() || entry == nullptr || !entry->GetName(text).IsOK())
        return E_INVALIDARG;
    name = text.Wide();
    return S_OK;
}

UINT EntryCount(const VxGenEnum& feature)
{
    std::int64_t count = 0;
    if (!feature.GetEntriesCount(count).IsOK())
        return 0;
    return static_cast<UINT>(count); // entries are few
}

/// Features whose change changes the size of the camera's pictures.
bool ChangesPictureSize(const std::wstring& feature)
{
    return feature == L"Width" || feature == L"Height" || feature == L"Interlaced";
}

} // namespace

UINT VxDSStream::SourceCount()
{
    const CAutoLock lock(m_link.Guard());
    VxDevice* const device = m_link.Device();
    const VxGenEnum* const selector =
        device != nullptr ? device->GetParameters()->GetEnum("SourceSelector") : nullptr;
    return selector != nullptr ? EntryCount(*selector) : 0;
}

HRESULT VxDSStream::GetSourceName(UINT index, std::wstring& name)
{
    const CAutoLock lock(m_link.Guard());
    VxDevice* const device = m_link.Device();
    const VxGenEnum* const selector =
        device != nullptr ? device->GetParameters()->GetEnum("SourceSelector") : nullptr;
    if (selector != nullptr)
        return EntryName(*selector, index, name);
    name.clear();
    return S_OK;
}

HRESULT VxDSStream::SetFeatureSelector(UINT selector)
{
    if (selector > kLastSelector)
        return E_FAIL;
    m_featureSelector = selector;
    return S_OK;
}

bool VxDSStream::AreFeaturesAvailable()
{
    const CAutoLock lock(m_link.Guard());
    return m_link.Features(m_featureSelector) != nullptr;
}

HRESULT VxDSStream::OnFeatures(const std::function<HRESULT(VxGenParameterArray&)>& action)
{
    const CAutoLock lock(m_link.Guard());
    VxGenParameterArray* const features = m_link.Features(m_featureSelector);
    return features != nullptr ? action(*features) : E_UNEXPECTED;
}

HRESULT VxDSStream::OnFeature(const std::wstring& name, const std::function<HRESULT(VxGenParameter&)>& action)
{
    return OnFeatures([&](VxGenParameterArray& features) {
        VxGenParameter* const feature = features.Get(VxString(name));
        return feature != nullptr ? action(*feature) : E_INVALIDARG;
    });
}

HRESULT VxDSStream::GetFeatureCount(UINT& count)
{
    return OnFeatures([&](VxGenParameterArray& features) {
        count = static_cast<UINT>(features.GetCount()); // thousands at most
        return S_OK;
    });
}

HRESULT VxDSStream::GetFeatureName(UINT index, std::wstring& name)
{
    return OnFeatures([&](VxGenParameterArray& features) {
        const VxGenParameter* const feature = features.Get(std::size_t{index});
        if (feature == nullptr)
            return E_INVALIDARG;
        name = feature->GetName().Wide();
        return S_OK;
    });
}

HRESULT VxDSStream::GetFeatureCategory(const std::wstring& name, std::wstring& category)
{
    return OnFeature(name, [&](VxGenParameter& feature) {
        category = feature.GetCategory().Wide();
        return S_OK;
    });
}

HRESULT VxDSStream::GetFeatureValue(const std::wstring& name, std::wstring& value)
{
    return OnFeature(name, [&](VxGenParameter& feature) {
        VxString text;
        if (!feature.ToString(text).IsOK())
            return E_FAIL;
        value = text.Wide();
        return S_OK;
    });
}

HRESULT VxDSStream::SetFeatureValue(const std::wstring& name, const std::wstring& value, std::wstring& error)
{
    const HRESULT result = OnFeature(
        name, [&](VxGenParameter& feature) { return Translate(feature.FromString(VxString(value)), error); });
    if (result == S_OK && ChangesPictureSize(name))
        UpdateOutputSize();
    return result;
}

HRESULT VxDSStream::GetFeatureType(const std::wstring& name, std::wstring& type)
{
    return OnFeature(name, [&](VxGenParameter& feature) {
        VxGenType kind = VxGenType::Unknown;
        if (!feature.GetType(kind).IsOK())
            return E_FAIL;
        for (const TypeName& each : kTypeNames) {
            if (each.type == kind) {
                type = each.name;
                return S_OK;
            }
        }
        return E_UNEXPECTED;
    });
}

HRESULT VxDSStream::GetFeatureAccess(const std::wstring& name, bool& isAvailable, bool& isReadable,
                                     bool& isWritable)
{
    return OnFeature(name, [&](VxGenParameter& feature) {
        isAvailable = feature.IsAvailable();
        isReadable = feature.IsReadable();
        isWritable = feature.IsWritable();
        return S_OK;
    });
}

HRESULT VxDSStream::ExecuteFeature(const std::wstring& name, std::wstring& error)
{
    return OnFeature(name, [&](VxGenParameter& feature) {
        auto* const command = dynamic_cast<VxGenCommand*>(&feature);
        return command != nullptr ? Translate(command->Execute(), error) : E_INVALIDARG;
    });
}

HRESULT VxDSStream::GetEnumEntryCount(const std::wstring& name, UINT& count)
{
    return OnFeatures([&](VxGenParameterArray& features) {
        const VxGenParameter* const feature = features.Get(VxString(name));
        count = 0;
        if (const auto* const list = dynamic_cast<const VxGenEnum*>(feature))
            count = EntryCount(*list);
        else if (dynamic_cast<const VxGenBoolean*>(feature) != nullptr)
            count = 2;
        return S_OK;
    });
}

HRESULT VxDSStream::GetEnumEntryName(const std::wstring& name, UINT index, std::wstring& entry)
{
    return OnFeatures([&](VxGenParameterArray& features) -> HRESULT {
        const VxGenParameter* const feature = features.Get(VxString(name));
        if (const auto* const list = dynamic_cast<const VxGenEnum*>(feature))
            return EntryName(*list, index, entry);
        if (dynamic_cast<const VxGenBoolean*>(feature) == nullptr)
            return E_UNEXPECTED;
        if (index > 1)
            return E_INVALIDARG;
        entry = index == 0 ? L"true" : L"false";
        return S_OK;
    });
}

HRESULT VxDSStream::GetFeatureVisibility(const std::wstring& name, UINT& visibility)
{
    return OnFeature(name, [&](VxGenParameter& feature) {
        VxGenVisibility level = VxGenVisibility::Beginner;
        if (!feature.GetVisibility(level).IsOK())
            return E_FAIL;
        visibility = static_cast<UINT>(level);
        return S_OK;
    });
}
