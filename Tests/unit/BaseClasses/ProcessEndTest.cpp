#include "BaseClasses/CFactoryTemplate.h"
#include "BaseClasses/CUnknown.h"
#include "BaseClasses/ModuleEntryPoints.h"
#include "VxBase/VxProcessEnd.h"

#include <gtest/gtest.h>
#include <windows.h>

// One test: nothing takes the beginning of the process's end back.

CFactoryTemplate g_Templates[] = {{L"None", &CLSID_NULL, nullptr, nullptr, nullptr}};
int g_cTemplates = ARRAYSIZE(g_Templates);

namespace {

class Thing final : public CUnknown {
public:
    DECLARE_IUNKNOWN

    explicit Thing(int& ends) : CUnknown("thing", nullptr), m_ends(ends) {}
    ~Thing() override { ++m_ends; }

private:
    int& m_ends; // borrowed from the test
};

ULONG MakeAndRelease(int& ends)
{
    auto* const thing = new Thing(ends);
    thing->AddRef();
    return thing->Release();
}

TEST(ProcessEndTest, IsToldFromUnloadingAndLeavesObjectsToTheSystem)
{
    const HINSTANCE module = ::GetModuleHandleW(nullptr);
    int anything = 0; // what the system hands over when the process ends is not null
    int ends = 0;

    EXPECT_TRUE(DllEntryPoint(module, DLL_PROCESS_DETACH, nullptr));
    EXPECT_FALSE(VxProcessEnd::HasBegun());
    EXPECT_EQ(MakeAndRelease(ends), 0u);
    EXPECT_EQ(ends, 1);

    EXPECT_TRUE(DllEntryPoint(module, DLL_PROCESS_DETACH, &anything));
    EXPECT_TRUE(VxProcessEnd::HasBegun());
    EXPECT_EQ(MakeAndRelease(ends), 0u);
    EXPECT_EQ(ends, 1) << "an object was taken apart that ended threads may have shared";
}

} // namespace
