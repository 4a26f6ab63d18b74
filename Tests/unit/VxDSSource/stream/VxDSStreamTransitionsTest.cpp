#include "LinkModel.h"
#include "PinFixture.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using vxds::Setting;

/// Every change from one state of the settings to another: role, device id, channel, source, port, group.
class VxDSStreamTransitionsTest : public PinFixture {
protected:
    static std::vector<LinkSettings> States()
    {
        struct Group {
            const char* address;
            std::uint32_t port;
        };
        std::vector<LinkSettings> states;
        for (const char* const id : {"", "a", "b"}) {
            for (const std::uint32_t channel : {0u, 1u}) {
                for (const char* const source :
                     {"", "Right", "Middle"}) // the last one the camera does not have
                    states.push_back({0, id, channel, source, 0, "", 0});
                for (const std::uint32_t port : {0u, 5000u, 5001u})
                    states.push_back({1, id, channel, "", port, "", 0});
                for (const Group& group : {Group{"", 0}, Group{"", 1042}, Group{"239.192.1.1", 0},
                                           Group{"239.192.1.1", 1042}, Group{"239.192.1.2", 1042}})
                    states.push_back({2, id, channel, "", 0, group.address, group.port});
                states.push_back({5, id, channel, "", 0, "", 0}); // a role that there is not
            }
        }
        return states;
    }

    static std::string Name(const LinkSettings& settings)
    {
        return "role " + std::to_string(settings.role) + ", id \"" + settings.deviceId + "\", channel " +
               std::to_string(settings.channel) + ", source \"" + settings.source + "\", port " +
               std::to_string(settings.unicastPort) + ", group " + settings.multicastAddress + ":" +
               std::to_string(settings.multicastPort);
    }

    void Store(const LinkSettings& settings)
    {
        Settings().Store(Setting::Role, settings.role);
        Settings().Store(Setting::DeviceId, VxString(settings.deviceId).Wide());
        Settings().Store(Setting::ParamChannel, settings.channel);
        Settings().Store(Setting::ParamSource, VxString(settings.source).Wide());
        Settings().Store(Setting::UnicastPort, settings.unicastPort);
        Settings().Store(Setting::MulticastAddress, VxString(settings.multicastAddress).Wide());
        Settings().Store(Setting::MulticastPort, settings.multicastPort);
    }

    /// @return  whether the pin did what the model did
    bool AppliesLike(LinkModel& model, LinkSettings settings, const std::string& name)
    {
        Store(settings);
        const Lines expected = model.Apply(settings);
        Pin().ApplyConnection();
        EXPECT_EQ(Done(), expected) << name;
        EXPECT_EQ(Settings().Text(Setting::ParamSource), VxString(settings.source).Wide()) << name;
        return !HasFailure();
    }

    /// Goes from each state to each other, once while stopped and once while streaming. From a state to
    /// itself, too: settings that are applied again.
    void GoThroughAllPairs(const ModelCamera& camera)
    {
        TheCamera().kind = camera.isUsb ? DeviceKind::U3v : DeviceKind::Gev;
        TheCamera().connecting = camera.refusesControl ? VxResult(VxError::AccessDenied) : VxResult::Ok();
        TheCamera().opening = camera.refusesStream ? VxResult(VxError::PortInUse) : VxResult::Ok();
        TheCamera().device->AddEnum("SourceSelector", {"Left", "Right"}).value = camera.source;
        TheCamera().device->AddInteger("SourceStreamChannel", LinkModel::kCameraChannel);
        const std::vector<LinkSettings> states = States();
        for (const bool isRunning : {false, true}) {
            dynamic_cast<ScriptedEnum&>(*TheCamera().device->Get(VxString("SourceSelector"))).value =
                camera.source;
            DestroyPin(); // a new one has no last result
            LinkModel model(camera, isRunning);
            if (isRunning)
                (void)Pin().OnThreadCreate();
            for (const LinkSettings& from : states) {
                for (const LinkSettings& to : states) {
                    TheCamera().log.Clear();
                    Pin().CloseConnection();
                    EXPECT_EQ(Done(), model.Close());
                    const std::string name = Name(from) + (isRunning ? ", streaming" : "");
                    ASSERT_TRUE(AppliesLike(model, from, name));
                    ASSERT_TRUE(AppliesLike(model, to, name + " -> " + Name(to)));
                }
            }
            if (isRunning)
                (void)Pin().OnThreadDestroy();
        }
    }
};

TEST_F(VxDSStreamTransitionsTest, MakesEveryChangeWithAGigEVisionCamera)
{
    GoThroughAllPairs({});
}

TEST_F(VxDSStreamTransitionsTest, MakesEveryChangeWithAUsbCamera)
{
    GoThroughAllPairs({.isUsb = true});
}

TEST_F(VxDSStreamTransitionsTest, MakesEveryChangeWithACameraThatRefusesControl)
{
    GoThroughAllPairs({.refusesControl = true});
}

TEST_F(VxDSStreamTransitionsTest, MakesEveryChangeWithACameraThatRefusesItsStream)
{
    GoThroughAllPairs({.refusesStream = true});
}

/// The camera refuses one call after the other: nobody hears of it, and all that follows is done all the
/// same.
class VxDSStreamRefusalsTest : public PinFixture {
protected:
    /// Connects, streams, stops and closes.
    /// @return  what that took
    Lines GoThroughALife(const std::string& failing)
    {
        DestroyPin();
        TheCamera().Reset();
        TheCamera().failing = failing;
        Store(Setting::DeviceId, L"cam");
        Pin().ApplyConnection();
        EXPECT_EQ(Pin().OnThreadCreate(), S_OK);
        EXPECT_EQ(Pin().OnThreadDestroy(), S_OK);
        Pin().CloseConnection();
        EXPECT_EQ(TheCamera().liveDevices, 0) << failing;
        EXPECT_EQ(TheCamera().liveStreams, 0) << failing;
        EXPECT_EQ(TheCamera().livePipelines, 0) << failing;
        return Done();
    }
};

TEST_F(VxDSStreamRefusalsTest, DoesTheRestWhenACallFails)
{
    const Lines usual = GoThroughALife({});
    for (const char* const failing :
         {"pipeline.SetBufferCount", "device.SetStreamDestination", "stream.Reset", "device.StreamEnable",
          "device.AcquisitionStart", "device.AcquisitionStop", "device.StreamDisable", "pipeline.Stop",
          "stream.Close", "device.Disconnect"}) {
        ASSERT_TRUE(
            std::ranges::any_of(usual, [&](const std::string& call) { return call.starts_with(failing); }))
            << failing << " does not come";
        EXPECT_EQ(GoThroughALife(failing), usual) << failing;
    }
}

TEST_F(VxDSStreamRefusalsTest, DoesNotStopAPipelineThatCouldNotStart)
{
    Lines expected = GoThroughALife({});
    std::erase(expected, "pipeline.Stop");

    EXPECT_EQ(GoThroughALife("pipeline.Start"), expected);
}

} // namespace
