#include "system/ChildProcess.h"
#include "system/Regsvr32.h"
#include "system/RoadTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <sstream>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// What one process saves another one finds. Works on the registry of the Wine prefix in which it runs, so it
/// has one of its own (run-in-own-prefix).
class SavedSettingsTest : public RoadTest {
protected:
    void SetUp() override { ASSERT_EQ(Regsvr32({}), 0u); }
    void TearDown() override
    {
        std::ignore = VxGrab({L"--clear-default"});
        std::ignore = Regsvr32({L"/u"});
    }

    static ProgramRun VxGrab(std::vector<std::wstring> arguments)
    {
        arguments.insert(arguments.begin(), L"--quiet");
        return Run(L"VX_GRABBER", arguments);
    }

    static ProgramRun Partner(const std::vector<std::wstring>& arguments)
    {
        return Run(L"VX_PARTNER", arguments);
    }

    using Values = std::map<std::string, std::string>;

    /// @return  the lines NAME=VALUE of an output
    static Values ValuesIn(const std::string& output)
    {
        Values values;
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            std::erase(line, '\r');
            if (const auto equals = line.find('='); equals != std::string::npos)
                values[line.substr(0, equals)] = line.substr(equals + 1);
        }
        return values;
    }

    static void ExpectValues(const Values& found, const Values& expected)
    {
        for (const auto& [name, value] : expected) {
            const auto at = found.find(name);
            EXPECT_EQ(at != found.end() ? at->second : "(not told)", value) << name;
        }
    }

private:
    static ProgramRun Run(const wchar_t* variable, const std::vector<std::wstring>& arguments)
    {
        return RunProgram(WindowsPath(EnvironmentText(variable)), arguments, std::chrono::seconds(60));
    }
};

TEST_F(SavedSettingsTest, AGraphComesBackInAnotherProcessWithItsSettingsAndTheCamerasFeatures)
{
    const auto file = OutputFolder() / "saved-graph.grf";
    {
        VxSimulatedCamera camera;
        Start(camera, SmallCamera("BGR8"));
        const ProgramRun run = Partner({L"save-graph", file.wstring()});
        ASSERT_EQ(run.exitCode, 0u) << run.output;
    }
    VxSimulatedCamera camera; // switched on anew: it has forgotten everything
    Start(camera, SmallCamera("BGR8"));

    const ProgramRun run = Partner({L"load-graph", file.wstring()});

    ASSERT_EQ(run.exitCode, 0u) << run.output;
    auto loaded = ValuesIn(run.output);
    // The source is learned from the camera, the rest was set.
    ExpectValues(loaded, {{"role", "0"},
                          {"unicastport", "4711"},
                          {"multicastip", "239.192.7.7"},
                          {"multicastport", "2042"},
                          {"diagnosticsenabled", "1"},
                          {"deviceid", "127.0.0.1"},
                          {"paramsource", "Source0"},
                          {"paramchannel", "1"},
                          {"buffercount", "7"},
                          {"defaultbuffersize", "-1"},
                          {"dropthreshold", "3"},
                          {"outputpixeltype", "0"},
                          {"kernelsize", "3"},
                          {"zoomvalue", "-2"},
                          {"output size", "200 x 150"},
                          {"Width", "256"},
                          {"Height", "240"},
                          {"ExposureTime", "1234"},
                          {"Gamma", "1.5"}});
    EXPECT_EQ(loaded["picture"], "200 x 150, 120000 bytes"); // RGB32
}

TEST_F(SavedSettingsTest, AReceiverComesBackInAnotherProcessWithItsRoleChannelAndOutput)
{
    const auto file = OutputFolder() / "saved-receiver.grf";
    const ProgramRun saving = Partner({L"save-receiver", file.wstring()});
    ASSERT_EQ(saving.exitCode, 0u) << saving.output;

    const ProgramRun run = Partner({L"load-receiver", file.wstring()});

    ASSERT_EQ(run.exitCode, 0u) << run.output;
    ExpectValues(ValuesIn(run.output), {{"role", "2"},
                                        {"unicastport", "4711"},
                                        {"multicastip", "239.192.7.7"},
                                        {"multicastport", "2042"},
                                        {"diagnosticsenabled", "1"},
                                        {"deviceid", "127.0.0.1"},
                                        {"paramsource", "Source7"},
                                        {"paramchannel", "1"},
                                        {"buffercount", "7"},
                                        {"defaultbuffersize", "-1"},
                                        {"dropthreshold", "3"},
                                        {"outputpixeltype", "1"},
                                        {"kernelsize", "3"},
                                        {"zoomvalue", "-2"},
                                        {"output size", "0 x 0"}});
}

TEST_F(SavedSettingsTest, ADefaultIsThereWhenTheNextProcessCreatesTheFilter)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("BGR8"));
    const ProgramRun saving =
        VxGrab({L"--device-id", L"127.0.0.1", L"--output-size", L"200x150", L"--save-default"});
    ASSERT_EQ(saving.exitCode, 0u) << saving.output;

    const ProgramRun run = VxGrab({L"--frames", L"3", L"--summary"});

    EXPECT_EQ(run.exitCode, 0u) << run.output;
    EXPECT_THAT(run.output, AllOf(HasSubstr("camera: 127.0.0.1 ("), HasSubstr("format: RGB24 200 x 150")));
}

TEST_F(SavedSettingsTest, AClearedDefaultIsGoneInTheNextProcess)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("BGR8"));
    ASSERT_EQ(VxGrab({L"--device-id", L"127.0.0.1", L"--save-default"}).exitCode, 0u);
    ASSERT_EQ(VxGrab({L"--clear-default"}).exitCode, 0u);

    const ProgramRun run = VxGrab({L"--frames", L"3", L"--summary"});

    EXPECT_NE(run.exitCode, 0u) << "there is a camera without a default: " << run.output;
    EXPECT_THAT(run.output, Not(HasSubstr("127.0.0.1")));
}

} // namespace
