#include "VxDSSource/pages/AboutPage.h"

#include "support/screen/DialogLayout.h"
#include "unit/VxDSSource/pages/PageFixture.h"
#include "unit/VxDSSource/pages/ScriptedSource.h"

#include <gmock/gmock.h>

namespace {

using testing::IsEmpty;
using testing::MatchesRegex;

class AboutPageTest : public PageFixture {};

std::string Narrow(const std::wstring& text)
{
    return {text.begin(), text.end()}; // what is tested is ASCII
}

TEST_F(AboutPageTest, ShowsTheVersionInFourPartsAndTheLegalNotice)
{
    OpenPage page(NewPage<AboutPage>());
    ASSERT_EQ(page.Connect(Control()), S_OK);

    page.Show();

    EXPECT_THAT(Narrow(page.Text(IDC_VERSION)), MatchesRegex("Vexa SDK Version \\d+\\.\\d+\\.\\d+\\.\\d+"));
    EXPECT_THAT(Narrow(page.Text(IDC_LEGAL_NOTICE)), testing::HasSubstr("Vantrel Technologies Inc"));
}

TEST_F(AboutPageTest, ShowsTheSameTextsWhenItIsActivatedTwice)
{
    OpenPage page(NewPage<AboutPage>());
    ASSERT_EQ(page.Connect(Control()), S_OK);
    page.Show();
    const std::wstring version = page.Text(IDC_VERSION);
    const std::wstring notice = page.Text(IDC_LEGAL_NOTICE);
    page.Leave();

    page.Show();

    EXPECT_EQ(page.Text(IDC_VERSION), version);
    EXPECT_EQ(page.Text(IDC_LEGAL_NOTICE), notice);
}

TEST_F(AboutPageTest, ReadsNothingOfTheFilter)
{
    ScriptedSource source;
    {
        OpenPage page(NewPage<AboutPage>());
        ASSERT_EQ(page.Connect(source), S_OK);
        EXPECT_EQ(source.References(), 1) << "held while it is connected";
        page.Show();
        page.Leave();
    }
    EXPECT_EQ(source.References(), 0);
    EXPECT_THAT(source.TakeCalls(), IsEmpty());
}

TEST_F(AboutPageTest, NeverBecomesDirty)
{
    OpenPage page(NewPage<AboutPage>());
    ASSERT_EQ(page.Connect(Control()), S_OK);
    page.Show();

    ::SendMessageW(page.Window(), WM_COMMAND, MAKEWPARAM(IDC_VERSION, STN_CLICKED),
                   reinterpret_cast<LPARAM>(page.Item(IDC_VERSION)));

    EXPECT_FALSE(page.IsDirty());
    EXPECT_EQ(page.site.dirtyCount, 0);
    EXPECT_EQ(page.Apply(), S_OK);
}

TEST_F(AboutPageTest, RefusesWhatIsNotOurFilter)
{
    TestObject<IUnknown> other;
    OpenPage page(NewPage<AboutPage>());

    EXPECT_EQ(page.Connect(other), E_NOINTERFACE);
    EXPECT_EQ(static_cast<CBasePropertyPage&>(page.Page()).OnConnect(nullptr), E_POINTER);
    EXPECT_EQ(page.Page().SetObjects(0, nullptr), S_OK);
    EXPECT_EQ(page.Page().SetObjects(0, nullptr), S_OK) << "letting go twice does no harm";
}

TEST_F(AboutPageTest, LogoIsAbout96KilobytesAndFillsItsFrame)
{
    const HRSRC resource = ::FindResourceW(nullptr, MAKEINTRESOURCEW(IDB_LOGO), RT_BITMAP);
    ASSERT_NE(resource, nullptr);
    constexpr double kKilobyte = 1024;
    EXPECT_NEAR(::SizeofResource(nullptr, resource) / kKilobyte, 96, 1);
    OpenPage page(NewPage<AboutPage>());
    ASSERT_EQ(page.Connect(Control()), S_OK);
    page.Show();

    const HWND logo = ::GetWindow(page.Window(), GW_CHILD);
    RECT place{};
    ::GetWindowRect(logo, &place);
    RECT units = {0, 0, 326, 121};
    ::MapDialogRect(page.Window(), &units);

    EXPECT_EQ(place.right - place.left, units.right);
    EXPECT_EQ(place.bottom - place.top, units.bottom);
    EXPECT_NE(::SendMessageW(logo, STM_GETIMAGE, IMAGE_BITMAP, 0), 0);
    const bool hasLine = (::GetWindowLongPtrW(logo, GWL_STYLE) & WS_BORDER) != 0;
    const bool hasEdge = (::GetWindowLongPtrW(logo, GWL_EXSTYLE) & WS_EX_CLIENTEDGE) != 0;
    EXPECT_TRUE(hasLine || hasEdge) << "dialogs draw a border of the template as an edge";
}

TEST_F(AboutPageTest, LogoIsScaledToItsFrameAndGivenBackWhenThePageIsLeft)
{
    OpenPage page(NewPage<AboutPage>());
    ASSERT_EQ(page.Connect(Control()), S_OK);
    page.Show();
    const auto logo = reinterpret_cast<HBITMAP>(
        ::SendMessageW(::GetWindow(page.Window(), GW_CHILD), STM_GETIMAGE, IMAGE_BITMAP, 0));
    BITMAP facts{};
    ASSERT_NE(::GetObjectW(logo, sizeof(facts), &facts), 0);
    RECT place{};
    ::GetClientRect(::GetWindow(page.Window(), GW_CHILD), &place);
    EXPECT_EQ(facts.bmWidth, place.right) << "scaled to its frame";
    EXPECT_EQ(facts.bmHeight, place.bottom);

    page.Leave();

    EXPECT_EQ(::GetObjectW(logo, sizeof(facts), &facts), 0) << "the bitmap is given back to the system";
}

TEST_F(AboutPageTest, NothingIsCutOffAndNothingOverlaps)
{
    OpenPage page(NewPage<AboutPage>());
    ASSERT_EQ(page.Connect(Control()), S_OK);
    page.Show();

    EXPECT_THAT(LayoutDefects(page.Window()), IsEmpty());
}

} // namespace
