#include "system/RegistrySnapshot.h"
#include "system/Regsvr32.h"

#include "VxDSSource/filter/Identifiers.h"

#include "support/directshow/ComApartment.h"
#include "support/registry/PrivateUserRegistry.h"
#include "vxgrab/DeviceList.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using testing::IsEmpty;
using testing::SizeIs;

/// Registers and unregisters as a user does. Works on the registry of the Wine prefix in which it runs, so it
/// has one of its own (run-in-own-prefix).
class RegistrationTest : public testing::Test {
protected:
    void SetUp() override
    {
        // What a test that was broken off may have left.
        std::ignore = Regsvr32({L"/u"});
        std::ignore = ::RegDeleteTreeW(HKEY_CURRENT_USER, PrivateUserRegistry::kPlaces);
        ASSERT_THAT(OurDevices(), IsEmpty());
    }
    void TearDown() override { std::ignore = Regsvr32({L"/u"}); }

    static std::vector<vxgrab::CaptureDevice> OurDevices()
    {
        auto devices = vxgrab::ListCaptureDevices();
        EXPECT_TRUE(devices) << devices.Result().GetDescription().GetAscii();
        std::vector<vxgrab::CaptureDevice> ours;
        for (auto& device : *devices) {
            if (device.isOurs)
                ours.push_back(device);
        }
        return ours;
    }

private:
    ComApartment m_apartment;
};

TEST_F(RegistrationTest, ListsTheFilterOnceUnderItsNameAndBindsIt)
{
    ASSERT_EQ(Regsvr32({}), 0u);

    const auto devices = OurDevices();
    ASSERT_THAT(devices, SizeIs(1));
    EXPECT_EQ(devices[0].friendlyName, "Vexa DirectShow Source");
    const auto filter = vxgrab::CreateFilter(devices[0]);
    ASSERT_TRUE(filter) << filter.Result().GetDescription().GetAscii();
    CLSID classId{};
    EXPECT_HRESULT_SUCCEEDED((*filter)->GetClassID(&classId));
    EXPECT_TRUE(::IsEqualGUID(classId, CLSID_VxDSSource));
}

TEST_F(RegistrationTest, RegisteringTwiceListsTheFilterOnce)
{
    ASSERT_EQ(Regsvr32({}), 0u);
    ASSERT_EQ(Regsvr32({}), 0u);

    EXPECT_THAT(OurDevices(), SizeIs(1));
}

TEST_F(RegistrationTest, UnregisteringLeavesTheRegistryAsItWas)
{
    // Once before, so that what the system itself writes at the first use is in both pictures.
    ASSERT_EQ(Regsvr32({}), 0u);
    ASSERT_EQ(Regsvr32({L"/u"}), 0u);
    const RegistrySnapshot before = RegistrySnapshot::Take();
    ASSERT_GT(before.Size(), 1000u) << "the registry cannot be read";

    ASSERT_EQ(Regsvr32({}), 0u);
    EXPECT_THAT(OurDevices(), SizeIs(1));
    const RegistrySnapshot registered = RegistrySnapshot::Take();
    EXPECT_FALSE(registered.Beyond(before).empty()) << "registering writes nothing";
    ASSERT_EQ(Regsvr32({L"/u"}), 0u);

    const RegistrySnapshot after = RegistrySnapshot::Take();
    EXPECT_THAT(after.Beyond(before), IsEmpty()) << "left behind";
    EXPECT_THAT(before.Beyond(after), IsEmpty()) << "taken away, but not ours";
    EXPECT_THAT(OurDevices(), IsEmpty());
}

TEST_F(RegistrationTest, NothingOfOursIsInAFreshRegistry)
{
    const auto isOurs = [](const std::wstring& entry) {
        return entry.find(L"939C9A55-207C-4024-8B29-38D22449994D") != std::wstring::npos ||
               entry.find(L"Vexa DirectShow Source") != std::wstring::npos ||
               entry.find(L"VxDSSource") != std::wstring::npos;
    };
    ASSERT_EQ(Regsvr32({}), 0u);
    const auto registered = RegistrySnapshot::Take().Beyond(RegistrySnapshot());
    EXPECT_TRUE(std::any_of(registered.begin(), registered.end(), isOurs))
        << "this test looks for the wrong names";
    ASSERT_EQ(Regsvr32({L"/u"}), 0u);

    const auto unregistered = RegistrySnapshot::Take().Beyond(RegistrySnapshot());
    EXPECT_EQ(std::find_if(unregistered.begin(), unregistered.end(), isOurs), unregistered.end());
}

} // namespace
