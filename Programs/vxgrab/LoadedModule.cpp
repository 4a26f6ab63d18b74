#include "vxgrab/LoadedModule.h"

#include "VxBase/VxString.h"

#include "vxgrab/ComFailure.h"

#include <utility>

namespace vxgrab {
namespace {

template <typename Function>
Function FindExport(HMODULE module, const char* name)
{
    // The two steps tell the compiler that the cast between function types is meant.
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

} // namespace

LoadedModule::LoadedModule(LoadedModule&& other) noexcept
    : m_module(std::exchange(other.m_module, nullptr)),
      m_getClassObject(other.m_getClassObject),
      m_canUnloadNow(other.m_canUnloadNow)
{
}

LoadedModule& LoadedModule::operator=(LoadedModule&& other) noexcept
{
    std::swap(m_module, other.m_module);
    std::swap(m_getClassObject, other.m_getClassObject);
    std::swap(m_canUnloadNow, other.m_canUnloadNow);
    return *this;
}

LoadedModule::~LoadedModule()
{
    // A module that is still in use stays: its code may run.
    if (m_module != nullptr && IsUnused())
        ::FreeLibrary(m_module);
}

VxExpected<LoadedModule> LoadedModule::Load(const std::filesystem::path& file)
{
    const std::string attempt = "use '" + VxUtf8FromWide(file.wstring()) + "'";
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(file, error);
    if (error)
        return VxResult(VxError::NotFound, "cannot " + attempt + ": the path makes no sense");

    LoadedModule module;
    module.m_module = ::LoadLibraryExW(absolute.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (module.m_module == nullptr)
        return ComFailure(attempt, HRESULT_FROM_WIN32(::GetLastError()));
    module.m_getClassObject = FindExport<GetClassObject>(module.m_module, "DllGetClassObject");
    module.m_canUnloadNow = FindExport<CanUnloadNow>(module.m_module, "DllCanUnloadNow");
    if (module.m_getClassObject == nullptr || module.m_canUnloadNow == nullptr)
        return VxResult(VxError::InvalidParameter, "cannot " + attempt + ": it is no COM module");
    return module;
}

VxExpected<ComPtr<IClassFactory>> LoadedModule::FindClass(REFCLSID classId) const
{
    ComPtr<IClassFactory> factory;
    const HRESULT result = m_getClassObject(classId, IID_IClassFactory, factory.PutVoid());
    if (FAILED(result))
        return ComFailure("find the class in the module", result);
    return factory;
}

VxExpected<ComPtr<IBaseFilter>> LoadedModule::CreateFilter(REFCLSID classId) const
{
    const auto factory = FindClass(classId);
    if (!factory)
        return factory.Error();
    ComPtr<IBaseFilter> filter;
    const HRESULT result = (*factory)->CreateInstance(nullptr, IID_IBaseFilter, filter.PutVoid());
    if (FAILED(result))
        return ComFailure("create the filter", result);
    return filter;
}

bool LoadedModule::IsUnused() const
{
    return m_canUnloadNow == nullptr || m_canUnloadNow() == S_OK;
}

} // namespace vxgrab
