#include "support/graph/ModuleUnderTest.h"

#include "VxDSSource/filter/Identifiers.h"

#include <gtest/gtest.h>

using vxgrab::ComPtr;

std::wstring EnvironmentText(const wchar_t* name)
{
    const DWORD capacity = ::GetEnvironmentVariableW(name, nullptr, 0);
    if (capacity == 0)
        return {};
    std::wstring text(capacity, L'\0');
    text.resize(::GetEnvironmentVariableW(name, text.data(), capacity));
    return text;
}

std::filesystem::path WindowsPath(std::wstring text)
{
    // A build on another system writes paths from the root, which Wine shows as drive Z.
    if (!text.empty() && text.front() == L'/')
        text.insert(0, L"Z:");
    return std::filesystem::path(std::move(text)).make_preferred();
}

std::filesystem::path ModuleUnderTest::File()
{
    return WindowsPath(EnvironmentText(L"VX_MODULE"));
}

ModuleUnderTest::ModuleUnderTest()
{
    auto module = vxgrab::LoadedModule::Load(File());
    EXPECT_TRUE(module) << module.Result().GetDescription().GetAscii()
                        << " (the variable VX_MODULE names the file)";
    if (module)
        m_module = std::move(*module);
}

ModuleUnderTest::~ModuleUnderTest()
{
    EXPECT_TRUE(IsUnused()) << "objects of the module are left";
}

ComPtr<IBaseFilter> ModuleUnderTest::CreateFilter() const
{
    auto filter = m_module.CreateFilter(CLSID_VxDSSource);
    EXPECT_TRUE(filter) << filter.Result().GetDescription().GetAscii();
    return filter ? *filter : ComPtr<IBaseFilter>();
}

ComPtr<IVxDSSource> ControlOf(const ComPtr<IBaseFilter>& filter)
{
    ComPtr<IVxDSSource> control;
    EXPECT_HRESULT_SUCCEEDED(filter.Query(IID_IVxDSSource, control));
    return control;
}
