#include "BaseClasses/BitmapSizes.h"

#include "PinFixture.h"
#include "RenegotiatingSink.h"

#include <algorithm>

namespace {

using vxds::Setting;

class VxDSStreamConnectionTest : public PinFixture {
protected:
    static constexpr const char* kDestination = "device.SetStreamDestination(127.0.0.1, 50000, 0)";

    /// What closing an idle link in role 0 takes.
    static Lines Closing()
    {
        return {"device.AcquisitionStop()",
                "device.StreamDisable(0)",
                "delete pipeline",
                "stream.Close",
                "delete stream",
                "device.Disconnect",
                "VxDevice::Free"};
    }

    /// What opening a link in role 0 takes, with the defaults.
    static Lines Opening(const std::string& id)
    {
        return {"CreateAndConnect(" + id + ")",
                "new VxStreamGEV",
                "stream.Open(\"" + id + "\", port 0, channel 0, \"\", 64)",
                "new VxPipeline",
                "pipeline.SetBufferSize(4147200)",
                "pipeline.SetBufferCount(16)",
                "pipeline.SetHandleBufferTooSmall(true)",
                kDestination};
    }

    static Lines Starting()
    {
        return {"device.GetPayloadSize", "stream.Reset()",         "pipeline.SetBufferSize(921600)",
                "pipeline.Start",        "device.StreamEnable(0)", "device.AcquisitionStart()"};
    }

