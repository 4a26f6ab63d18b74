#include "conformance/ConformanceModule.h"

#include <unknwn.h>

#include <gtest/gtest.h>

namespace {

template <typename Function>
Function Find(HMODULE module, const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

} // namespace

ConformanceModule::ConformanceModule(const std::wstring& dll)
    : m_module(::LoadLibraryW(FullPath(dll).c_str()))
{
    EXPECT_NE(m_module, nullptr) << "cannot be loaded, system error " << ::GetLastError();
}

ConformanceModule::~ConformanceModule()
{
    if (m_module != nullptr)
        ::FreeLibrary(m_module);
}

std::wstring ConformanceModule::FullPath(const std::wstring& dll)
{
    WCHAR program[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::wstring path(program);
    const std::wstring joined = path.substr(0, path.find_last_of(L'\\') + 1) + dll;
    WCHAR full[MAX_PATH] = {};
    ::GetFullPathNameW(joined.c_str(), MAX_PATH, full, nullptr);
    return full;
}

HRESULT ConformanceModule::Create(REFCLSID clsid, IUnknown* outer, REFIID riid, void** object) const
{
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    *object = nullptr;
    const auto getClassObject = Find<GetClassObject>(m_module, "DllGetClassObject");
    if (getClassObject == nullptr)
        return E_NOTIMPL;

    VxComPtr<IClassFactory> factory;
    const HRESULT hr = getClassObject(clsid, IID_IClassFactory, factory.PutVoid());
    return FAILED(hr) ? hr : factory->CreateInstance(outer, riid, object);
}

HRESULT ConformanceModule::CanUnload() const
{
    return Call("DllCanUnloadNow");
}

HRESULT ConformanceModule::Call(const char* function) const
{
    using NoArguments = HRESULT(STDAPICALLTYPE*)();
    const auto found = Find<NoArguments>(m_module, function);
    return found != nullptr ? found() : E_NOTIMPL;
}
