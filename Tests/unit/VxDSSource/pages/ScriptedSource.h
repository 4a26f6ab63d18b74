#pragma once

#include "VxDSSource/filter/IVxDSSource.h"
#include "support/directshow/TestObject.h"

#include <array>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

// The interface's header leaves it to its users to tie the identifier to the type.
__CRT_UUID_DECL(IVxDSSource, 0x08C27C57, 0x0C37, 0x4D3D, 0x8C, 0xE1, 0xCC, 0x88, 0xE0, 0x0A, 0x57, 0xC9)

/// A feature as the control interface shows it.
struct SourceFeature {
    std::wstring name;
    std::wstring category = L"root";
    std::wstring type = L"Integer";
    std::wstring value = L"1";
    BOOL isAvailable = TRUE;
    BOOL isReadable = TRUE;
    BOOL isWritable = TRUE;
    UINT visibility = 0;
    std::vector<std::wstring> entries{};
    HRESULT writing = S_OK; ///< of a write or an execution
    std::wstring reason{};  ///< why it failed; empty: none is given
};

/// The control interface by itself: stores everything, tests nothing, and records every call.
///
/// Owner:  the test.
/// Thread: any.
class ScriptedSource final : public TestObject<IVxDSSource> {
public:
    std::map<std::string, UINT> numbers;       ///< by the name of the getter, without "Get"
    std::map<std::string, std::wstring> texts; ///< the same
    std::vector<std::wstring> sources;
    std::array<std::vector<SourceFeature>, 3> features;
    std::array<bool, 3> isThere = {true, true, true}; ///< each of the sets
    HRESULT setting = S_OK;                           ///< of every setter; a failure stores nothing
    std::function<void(const std::string& call)> onCall;

    /// All calls since the last question, in order: "GetRole", "SetRole(1)".
    [[nodiscard]] std::vector<std::string> TakeCalls();
    /// Those among them that begin with a text.
    [[nodiscard]] std::vector<std::string> TakeCalls(const std::string& beginning);
    void ForgetCalls() { std::ignore = TakeCalls(); }
    /// Changes features while a page reads them.
    void Change(const std::function<void()>& change);

#define VX_SCRIPTED_NUMBER(name, Argument)                                                                   \
    STDMETHODIMP Get##name(UINT* value) override                                                             \
    {                                                                                                        \
        return GetNumber(#name, value);                                                                      \
    }                                                                                                        \
    STDMETHODIMP Set##name(Argument value) override                                                          \
    {                                                                                                        \
        return SetNumber(#name, static_cast<UINT>(value));                                                   \
    }
#define VX_SCRIPTED_TEXT(name)                                                                               \
    STDMETHODIMP Get##name(BSTR* value) override                                                             \
    {                                                                                                        \
        return GetText(#name, value);                                                                        \
    }                                                                                                        \
    STDMETHODIMP Set##name(BSTR value) override                                                              \
    {                                                                                                        \
        return SetText(#name, value);                                                                        \
    }
    VX_SCRIPTED_NUMBER(Role, UINT)
    VX_SCRIPTED_NUMBER(UnicastPort, UINT)
    VX_SCRIPTED_TEXT(MulticastAddress)
    VX_SCRIPTED_NUMBER(MulticastPort, UINT)
    VX_SCRIPTED_TEXT(DeviceId)
    VX_SCRIPTED_TEXT(ParamSource)
    VX_SCRIPTED_NUMBER(ParamChannel, UINT)
    VX_SCRIPTED_NUMBER(BufferCount, UINT)
    VX_SCRIPTED_NUMBER(DefaultBufferSize, UINT)
    VX_SCRIPTED_NUMBER(DropThreshold, UINT)
    VX_SCRIPTED_NUMBER(Width, INT)
    VX_SCRIPTED_NUMBER(Height, INT)
    VX_SCRIPTED_NUMBER(ParameterArray, UINT)
    VX_SCRIPTED_NUMBER(OutputPixelType, UINT)
    VX_SCRIPTED_NUMBER(KernelSize, INT)
    VX_SCRIPTED_NUMBER(ZoomValue, INT)
#undef VX_SCRIPTED_NUMBER
#undef VX_SCRIPTED_TEXT
    STDMETHODIMP GetDiagnosticsEnabled(BOOL* enabled) override;
    STDMETHODIMP SetDiagnosticsEnabled(BOOL enabled) override;
    STDMETHODIMP Disconnect() override
    {
        return Note("Disconnect");
    }
    STDMETHODIMP Connect() override
    {
        return Note("Connect");
    }
    STDMETHODIMP GetSourceCount(UINT* count) override;
    STDMETHODIMP GetSourceName(UINT index, BSTR* name) override;
    STDMETHODIMP IsParameterArrayAvailable(BOOL* available) override;
    STDMETHODIMP GetParameterCount(UINT* count) override;
    STDMETHODIMP GetParameterName(UINT index, BSTR* name) override;
    STDMETHODIMP GetParameterCategory(BSTR name, BSTR* category) override;
    STDMETHODIMP GetParameterValue(BSTR name, BSTR* value) override;
    STDMETHODIMP SetParameterValue(BSTR name, BSTR value, BSTR* error) override;
    STDMETHODIMP GetParameterType(BSTR name, BSTR* type) override;
    STDMETHODIMP GetParameterAccess(BSTR name, BOOL* available, BOOL* readable, BOOL* writable) override;
    STDMETHODIMP ExecuteCommand(BSTR name, BSTR* error) override;
    STDMETHODIMP GetEnumEntryCount(BSTR name, UINT* count) override;
    STDMETHODIMP GetEnumEntryName(BSTR name, UINT index, BSTR* entry) override;
    STDMETHODIMP GetParameterVisibility(BSTR name, UINT* visibility) override;
    STDMETHODIMP GetOutputSize(UINT* widthPx, UINT* heightPx) override;
    STDMETHODIMP SetOutputSize(INT widthPx, INT heightPx) override;
    STDMETHODIMP SaveDefault() override
    {
        return Note("SaveDefault");
    }
    STDMETHODIMP ClearDefault() override
    {
        return Note("ClearDefault");
    }
    STDMETHODIMP GetDefaultSummary(BSTR* summary) override
    {
        return GetText("DefaultSummary", summary);
    }

private:
    HRESULT Note(const std::string& call);
    HRESULT GetNumber(const std::string& name, UINT* value);
    HRESULT SetNumber(const std::string& name, UINT value);
    HRESULT GetText(const std::string& name, BSTR* value);
    HRESULT SetText(const std::string& name, BSTR value);
    HRESULT OnFeature(const std::string& call, BSTR name,
                      const std::function<HRESULT(SourceFeature&)>& action);
    [[nodiscard]] std::size_t Selected()
    {
        return numbers["ParameterArray"];
    }

    std::recursive_mutex m_mutex; // everything above while a page is active
    std::vector<std::string> m_calls;
};
