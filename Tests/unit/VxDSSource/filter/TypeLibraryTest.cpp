#include "BaseClasses/VxComPtr.h"
#include "VxDSSource/filter/IVxDSSource.h"
#include "VxDSSource/filter/Identifiers.h"
#include "support/directshow/ComApartment.h"

#include <windows.h>

#include <oleauto.h>

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

struct Method {
    const wchar_t* name;
    int arguments;
};

// The interface as it is promised, in its order.
constexpr std::array kMethods{Method{L"GetRole", 1},
                              Method{L"SetRole", 1},
                              Method{L"GetUnicastPort", 1},
                              Method{L"SetUnicastPort", 1},
                              Method{L"GetMulticastAddress", 1},
                              Method{L"SetMulticastAddress", 1},
                              Method{L"GetMulticastPort", 1},
                              Method{L"SetMulticastPort", 1},
                              Method{L"GetDiagnosticsEnabled", 1},
                              Method{L"SetDiagnosticsEnabled", 1},
                              Method{L"GetDeviceId", 1},
                              Method{L"SetDeviceId", 1},
                              Method{L"Disconnect", 0},
                              Method{L"Connect", 0},
                              Method{L"GetSourceCount", 1},
                              Method{L"GetSourceName", 2},
                              Method{L"GetParamSource", 1},
                              Method{L"SetParamSource", 1},
                              Method{L"GetParamChannel", 1},
                              Method{L"SetParamChannel", 1},
                              Method{L"GetBufferCount", 1},
                              Method{L"SetBufferCount", 1},
                              Method{L"GetDefaultBufferSize", 1},
                              Method{L"SetDefaultBufferSize", 1},
                              Method{L"GetDropThreshold", 1},
                              Method{L"SetDropThreshold", 1},
                              Method{L"GetWidth", 1},
                              Method{L"SetWidth", 1},
                              Method{L"GetHeight", 1},
                              Method{L"SetHeight", 1},
                              Method{L"GetParameterArray", 1},
                              Method{L"SetParameterArray", 1},
                              Method{L"IsParameterArrayAvailable", 1},
                              Method{L"GetParameterCount", 1},
                              Method{L"GetParameterName", 2},
                              Method{L"GetParameterCategory", 2},
                              Method{L"GetParameterValue", 2},
                              Method{L"SetParameterValue", 3},
                              Method{L"GetParameterType", 2},
                              Method{L"GetParameterAccess", 4},
                              Method{L"ExecuteCommand", 2},
                              Method{L"GetEnumEntryCount", 2},
                              Method{L"GetEnumEntryName", 3},
                              Method{L"GetParameterVisibility", 2},
                              Method{L"GetOutputPixelType", 1},
                              Method{L"SetOutputPixelType", 1},
                              Method{L"GetKernelSize", 1},
                              Method{L"SetKernelSize", 1},
                              Method{L"GetZoomValue", 1},
                              Method{L"SetZoomValue", 1},
                              Method{L"GetOutputSize", 2},
                              Method{L"SetOutputSize", 2},
                              Method{L"SaveDefault", 0},
                              Method{L"ClearDefault", 0},
                              Method{L"GetDefaultSummary", 1}};

/// The type library inside the module as it was built.
class TypeLibraryTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::wstring path(MAX_PATH, L'\0');
        path.resize(::GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
        path.resize(path.find_last_of(L'\\')); // the tests' folder
        path += L"\\..\\bin\\VxDSSource.dll";
        ASSERT_EQ(::LoadTypeLibEx(path.c_str(), REGKIND_NONE, m_library.Put()), S_OK);
        ASSERT_EQ(m_library->GetTypeInfoOfGuid(IID_IVxDSSource, m_interface.Put()), S_OK);
    }

    std::wstring NameOf(MEMBERID member) const
    {
        BSTR text = nullptr;
        EXPECT_EQ(m_interface->GetDocumentation(member, &text, nullptr, nullptr, nullptr), S_OK);
        std::wstring name(text, ::SysStringLen(text));
        ::SysFreeString(text);
        return name;
    }

    const ComApartment m_com;
    VxComPtr<ITypeLib> m_library;
    VxComPtr<ITypeInfo> m_interface;
};

TEST_F(TypeLibraryTest, HasItsOwnIdentifierAndVersion)
{
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(m_library->GetLibAttr(&attributes), S_OK);

    EXPECT_EQ(attributes->guid, LIBID_VxDSSource);
    EXPECT_EQ(attributes->wMajorVerNum, 1);
    EXPECT_EQ(attributes->wMinorVerNum, 0);
    EXPECT_EQ(attributes->syskind, SYS_WIN64);
    m_library->ReleaseTLibAttr(attributes);
}

TEST_F(TypeLibraryTest, DescribesEveryMethodAtItsPlaceInTheTable)
{
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(m_interface->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->typekind, TKIND_INTERFACE);
    ASSERT_EQ(attributes->cFuncs, kMethods.size());
    m_interface->ReleaseTypeAttr(attributes);

    constexpr std::size_t kUnknownMethods = 3;
    for (std::size_t i = 0; i < kMethods.size(); ++i) {
        FUNCDESC* function = nullptr;
        ASSERT_EQ(m_interface->GetFuncDesc(static_cast<UINT>(i), &function), S_OK);
        EXPECT_EQ(NameOf(function->memid), kMethods[i].name);
        EXPECT_EQ(static_cast<std::size_t>(function->oVft), (kUnknownMethods + i) * sizeof(void*)) << i;
        EXPECT_EQ(function->cParams, kMethods[i].arguments) << i;
        EXPECT_EQ(function->elemdescFunc.tdesc.vt, VT_HRESULT) << i;
        m_interface->ReleaseFuncDesc(function);
    }
}

TEST_F(TypeLibraryTest, DerivesFromTheSystemsIUnknown)
{
    HREFTYPE reference = 0;
    VxComPtr<ITypeInfo> base;
    ASSERT_EQ(m_interface->GetRefTypeOfImplType(0, &reference), S_OK);
    ASSERT_EQ(m_interface->GetRefTypeInfo(reference, base.Put()), S_OK);

    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(base->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, IID_IUnknown);
    base->ReleaseTypeAttr(attributes);
}

TEST_F(TypeLibraryTest, NamesTheFiltersClass)
{
    VxComPtr<ITypeInfo> filter;
    ASSERT_EQ(m_library->GetTypeInfoOfGuid(CLSID_VxDSSource, filter.Put()), S_OK);

    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(filter->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->typekind, TKIND_COCLASS);
    filter->ReleaseTypeAttr(attributes);
}

} // namespace