    static Lines Joined(Lines first, const Lines& second)
    {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }
};

TEST_F(VxDSStreamConnectionTest, TouchesNoCameraWhileItIsMadeWithoutASavedDefault)
{
    Pin();

    EXPECT_EQ(TheCamera().Actions(), Lines{});
}

TEST_F(VxDSStreamConnectionTest, ConnectsNothingWithoutADeviceIdAndStillUpdatesTheSize)
{
    RenegotiatingSink sink;
    ASSERT_EQ(Pin().Connect(&sink, nullptr), S_OK);
    Store(Setting::Width, 320);
    Store(Setting::Height, 240);

    Pin().ApplyConnection();

    EXPECT_EQ(Done(), Lines{});
    ASSERT_EQ(sink.renegotiated.size(), 1u);
    EXPECT_EQ(HEADER(sink.renegotiated[0].Format())->biWidth, 320);
    EXPECT_EQ(HEADER(sink.renegotiated[0].Format())->biHeight, 240);
    EXPECT_EQ(Pin().Disconnect(), S_OK);
    EXPECT_EQ(sink.Disconnect(), S_OK);
}

TEST_F(VxDSStreamConnectionTest, OpensTheLinkAsController)
{
    Store(Setting::DeviceId, L"02-00-00-00-00-01");

    Pin().ApplyConnection();

    EXPECT_EQ(Done(), Opening("02-00-00-00-00-01"));
}

TEST_F(VxDSStreamConnectionTest, ChangesNothingWhenTheSettingsAreTheSame)
{
    ConnectAndForget();

    Pin().ApplyConnection();

    EXPECT_EQ(Done(), Lines{});
}

TEST_F(VxDSStreamConnectionTest, ClosesInOrder)
{
    ConnectAndForget();

    Pin().CloseConnection();

    EXPECT_EQ(Done(), Closing());
    Pin().CloseConnection();
    EXPECT_EQ(Done(), Lines{}) << "nothing is left to close";
}

TEST_F(VxDSStreamConnectionTest, ClosesTheLinkWithTheFilter)
{
    ConnectAndForget();

    DestroyPin();

    EXPECT_EQ(Done(), Closing());
}

TEST_F(VxDSStreamConnectionTest, EndsAThreadThatStillStreamsWithTheFilter)
{
    RenegotiatingSink sink;
    ASSERT_EQ(Pin().Connect(&sink, nullptr), S_OK);
    ConnectAndForget();
    ASSERT_EQ(Host().Pause(), S_OK);
    EXPECT_TRUE(sink.inner.samples.WaitFor(2));
    ASSERT_EQ(sink.Disconnect(),
              S_OK); // which a stream in pause allows: the filter is held by the test alone

    DestroyPin();

    const Lines done = Done();
    EXPECT_EQ(std::ranges::count(done, "pipeline.Stop"), 1) << "by the thread, at its end";
    EXPECT_EQ(done.back(), "VxDevice::Free");
    EXPECT_EQ(sink.References(), 0);
}

TEST_F(VxDSStreamConnectionTest, DoesNotDisconnectACameraThatIsGone)
{
    ConnectAndForget();
    TheCamera().isConnected = false;

    Pin().CloseConnection();

    const Lines done = Done();
    EXPECT_EQ(std::ranges::count(done, "device.Disconnect"), 0);
    EXPECT_EQ(done.back(), "VxDevice::Free");
}

TEST_F(VxDSStreamConnectionTest, StartsAndStopsAcquisitionWithItsThread)
{
    ConnectAndForget();

    EXPECT_EQ(Pin().OnThreadCreate(), S_OK);
    EXPECT_EQ(Done(), Starting());

    EXPECT_EQ(Pin().OnThreadDestroy(), S_OK);
    EXPECT_EQ(Done(), (Lines{"device.AcquisitionStop()", "device.StreamDisable(0)", "pipeline.Stop"}));
}

TEST_F(VxDSStreamConnectionTest, UsesTheDefaultBufferSizeWithoutADevice)
{
    Store(Setting::Role, 1);
    Store(Setting::DefaultBufferSize, 123456);
    ConnectAndForget();

    (void)Pin().OnThreadCreate();

    EXPECT_EQ(Done(), (Lines{"stream.Reset()", "pipeline.SetBufferSize(123456)", "pipeline.Start"}));
    (void)Pin().OnThreadDestroy();
    EXPECT_EQ(Done(), Lines{"pipeline.Stop"});
}

TEST_F(VxDSStreamConnectionTest, ReconnectsWhileStreamingWithAnotherDevice)
{
    ConnectAndForget();
    (void)Pin().OnThreadCreate();
    TheCamera().log.Clear();

    Store(Setting::DeviceId, L"other");
    Pin().ApplyConnection();

    Lines expected = {"device.AcquisitionStop()",
                      "device.StreamDisable(0)",
                      "pipeline.Stop",
                      "delete pipeline",
                      "stream.Close",
                      "delete stream",
                      "device.Disconnect",
                      "VxDevice::Free"};
    expected = Joined(expected, Opening("other"));
    expected = Joined(expected, Starting());
    EXPECT_EQ(Done(), expected);
    (void)Pin().OnThreadDestroy();
}

TEST_F(VxDSStreamConnectionTest, DoesNotStartAfterAReconnectWhileStopped)
{
    ConnectAndForget();
    (void)Pin().OnThreadCreate();
    (void)Pin().OnThreadDestroy();
    TheCamera().log.Clear();

    Store(Setting::DeviceId, L"other");
    Pin().ApplyConnection();

    EXPECT_EQ(Done(), Joined(Closing(), Opening("other")));
}

TEST_F(VxDSStreamConnectionTest, ClearsTheSourceSettingWhenTheCameraHasNoSources)
{
    Store(Setting::ParamSource, L"Left");
    ConnectAndForget();

    EXPECT_EQ(Settings().Text(Setting::ParamSource), L"");
    Pin().ApplyConnection();
    EXPECT_EQ(Done(), Lines{}) << "and does not differ by it";
}

TEST_F(VxDSStreamConnectionTest, LearnsTheCamerasSourceWhenNoneIsSet)
{
    TheCamera().device->AddEnum("SourceSelector", {"Left", "Right"}).value = "Right";
    ConnectAndForget();

    EXPECT_EQ(Settings().Text(Setting::ParamSource), L"Right");
    Pin().ApplyConnection();
    EXPECT_EQ(Done(), Lines{});
}

TEST_F(VxDSStreamConnectionTest, SelectsTheSourceThatIsSet)
{
    TheCamera().device->AddEnum("SourceSelector", {"Left", "Right"});
    Store(Setting::DeviceId, L"cam");
    Store(Setting::ParamSource, L"Right");

    Pin().ApplyConnection();

    Lines expected = Opening("cam");
    expected.insert(expected.begin() + 1, "device.SourceSelector = Right");
    EXPECT_EQ(Done(), expected);
    Pin().ApplyConnection();
    EXPECT_EQ(Done(), Lines{});
}

TEST_F(VxDSStreamConnectionTest, ReconnectsEachTimeWhenTheCameraRefusesTheSource)
{
    TheCamera().device->AddEnum("SourceSelector", {"Left", "Right"});
    Store(Setting::ParamSource, L"Middle");
    ConnectAndForget();
    EXPECT_EQ(Settings().Text(Setting::ParamSource), L"Middle");

    Pin().ApplyConnection();

    EXPECT_EQ(Done().front(), "device.AcquisitionStop()");
}

TEST_F(VxDSStreamConnectionTest, OpensTheStreamChannelThatTheCameraNames)
{
    TheCamera().device->AddInteger("SourceStreamChannel", 3);
    Store(Setting::DeviceId, L"cam");
    Store(Setting::ParamChannel, 1); // of no effect in this role

    Pin().ApplyConnection();

    Lines expected = Opening("cam");
    expected[2] = "stream.Open(\"cam\", port 0, channel 3, \"\", 64)";
    expected.back() = "device.SetStreamDestination(127.0.0.1, 50000, 3)";
    EXPECT_EQ(Done(), expected);
    Pin().ApplyConnection();
    EXPECT_EQ(Done(), Lines{}) << "the channel that is compared is the one that is set";
}

TEST_F(VxDSStreamConnectionTest, OpensAUnicastReceiver)
{
    Store(Setting::DeviceId, L"cam");
    Store(Setting::Role, 1);
    Store(Setting::UnicastPort, 5000);
    Store(Setting::ParamChannel, 2);

    Pin().ApplyConnection();

    EXPECT_EQ(Done(), (Lines{"new VxStreamGEV", "stream.Open(\"cam\", port 5000, channel 2, \"\", 64)",
                             "new VxPipeline", "pipeline.SetBufferSize(4147200)",
                             "pipeline.SetBufferCount(16)", "pipeline.SetHandleBufferTooSmall(true)"}));
}

TEST_F(VxDSStreamConnectionTest, ReconnectsAUnicastReceiverEachTimeUnlessItsPortIsZero)
{
    Store(Setting::Role, 1);
    ConnectAndForget();
    Pin().ApplyConnection();
    EXPECT_EQ(Done(), Lines{});

    Store(Setting::UnicastPort, 5000);
    for (int time = 0; time < 2; ++time) {
        Pin().ApplyConnection();
        EXPECT_EQ(Done().front(), "delete pipeline");
    }
}

TEST_F(VxDSStreamConnectionTest, OpensAMulticastReceiver)
{
    Store(Setting::DeviceId, L"cam");
    Store(Setting::Role, 2);
    Store(Setting::ParamChannel, 1);

    Pin().ApplyConnection();

    EXPECT_EQ(Done(), (Lines{"new VxStreamGEV",
                             "stream.Open(\"cam\", group \"239.192.1.1\", port 1042, channel 1, \"\", 64)",
                             "new VxPipeline", "pipeline.SetBufferSize(4147200)",
                             "pipeline.SetBufferCount(16)", "pipeline.SetHandleBufferTooSmall(true)"}));
}

TEST_F(VxDSStreamConnectionTest, UsesTheLow16BitsOfPortsAndChannels)
{
    Store(Setting::DeviceId, L"cam");
    Store(Setting::ParamChannel, 0x10002);
    Store(Setting::UnicastPort, 0xFFFFFFFF);
    Store(Setting::MulticastPort, 70000);

    Store(Setting::Role, 1);
    Pin().ApplyConnection();
    EXPECT_EQ(Done().at(1), "stream.Open(\"cam\", port 65535, channel 2, \"\", 64)");
    Store(Setting::Role, 2);
    Pin().ApplyConnection();
    const Lines done = Done();
    EXPECT_EQ(std::ranges::count(
                  done, "stream.Open(\"cam\", group \"239.192.1.1\", port 4464, channel 2, \"\", 64)"),
              1);
    EXPECT_EQ(Settings().Number(Setting::MulticastPort), 70000u) << "the setting keeps what it was given";
}

TEST_F(VxDSStreamConnectionTest, ReconnectsAMulticastReceiverEachTime)
{
    Store(Setting::Role, 2);
    ConnectAndForget();

    for (int time = 0; time < 2; ++time) {
        Pin().ApplyConnection();
        EXPECT_EQ(Done().front(), "delete pipeline");
    }
}

TEST_F(VxDSStreamConnectionTest, FreesTheDeviceWhenTheRoleBecomesReceiver)
{
    ConnectAndForget();

    Store(Setting::Role, 1);
    Pin().ApplyConnection();

    Lines expected =
        Joined(Closing(), {"new VxStreamGEV", "stream.Open(\"cam\", port 0, channel 0, \"\", 64)",
                           "new VxPipeline", "pipeline.SetBufferSize(4147200)", "pipeline.SetBufferCount(16)",
                           "pipeline.SetHandleBufferTooSmall(true)"});
    EXPECT_EQ(Done(), expected);
}

TEST_F(VxDSStreamConnectionTest, OpensAUsbStreamByItsConnectionIdAndSendsNoDestination)
{
    TheCamera().kind = DeviceKind::U3v;
    Store(Setting::DeviceId, L"usb");

    Pin().ApplyConnection();

    EXPECT_EQ(Done(), (Lines{"CreateAndConnect(usb)", "new VxStreamU3V", "stream.Open(\"usb\")",
                             "new VxPipeline", "pipeline.SetBufferSize(4147200)",
                             "pipeline.SetBufferCount(16)", "pipeline.SetHandleBufferTooSmall(true)"}));
}

TEST_F(VxDSStreamConnectionTest, FreesADeviceThatCouldNotConnectAndOpensTheStreamAllTheSame)
{
    TheCamera().connecting = VxError::AccessDenied;
    Store(Setting::DeviceId, L"cam");

    Pin().ApplyConnection();

    EXPECT_EQ(Done(), (Lines{"CreateAndConnect(cam)", "VxDevice::Free", "new VxStreamGEV",
                             "stream.Open(\"cam\", port 0, channel 0, \"\", 64)", "new VxPipeline",
                             "pipeline.SetBufferSize(4147200)", "pipeline.SetBufferCount(16)",
                             "pipeline.SetHandleBufferTooSmall(true)"}));
}

TEST_F(VxDSStreamConnectionTest, SurvivesACameraThatGivesNoObject)
{
    TheCamera().kind = DeviceKind::None;
    TheCamera().connecting = VxError::NotFound;
    TheCamera().opening = VxError::NotFound;
    Store(Setting::DeviceId, L"cam");

    Pin().ApplyConnection();

    EXPECT_EQ(Done(), (Lines{"CreateAndConnect(cam)", "new VxStreamGEV",
                             "stream.Open(\"cam\", port 0, channel 0, \"\", 64)", "delete stream"}));
}

TEST_F(VxDSStreamConnectionTest, DeletesAStreamThatCouldNotOpenAndKeepsTheDevice)
{
    TheCamera().opening = VxError::PortInUse;
    Store(Setting::DeviceId, L"cam");

    Pin().ApplyConnection();

    EXPECT_EQ(Done(), (Lines{"CreateAndConnect(cam)", "new VxStreamGEV",
                             "stream.Open(\"cam\", port 0, channel 0, \"\", 64)", "delete stream"}));
    EXPECT_EQ(TheCamera().liveDevices, 1);
}

TEST_F(VxDSStreamConnectionTest, MakesNoOpenCallInAnUnknownRole)
{
    Store(Setting::DeviceId, L"cam");
    Store(Setting::Role, 5);

    Pin().ApplyConnection();

    EXPECT_EQ(Done(), (Lines{"new VxStreamGEV", "delete stream"})) << "nothing was ever opened";
}

TEST_F(VxDSStreamConnectionTest, KeepsAnUnopenedStreamInAnUnknownRoleAfterASuccess)
{
    ConnectAndForget();

    Store(Setting::Role, 5);
    Pin().ApplyConnection();

    EXPECT_EQ(Done(),
              Joined(Closing(), {"new VxStreamGEV", "new VxPipeline", "pipeline.SetBufferSize(4147200)",
                                 "pipeline.SetBufferCount(16)", "pipeline.SetHandleBufferTooSmall(true)"}));
    Pin().CloseConnection();
    EXPECT_EQ(Done(), (Lines{"delete pipeline", "delete stream"})) << "it is not open, so it is not closed";
}

TEST_F(VxDSStreamConnectionTest, TakesBufferSettingsAtTheNextConnect)
{
    Store(Setting::BufferCount, 4);
    Store(Setting::DefaultBufferSize, 1000);
    Store(Setting::DeviceId, L"cam");

    Pin().ApplyConnection();

    const Lines done = Done();
    EXPECT_EQ(done[4], "pipeline.SetBufferSize(1000)");
    EXPECT_EQ(done[5], "pipeline.SetBufferCount(4)");
}

TEST_F(VxDSStreamConnectionTest, FollowsTheCamerasSizeWhenNoOutputSizeIsSet)
{
    ConnectAndForget();

    EXPECT_EQ(Settings().Number(Setting::OutputWidth), 640u);
    EXPECT_EQ(Settings().Number(Setting::OutputHeight), 480u);
    EXPECT_EQ(Settings().Number(Setting::Width), 640u);
    EXPECT_EQ(Settings().Number(Setting::Height), 480u);
}

TEST_F(VxDSStreamConnectionTest, KeepsASideThatTheCameraDoesNotTell)
{
    ConnectAndForget();
    ASSERT_EQ(Settings().Number(Setting::Width), 640u);
    ASSERT_EQ(Settings().Number(Setting::Height), 480u);
    Store(Setting::OutputWidth, 0u);
    Store(Setting::OutputHeight, 0u);
    auto& width = dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString("Width")));
    auto& height = dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString("Height")));
    width.value = 320;
    width.reading = VxError::Busy;
    height.value = 200;

    Pin().UpdateOutputSize();

    // The output size follows what was read; the other side stays to be told.
    EXPECT_EQ(Settings().Number(Setting::OutputWidth), 0u);
    EXPECT_EQ(Settings().Number(Setting::OutputHeight), 200u);
    EXPECT_EQ(Settings().Number(Setting::Height), 200u);

    width.reading = VxResult::Ok();
    Pin().UpdateOutputSize();

    EXPECT_EQ(Settings().Number(Setting::OutputWidth), 320u);
    EXPECT_EQ(Settings().Number(Setting::Width), 320u);
}

