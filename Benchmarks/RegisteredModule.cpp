#include "RegisteredModule.h"

#include "VxDSSource/filter/Identifiers.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace {

HRESULT Call(HMODULE module, const char* function)
{
    using NoArguments = HRESULT(STDAPICALLTYPE*)();
    const auto found =
        reinterpret_cast<NoArguments>(reinterpret_cast<void*>(::GetProcAddress(module, function)));
    return found != nullptr ? found() : E_NOTIMPL;
}

} // namespace

RegisteredModule::RegisteredModule(const char* program)
{
    const auto file =
        std::filesystem::absolute(program).parent_path().parent_path() / "bin" / "VxDSSource.dll";
    file.wstring().copy(m_file, MAX_PATH - 1);
    m_module = ::LoadLibraryW(m_file);
    if (m_module == nullptr || FAILED(Call(m_module, "DllRegisterServer"))) {
        std::fprintf(stderr, "error: %s cannot be registered: build the target VxDSSource\n",
                     file.string().c_str());
        std::exit(EXIT_FAILURE);
    }
}

RegisteredModule::~RegisteredModule()
{
    if (m_module == nullptr)
        m_module = ::LoadLibraryW(m_file);
    if (m_module != nullptr && SUCCEEDED(Call(m_module, "DllUnregisterServer")))
        ::FreeLibrary(m_module);
}

vxgrab::ComPtr<IBaseFilter> RegisteredModule::CreateFilter()
{
    vxgrab::ComPtr<IBaseFilter> filter;
    if (FAILED(::CoCreateInstance(CLSID_VxDSSource, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                  filter.PutVoid())))
        return {};
    return filter;
}

void RegisteredModule::Unload()
{
    if (m_module != nullptr)
        ::FreeLibrary(m_module);
    m_module = nullptr;
    ::CoFreeUnusedLibrariesEx(0, 0); // at once
}
