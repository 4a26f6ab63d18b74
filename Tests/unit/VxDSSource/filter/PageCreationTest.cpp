// The pages as the class table makes them.

#include "BaseClasses/CFactoryTemplate.h"
#include "support/camera/CameraDouble.h"
#include "unit/VxDSSource/filter/FailingMemory.h"

#include <gtest/gtest.h>

namespace {

constexpr int kFirstPage = 1; // after the filter
constexpr int kMany = 1000;   // more than a page allocates

class PageCreationTest : public testing::TestWithParam<int> {
protected:
    PageCreationTest() { TheCamera().Reset(); }

    static CUnknown* Create(HRESULT& result)
    {
        return g_Templates[GetParam()].CreateInstance(nullptr, &result);
    }
    static void Destroy(CUnknown* page)
    {
        page->NonDelegatingAddRef();
        EXPECT_EQ(page->NonDelegatingRelease(), 0u);
    }
};

TEST_P(PageCreationTest, WithoutMemoryThereIsNoPageAndNothingIsLeft)
{
    HRESULT result = S_OK;
    Destroy(Create(result)); // what is made once for the process
    const long before = failing_memory::LiveAllocations();
    for (int succeeding = 0; succeeding < kMany; ++succeeding) {
        result = S_OK;
        CUnknown* page = nullptr;
        bool hasFailed = false;
        {
            const failing_memory::FailOnce failing(succeeding);
            page = Create(result);
            hasFailed = failing.HasFailed();
        }
        if (!hasFailed) {
            ASSERT_GT(succeeding, 0) << "a page takes memory";
            ASSERT_NE(page, nullptr);
            Destroy(page);
            return;
        }
        EXPECT_EQ(page, nullptr);
        EXPECT_EQ(result, E_OUTOFMEMORY) << "after " << succeeding << " allocations";
        EXPECT_EQ(failing_memory::LiveAllocations(), before);
    }
    FAIL() << "no creation succeeded";
}

INSTANTIATE_TEST_SUITE_P(Pages, PageCreationTest, testing::Range(kFirstPage, kFirstPage + 3));

} // namespace