TEST_F(VxDSStreamConnectionTest, DeliversTheOutputSizeThatIsSet)
{
    ASSERT_TRUE(Settings().SetOutputSize(320, 200));
    ConnectAndForget();

    EXPECT_EQ(Settings().Number(Setting::Width), 320u);
    EXPECT_EQ(Settings().Number(Setting::Height), 200u);
}

TEST_F(VxDSStreamConnectionTest, KeepsTheDeliveredSizeWithoutADevice)
{
    ASSERT_TRUE(Settings().SetOutputSize(320, 200));
    Store(Setting::Role, 1);
    ConnectAndForget();

    EXPECT_EQ(Settings().Number(Setting::Width), 1280u);
    EXPECT_EQ(Settings().Number(Setting::Height), 720u);
}

TEST_F(VxDSStreamConnectionTest, DisconnectsWhenTheOutputPixelTypeIsSetEvenToTheSame)
{
    ConnectAndForget();

    EXPECT_EQ(Pin().SetOutputPixelType(0), S_OK);
    EXPECT_EQ(Done(), Closing());
}

TEST_F(VxDSStreamConnectionTest, StaysConnectedWhenTheOutputPixelTypeIsRefused)
{
    ConnectAndForget();

    EXPECT_EQ(Pin().SetOutputPixelType(2), E_INVALIDARG);
    EXPECT_EQ(Done(), Lines{});
    EXPECT_EQ(Settings().Number(Setting::OutputPixelType), 0u);
}

TEST_F(VxDSStreamConnectionTest, LeavesTheLinkClosedWhenTheOutputPixelTypeIsSetWhileStreaming)
{
    ConnectAndForget();
    (void)Pin().OnThreadCreate();

    EXPECT_EQ(Pin().SetOutputPixelType(1), S_OK);

    EXPECT_EQ(TheCamera().liveDevices, 0);
    EXPECT_EQ(TheCamera().liveStreams, 0);
    EXPECT_EQ(Settings().Number(Setting::OutputPixelType), 1u);
    (void)Pin().OnThreadDestroy();
}

} // namespace
