#include "FilterFixture.h"

extern "C" HRESULT ReadZoomInC(IVxDSSource* control, UINT* zoom);

namespace {

class ControlInterfaceInCTest : public FilterFixture {};

TEST_F(ControlInterfaceInCTest, CanBeUsedFromPlainC)
{
    ASSERT_EQ(Control().SetZoomValue(4), S_OK);
    UINT zoom = 0;

    EXPECT_EQ(ReadZoomInC(&Control(), &zoom), S_OK);
    EXPECT_EQ(zoom, 4u);
}

} // namespace
