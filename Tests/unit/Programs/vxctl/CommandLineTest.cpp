#include "vxctl/CommandLine.h"

#include <gmock/gmock.h>

namespace vxctl {
namespace {

using testing::HasSubstr;

/// The request of a good command line.
Request Read(std::vector<std::string> arguments)
{
    const CommandLineResult result = ReadCommandLine(std::move(arguments));
    EXPECT_TRUE(result.request) << result.text;
    return result.request.value_or(Request());
}

/// What the user is told of a wrong one.
std::string Complaint(std::vector<std::string> arguments)
{
    const CommandLineResult result = ReadCommandLine(std::move(arguments));
    EXPECT_FALSE(result.request);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.text, testing::StartsWith("error: "));
    EXPECT_THAT(result.text, HasSubstr("--help\n"));
    return result.text;
}

TEST(CommandLineTest, Lists)
{
    const Request request = Read({"list", "--timeout", "250", "--json"});

    EXPECT_EQ(request.action, Action::List);
    EXPECT_EQ(request.form, Form::Json);
    EXPECT_EQ(request.patience, std::chrono::milliseconds(250));
    EXPECT_EQ(Read({"list"}).form, Form::Text);
    EXPECT_EQ(Read({"list"}).patience, std::chrono::milliseconds(1000));
}

TEST(CommandLineTest, ForcesAnAddress)
{
    const Request request = Read(
        {"force-ip", "left camera", "192.168.0.10", "--mask", "255.255.0.0", "--gateway", "192.168.0.1"});

    EXPECT_EQ(request.action, Action::ForceIp);
    EXPECT_EQ(request.camera, "left camera");
    EXPECT_EQ(request.forced.address.ToString(), "192.168.0.10");
    EXPECT_EQ(request.forced.mask.ToString(), "255.255.0.0");
    EXPECT_EQ(request.forced.gateway.ToString(), "192.168.0.1");
    const Request usual = Read({"force-ip", "02-00-00-00-00-01", "192.168.0.10"});
    EXPECT_EQ(usual.forced.mask.ToString(), "255.255.255.0");
    EXPECT_TRUE(usual.forced.gateway.IsUnspecified());
}

TEST(CommandLineTest, RefusesAddressesThatAreNone)
{
    EXPECT_THAT(Complaint({"force-ip", "a", "192.168.0.256"}),
                HasSubstr("'192.168.0.256' is no IPv4 address"));
    EXPECT_THAT(Complaint({"force-ip", "a", "192.168.0.2", "--mask", "x"}),
                HasSubstr("'x' is no IPv4 address"));
    EXPECT_THAT(Complaint({"force-ip", "a", "192.168.0.2", "--gateway", "1"}),
                HasSubstr("'1' is no IPv4 address"));
    EXPECT_THAT(Complaint({"force-ip", "a"}), HasSubstr("address is required"));
}

TEST(CommandLineTest, ShowsFeatures)
{
    const Request tree = Read({"features", "cam", "--visibility", "Expert"});
    EXPECT_EQ(tree.action, Action::Features);
    EXPECT_EQ(tree.camera, "cam");
    EXPECT_EQ(tree.visibility, VxGenVisibility::Expert);
    EXPECT_EQ(tree.subject, Subject::Camera);
    EXPECT_TRUE(tree.names.empty());
    EXPECT_FALSE(tree.xml);

    const Request some = Read({"features", "cam", "Width", "Height", "--link", "--xml", "a.xml"});
    EXPECT_EQ(some.names, (std::vector<std::string>{"Width", "Height"}));
    EXPECT_EQ(some.visibility, VxGenVisibility::Guru);
    EXPECT_EQ(some.subject, Subject::Link);
    EXPECT_EQ(some.xml, "a.xml");
}

TEST(CommandLineTest, TellsHowRegistersAreRead)
{
    const Request usual = Read({"get", "cam", "Width"});
    EXPECT_EQ(usual.registers, std::nullopt);
    EXPECT_TRUE(usual.isCaching);

    const Request mended = Read({"set", "cam", "Width=1", "--registers", "Big", "--no-cache"});
    EXPECT_EQ(mended.registers, "BigEndian");
    EXPECT_FALSE(mended.isCaching);
    EXPECT_EQ(Read({"save", "cam", "f", "--registers", "auto"}).registers, "Automatic");
    EXPECT_EQ(Read({"features", "cam", "--registers", "described"}).registers, "AsDescribed");
    EXPECT_THAT(Complaint({"get", "cam", "Width", "--registers", "small"}),
                HasSubstr("'small' is no order of registers: choose auto, described or big"));
}

TEST(CommandLineTest, RefusesAnUnknownVisibility)
{
    EXPECT_THAT(Complaint({"features", "cam", "--visibility", "all"}),
                HasSubstr("'all' is no visibility: choose beginner, expert"));
}

TEST(CommandLineTest, GetsValues)
{
    const Request request = Read({"get", "cam", "Width", "Height", "--json"});

    EXPECT_EQ(request.action, Action::Get);
    EXPECT_EQ(request.names, (std::vector<std::string>{"Width", "Height"}));
    EXPECT_EQ(request.form, Form::Json);
    EXPECT_THAT(Complaint({"get", "cam"}), HasSubstr("name is required"));
}

TEST(CommandLineTest, SetsValuesThatHoldAnyCharacter)
{
    const Request request = Read({"set", "cam", "Gain=-1.5", "DeviceUserID=a=b \xC3\xA4", "Text="});

    ASSERT_EQ(request.assignments.size(), 3u);
    EXPECT_EQ(request.assignments[0].name, "Gain");
    EXPECT_EQ(request.assignments[0].value, "-1.5");
    EXPECT_EQ(request.assignments[1].value, "a=b \xC3\xA4");
    EXPECT_EQ(request.assignments[2].value, "");
}

TEST(CommandLineTest, RefusesWhatSetsNothing)
{
    EXPECT_THAT(Complaint({"set", "cam", "Width"}), HasSubstr("'Width' sets nothing: write NAME=VALUE"));
    EXPECT_THAT(Complaint({"set", "cam", "=5"}), HasSubstr("'=5' sets nothing"));
    EXPECT_THAT(Complaint({"set", "cam"}), HasSubstr("assignment is required"));
}

TEST(CommandLineTest, ExecutesCommands)
{
    const Request request = Read({"execute", "cam", "UserSetLoad", "--timeout", "100"});

    EXPECT_EQ(request.action, Action::Execute);
    EXPECT_EQ(request.names, std::vector<std::string>{"UserSetLoad"});
    EXPECT_EQ(request.patience, std::chrono::milliseconds(100));
    EXPECT_EQ(Read({"execute", "cam", "C"}).patience, std::chrono::milliseconds(5000));
}

TEST(CommandLineTest, SavesAndLoads)
{
    const Request save = Read({"save", "cam", "file.xml"});
    EXPECT_EQ(save.action, Action::Save);
    EXPECT_EQ(save.file, "file.xml");

    const Request load = Read({"load", "cam", "-"});
    EXPECT_EQ(load.action, Action::Load);
    EXPECT_EQ(load.file, "-");
}

TEST(CommandLineTest, TakesOptionsBeforeTheCommandLikeThoseAfterIt)
{
    const Request features =
        Read({"--xml", "a.xml", "--no-cache", "--registers=big", "features", "cam", "Width"});
    EXPECT_EQ(features.action, Action::Features);
    EXPECT_EQ(features.camera, "cam");
    EXPECT_EQ(features.names, std::vector<std::string>{"Width"});
    EXPECT_EQ(features.xml, "a.xml");
    EXPECT_EQ(features.registers, "BigEndian");
    EXPECT_FALSE(features.isCaching);

    EXPECT_EQ(Read({"--xml", "a.xml", "get", "cam", "--json", "Width"}).form, Form::Json);
    EXPECT_EQ(Read({"--json", "list"}).form, Form::Json);
    EXPECT_EQ(Read({"--timeout", "250", "list"}).patience, std::chrono::milliseconds(250));
    EXPECT_EQ(Read({"--timeout", "250", "execute", "cam", "C"}).patience, std::chrono::milliseconds(250));
    EXPECT_EQ(Read({"--link", "get", "cam", "PacketSize"}).subject, Subject::Link);
    EXPECT_EQ(Read({"--visibility", "beginner", "features", "cam"}).visibility, VxGenVisibility::Beginner);
    EXPECT_EQ(Read({"--mask", "255.0.0.0", "force-ip", "cam", "10.0.0.1"}).forced.mask.ToString(),
              "255.0.0.0");
    EXPECT_EQ(Read({"--xml", "list", "save", "cam", "f"}).xml, "list") << "a file of that name";
}

TEST(CommandLineTest, RefusesOptionsBeforeACommandThatDoesNotHaveThem)
{
    EXPECT_THAT(Complaint({"--xml", "a.xml", "list"}), HasSubstr("--xml"));
    EXPECT_THAT(Complaint({"--xml", "a.xml", "list"}), HasSubstr("see vxctl list --help"));
    EXPECT_THAT(Complaint({"--xml", "a.xml", "features", "cam", "--xml", "b.xml"}), HasSubstr("--xml"));
    EXPECT_THAT(Complaint({"--wrong", "list"}), HasSubstr("--wrong"));
    EXPECT_THAT(Complaint({"--json"}), HasSubstr("a command is missing"));
    EXPECT_THAT(Complaint({"--xml"}), HasSubstr("a command is missing"));
    EXPECT_THAT(Complaint({"--xml", "features"}), HasSubstr("a command is missing"));
    EXPECT_THAT(Complaint({"--xml", "features", "cam"}), HasSubstr("'cam' is no command"));
}

TEST(CommandLineTest, AsksForACommand)
{
    EXPECT_THAT(Complaint({}), HasSubstr("a command is missing"));
    EXPECT_THAT(Complaint({"lits"}), HasSubstr("'lits' is no command"));
    EXPECT_THAT(Complaint({"--wrong"}), HasSubstr("--wrong"));
}

TEST(CommandLineTest, PointsToTheHelpOfTheCommand)
{
    EXPECT_THAT(Complaint({"save", "cam"}), HasSubstr("see vxctl save --help"));
    EXPECT_THAT(Complaint({"list", "--wrong"}), HasSubstr("see vxctl list --help"));
}

TEST(CommandLineTest, ExplainsItself)
{
    for (const auto& [arguments, text] : std::vector<std::pair<std::vector<std::string>, const char*>>{
             {{"--help"}, "Exit codes: 0 done"},
             {{"--help"}, "vxctl --xml own.xml features 192.168.0.10"},
             {{"--help", "list"}, "wrong subnet"},
             {{"--json", "--help", "list"}, "wrong subnet"},
             {{"list", "--help"}, "wrong subnet"},
             {{"force-ip", "--help"}, "until it is switched off"},
             {{"features", "--help"}, "--visibility"},
             {{"get", "--help"}, "NAME=VALUE"},
             {{"set", "--help"}, "first value that is refused"},
             {{"execute", "--help"}, "wait for their end"},
             {{"save", "--help"}, "standard output"},
             {{"load", "--help"}, "tells which and why"}}) {
        const CommandLineResult result = ReadCommandLine(arguments);
        EXPECT_FALSE(result.request);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_THAT(result.text, HasSubstr(text));
    }
}

TEST(CommandLineTest, EveryHelpHasAnExample)
{
    for (const char* command : {"force-ip", "features", "get", "set", "execute", "save", "load"})
        EXPECT_THAT(ReadCommandLine({command, "--help"}).text,
                    HasSubstr("Example: vxctl " + std::string(command)));
}

TEST(CommandLineTest, AHelpShowsTheWholeCommandAsItIsTyped)
{
    EXPECT_THAT(ReadCommandLine({"--help"}).text, HasSubstr("Usage: vxctl [OPTIONS]"));
    for (const char* command : {"list", "force-ip", "features", "get", "set", "execute", "save", "load"})
        EXPECT_THAT(ReadCommandLine({command, "--help"}).text,
                    HasSubstr("Usage: vxctl " + std::string(command) + " "));
}

TEST(CommandLineTest, TellsItsVersion)
{
    const CommandLineResult result = ReadCommandLine({"--version"});

    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.text, testing::StartsWith("vxctl "));
}

} // namespace
} // namespace vxctl
