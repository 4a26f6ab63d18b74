#include "system/RoadTest.h"

#include "VxDSSource/pages/ResourceIds.h"

#include "support/screen/PropertyFrame.h"

#include <gmock/gmock.h>

namespace {

using testing::UnorderedElementsAre;
using Tab = PropertyFrame::Tab;

/// The source settings page on a machine with several networks, as run-in-networks has made them.
class PropertyPagesNetworksTest : public RoadTest {};

TEST_F(PropertyPagesNetworksTest, ListsCamerasOfEveryNetworkButThoseInAWrongSubnet)
{
    const auto filter = m_module.CreateFilter();
    const auto control = ControlOf(filter);
    PropertyFrame frame([this, &filter](HANDLE stop) { return ShowPages(m_module, filter, stop); });
    HWND const page = frame.GoTo(Tab::Parameters);
    HWND const list = ::GetDlgItem(page, IDC_DEVICE);

    EXPECT_THAT(EntriesOf(list), UnorderedElementsAre(L"SimulatedCamera [02-00-00-00-00-01]",
                                                      L"SimulatedCamera [02-00-00-00-00-03]"));

    const auto entries = EntriesOf(list);
    const auto chosen = std::ranges::find(entries, L"SimulatedCamera [02-00-00-00-00-01]");
    ASSERT_NE(chosen, entries.end());
    ChooseEntry(list, static_cast<int>(chosen - entries.begin()));
    EXPECT_EQ(frame.Apply(page), S_OK);
    ::SendMessageW(list, CB_SHOWDROPDOWN, TRUE, 0);
    frame.Save(frame.Window(), "frame-parameters-networks");
    ::SendMessageW(list, CB_SHOWDROPDOWN, FALSE, 0);

    BOOL isConnected = FALSE;
    EXPECT_EQ(control->SetParameterArray(1), S_OK);
    EXPECT_EQ(control->IsParameterArrayAvailable(&isConnected), S_OK);
    EXPECT_TRUE(isConnected) << "the camera's own features are there";
}

} // namespace
