#include "unit/VxDSSource/pages/ScriptedSource.h"

#include <algorithm>

namespace {

std::string Narrow(BSTR text)
{
    const std::wstring wide = text != nullptr ? std::wstring(text, ::SysStringLen(text)) : std::wstring();
    return {wide.begin(), wide.end()}; // the tests' names are ASCII
}

HRESULT Return(const std::wstring& text, BSTR* target)
{
    *target = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return S_OK;
}

} // namespace

std::vector<std::string> ScriptedSource::TakeCalls()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_calls, {});
}

std::vector<std::string> ScriptedSource::TakeCalls(const std::string& beginning)
{
    std::vector<std::string> calls = TakeCalls();
    std::erase_if(calls, [&](const std::string& call) { return !call.starts_with(beginning); });
    return calls;
}

void ScriptedSource::Change(const std::function<void()>& change)
{
    const std::lock_guard lock(m_mutex);
    change();
}

HRESULT ScriptedSource::Note(const std::string& call)
{
    {
        const std::lock_guard lock(m_mutex);
        m_calls.push_back(call);
    }
    if (onCall)
        onCall(call);
    return S_OK;
}

HRESULT ScriptedSource::GetNumber(const std::string& name, UINT* value)
{
    Note("Get" + name);
    const std::lock_guard lock(m_mutex);
    *value = numbers[name];
    return S_OK;
}

HRESULT ScriptedSource::SetNumber(const std::string& name, UINT value)
{
    Note("Set" + name + "(" + std::to_string(static_cast<INT>(value)) + ")");
    const std::lock_guard lock(m_mutex);
    if (SUCCEEDED(setting))
        numbers[name] = value;
    return setting;
}

HRESULT ScriptedSource::GetText(const std::string& name, BSTR* value)
{
    Note("Get" + name);
    const std::lock_guard lock(m_mutex);
    return Return(texts[name], value);
}

HRESULT ScriptedSource::SetText(const std::string& name, BSTR value)
{
    Note("Set" + name + "(" + Narrow(value) + ")");
    const std::lock_guard lock(m_mutex);
    if (SUCCEEDED(setting))
        texts[name] = value != nullptr ? std::wstring(value, ::SysStringLen(value)) : std::wstring();
    return setting;
}

STDMETHODIMP ScriptedSource::GetDiagnosticsEnabled(BOOL* enabled)
{
    UINT number = 0;
    GetNumber("DiagnosticsEnabled", &number);
    *enabled = number != 0 ? TRUE : FALSE;
    return S_OK;
}

STDMETHODIMP ScriptedSource::SetDiagnosticsEnabled(BOOL enabled)
{
    return SetNumber("DiagnosticsEnabled", enabled ? 1 : 0);
}

STDMETHODIMP ScriptedSource::GetSourceCount(UINT* count)
{
    Note("GetSourceCount");
    *count = static_cast<UINT>(sources.size());
    return S_OK;
}

STDMETHODIMP ScriptedSource::GetSourceName(UINT index, BSTR* name)
{
    Note("GetSourceName(" + std::to_string(index) + ")");
    return index < sources.size() ? Return(sources[index], name) : E_INVALIDARG;
}

STDMETHODIMP ScriptedSource::IsParameterArrayAvailable(BOOL* available)
{
    Note("IsParameterArrayAvailable");
    *available = isThere.at(Selected()) ? TRUE : FALSE;
    return S_OK;
}

STDMETHODIMP ScriptedSource::GetParameterCount(UINT* count)
{
    Note("GetParameterCount");
    *count = static_cast<UINT>(features.at(Selected()).size());
    return S_OK;
}

STDMETHODIMP ScriptedSource::GetParameterName(UINT index, BSTR* name)
{
    Note("GetParameterName(" + std::to_string(index) + ")");
    const auto& set = features.at(Selected());
    return index < set.size() ? Return(set[index].name, name) : E_INVALIDARG;
}

HRESULT ScriptedSource::OnFeature(const std::string& call, BSTR name,
                                  const std::function<HRESULT(SourceFeature&)>& action)
{
    Note(call + "(" + Narrow(name) + ")");
    const std::lock_guard lock(m_mutex);
    auto& set = features.at(Selected());
    const auto found =
        std::ranges::find_if(set, [&](const SourceFeature& feature) { return feature.name == name; });
    return found != set.end() ? action(*found) : E_INVALIDARG;
}

STDMETHODIMP ScriptedSource::GetParameterCategory(BSTR name, BSTR* category)
{
    return OnFeature("GetParameterCategory", name,
                     [&](SourceFeature& feature) { return Return(feature.category, category); });
}

STDMETHODIMP ScriptedSource::GetParameterValue(BSTR name, BSTR* value)
{
    return OnFeature("GetParameterValue", name,
                     [&](SourceFeature& feature) { return Return(feature.value, value); });
}

STDMETHODIMP ScriptedSource::SetParameterValue(BSTR name, BSTR value, BSTR* error)
{
    return OnFeature("SetParameterValue", name, [&](SourceFeature& feature) {
        if (SUCCEEDED(feature.writing))
            feature.value = value;
        else if (!feature.reason.empty())
            Return(feature.reason, error);
        return feature.writing;
    });
}

STDMETHODIMP ScriptedSource::GetParameterType(BSTR name, BSTR* type)
{
    return OnFeature("GetParameterType", name,
                     [&](SourceFeature& feature) { return Return(feature.type, type); });
}

STDMETHODIMP ScriptedSource::GetParameterAccess(BSTR name, BOOL* available, BOOL* readable, BOOL* writable)
{
    return OnFeature("GetParameterAccess", name, [&](SourceFeature& feature) {
        *available = feature.isAvailable;
        *readable = feature.isReadable;
        *writable = feature.isWritable;
        return S_OK;
    });
}

STDMETHODIMP ScriptedSource::ExecuteCommand(BSTR name, BSTR* error)
{
    return OnFeature("ExecuteCommand", name, [&](SourceFeature& feature) {
        if (feature.writing == E_FAIL)
            Return(feature.reason, error);
        return feature.writing;
    });
}

STDMETHODIMP ScriptedSource::GetEnumEntryCount(BSTR name, UINT* count)
{
    return OnFeature("GetEnumEntryCount", name, [&](SourceFeature& feature) {
        *count = static_cast<UINT>(feature.entries.size());
        return S_OK;
    });
}

STDMETHODIMP ScriptedSource::GetEnumEntryName(BSTR name, UINT index, BSTR* entry)
{
    return OnFeature("GetEnumEntryName", name,
                     [&](SourceFeature& feature) { return Return(feature.entries.at(index), entry); });
}

STDMETHODIMP ScriptedSource::GetParameterVisibility(BSTR name, UINT* visibility)
{
    return OnFeature("GetParameterVisibility", name, [&](SourceFeature& feature) {
        *visibility = feature.visibility;
        return S_OK;
    });
}

STDMETHODIMP ScriptedSource::GetOutputSize(UINT* widthPx, UINT* heightPx)
{
    Note("GetOutputSize");
    *widthPx = numbers["OutputWidth"];
    *heightPx = numbers["OutputHeight"];
    return S_OK;
}

STDMETHODIMP ScriptedSource::SetOutputSize(INT widthPx, INT heightPx)
{
    Note("SetOutputSize(" + std::to_string(widthPx) + ", " + std::to_string(heightPx) + ")");
    if (FAILED(setting))
        return setting;
    numbers["OutputWidth"] = static_cast<UINT>(widthPx);
    numbers["OutputHeight"] = static_cast<UINT>(heightPx);
    return S_OK;
}
