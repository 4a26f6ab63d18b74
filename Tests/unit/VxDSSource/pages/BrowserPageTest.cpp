#include "VxDSSource/pages/BrowserPage.h"

#include "unit/VxDSSource/pages/BrowserPageFixture.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Clock = std::chrono::steady_clock;

class BrowserPageTest : public BrowserPageFixture {};

TEST_F(BrowserPageTest, BeginsWithTheCommunicationSet)
{
    source.numbers["ParameterArray"] = 2;

    Show();

    EXPECT_THAT(Page().Entries(IDC_FEATURE_SET),
                ElementsAre(L"Communication Parameters", L"Device Parameters", L"Stream Parameters"));
    EXPECT_EQ(Page().Selection(IDC_FEATURE_SET), 0);
    EXPECT_EQ(source.numbers["ParameterArray"], 0u);
    EXPECT_THAT(Lines(), ElementsAre(L"Camera", L" MACAddress"));
}

TEST_F(BrowserPageTest, AsksTheFilterInOrder)
{
    Show();
    Page().Leave();
    source.ForgetCalls();

    Page().Show();

    auto calls = source.TakeCalls();
    calls.resize(8); // then the refresh thread
    EXPECT_THAT(calls,
                ElementsAre("GetParameterArray", "SetParameterArray(0)", "IsParameterArrayAvailable",
                            "GetParameterCount", "GetParameterName(0)", "GetParameterCategory(MACAddress)",
                            "GetParameterType(MACAddress)", "GetParameterVisibility(MACAddress)"));
}

TEST_F(BrowserPageTest, PutsFeaturesUnderTheirCategoriesWithoutTheRoot)
{
    source.features[0] = {{L"Top", L"root"},
                          {L"InCategory", L"root\\Category"},
                          {L"Deep", L"root\\Category\\Inner"},
                          {L"OtherRoot", L"Root\\Category"},
                          {L"NoPath", L""}};

    Show();

    EXPECT_THAT(Lines(), ElementsAre(L"Top", L"Category", L" InCategory", L" Inner", L"  Deep", L"Root",
                                     L" Category", L"  OtherRoot", L"NoPath"));
}

TEST_F(BrowserPageTest, FeaturesOfOneCategoryShareItsNode)
{
    source.features[0] = {{L"A", L"root\\Category"}, {L"B", L"root\\Other"}, {L"C", L"root\\Category"}};

    Show();

    EXPECT_THAT(Lines(), ElementsAre(L"Category", L" A", L" C", L"Other", L" B"));
}

TEST_F(BrowserPageTest, HidesInvisibleFeaturesOnly)
{
    source.features[0] = {{L"Beginner"}, {L"Expert"}, {L"Guru"}, {L"Invisible"}, {L"Beyond"}, {L"Negative"}};
    for (UINT level = 0; level < 5; ++level)
        source.features[0][level].visibility = level;
    source.features[0][5].visibility = 0xFFFFFFFF; // counts as -1

    Show();

    EXPECT_THAT(Lines(), ElementsAre(L"Beginner", L"Expert", L"Guru", L"Negative"));
}

TEST_F(BrowserPageTest, OpensEveryCategoryAndShowsTheFirst)
{
    source.features[0].clear();
    for (int i = 0; i < 60; ++i)
        source.features[0].push_back({L"F" + std::to_wstring(i), L"root\\C" + std::to_wstring(i % 20)});

    Show();

    HTREEITEM const first = TreeView_GetRoot(Tree());
    for (HTREEITEM item = first; item != nullptr; item = TreeView_GetNextSibling(Tree(), item))
        EXPECT_NE(TreeView_GetItemState(Tree(), item, TVIS_EXPANDED) & TVIS_EXPANDED, 0u);
    EXPECT_EQ(TreeView_GetFirstVisible(Tree()), first);
}

TEST_F(BrowserPageTest, ShowsValuesAndPlaceholders)
{
    source.features[0] = {{L"Value", L"root", L"Integer", L"42"},
                          {L"Absent", L"root", L"Integer", L"1", FALSE, FALSE, FALSE},
                          {L"Secret", L"root", L"Integer", L"1", TRUE, FALSE, TRUE},
                          {L"Run", L"root", L"Command", L"", TRUE, FALSE, TRUE},
                          {L"Blocked", L"root", L"Command", L"", TRUE, FALSE, FALSE},
                          {L"Empty", L"root", L"String", L""}};

    Show();

    EXPECT_TRUE(WaitForText(L"Value: 42"));
    EXPECT_TRUE(WaitForText(L"Absent: {Not Available}"));
    EXPECT_TRUE(WaitForText(L"Secret: {Not Readable}"));
    EXPECT_TRUE(WaitForText(L"Run: {Command}"));
    EXPECT_TRUE(WaitForText(L"Blocked: {Not Readable}"));
    EXPECT_TRUE(WaitForText(L"Empty: "));
    EXPECT_FALSE(Page().IsDirty());
}

TEST_F(BrowserPageTest, FollowsValuesThatChange)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));

    source.Change([&] { source.features[0][0].value = L"changed"; });

    EXPECT_TRUE(WaitForText(L"MACAddress: changed"));
}

TEST_F(BrowserPageTest, ReadsEachFeatureOnceASecondAtMost)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));
    source.ForgetCalls();
    const auto start = Clock::now();
    int passes = 0;
    ASSERT_TRUE(WaitUntil([&] {
        passes += static_cast<int>(source.TakeCalls("GetParameterValue").size());
        return passes >= 2;
    }));

    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(900)) << "two passes are a second apart";
}

TEST_F(BrowserPageTest, TextIsSetOnlyWhenItChanged)
{
    Show();
    ASSERT_TRUE(WaitForText(L"MACAddress: 02-00-00-00-00-01"));
    ::ValidateRect(Tree(), nullptr);
    HTREEITEM const leaf = Find(L"MACAddress");

    ::SendMessageW(Page().Window(), WM_USER + 0x1000, 0, reinterpret_cast<LPARAM>(leaf));

    EXPECT_FALSE(::GetUpdateRect(Tree(), nullptr, FALSE)) << "an unchanged value is not drawn again";
}

TEST_F(BrowserPageTest, MessageForAnUnknownLeafDoesNothing)
{
    Show();
    ::SendMessageW(Page().Window(), WM_USER + 0x1000, 0, 12345);
    EXPECT_THAT(Lines(), ElementsAre(L"Camera", L" MACAddress"));
}

TEST_F(BrowserPageTest, SelectedCategoryDisablesEverything)
{
    Show();
    SelectItem(L"MACAddress");
    ASSERT_TRUE(Page().IsEnabled(IDC_SET));

    SelectItem(L"Camera");

    EXPECT_FALSE(Page().IsEnabled(IDC_SET));
    EXPECT_FALSE(Page().IsEnabled(IDC_EXECUTE));
    EXPECT_FALSE(Page().IsEnabled(IDC_VALUE));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"");
}

TEST_F(BrowserPageTest, NothingIsEnabledBeforeAnythingIsSelected)
{
    Show();

    EXPECT_FALSE(Page().IsEnabled(IDC_SET) || Page().IsEnabled(IDC_EXECUTE) || Page().IsEnabled(IDC_VALUE));
}

TEST_F(BrowserPageTest, SelectedCommandCanBeExecutedOnly)
{
    source.features[0] = {{L"Run", L"root", L"Command", L"x", TRUE, TRUE, TRUE}};
    Show();

    SelectItem(L"Run");

    EXPECT_TRUE(Page().IsEnabled(IDC_EXECUTE));
    EXPECT_FALSE(Page().IsEnabled(IDC_SET));
    EXPECT_FALSE(Page().IsEnabled(IDC_VALUE));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"");
}

TEST_F(BrowserPageTest, SelectedFeatureShowsItsValueAndIsSetWhereItIsWritable)
{
    source.features[0] = {{L"Writable", L"root", L"Integer", L"7"},
                          {L"ReadOnly", L"root", L"Integer", L"8", TRUE, TRUE, FALSE},
                          {L"WriteOnly", L"root", L"Integer", L"9", TRUE, FALSE, TRUE}};
    Show();

    SelectItem(L"Writable");
    EXPECT_TRUE(Page().IsEnabled(IDC_SET) && Page().IsEnabled(IDC_VALUE));
    EXPECT_FALSE(Page().IsEnabled(IDC_EXECUTE));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"7");

    SelectItem(L"ReadOnly");
    EXPECT_FALSE(Page().IsEnabled(IDC_SET) || Page().IsEnabled(IDC_VALUE));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"8");

    SelectItem(L"WriteOnly");
    EXPECT_TRUE(Page().IsEnabled(IDC_SET) && Page().IsEnabled(IDC_VALUE));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"");
}

TEST_F(BrowserPageTest, ValueBoxOffersTheEntriesSortedAndKeepsItsText)
{
    source.features[0] = {{L"Format", L"root", L"Enum", L"Mono8"}, {L"Plain", L"root", L"Integer", L"1"}};
    source.features[0][0].entries = {L"RGB8", L"BayerRG8", L"Mono8"};
    Show();
    SelectItem(L"Format");

    ::SendMessageW(Page().Item(IDC_VALUE), CB_SHOWDROPDOWN, TRUE, 0);
    HandleMessages();

    EXPECT_THAT(Page().Entries(IDC_VALUE), ElementsAre(L"BayerRG8", L"Mono8", L"RGB8"));
    EXPECT_EQ(Page().Text(IDC_VALUE), L"Mono8");
    ::SendMessageW(Page().Item(IDC_VALUE), CB_SHOWDROPDOWN, FALSE, 0);

    SelectItem(L"Plain");
    ::SendMessageW(Page().Item(IDC_VALUE), CB_SHOWDROPDOWN, TRUE, 0);
    EXPECT_THAT(Page().Entries(IDC_VALUE), IsEmpty());
    ::SendMessageW(Page().Item(IDC_VALUE), CB_SHOWDROPDOWN, FALSE, 0);
}

} // namespace
