#include "vxctl/CommandLine.h"

#include "vxctl/ExitCode.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace vxctl {
namespace {

using std::chrono::milliseconds;

// Chosen: cameras answer within a second at most.
constexpr std::uint32_t kListPatienceMs = 1000;
// Chosen: longer than any command of a camera takes that somebody waits for.
constexpr std::uint32_t kCommandPatienceMs = 5000;
constexpr std::uint32_t kLongestPatienceMs = 60'000;

constexpr const char* kDescription =
    "Finds and sets up GigE Vision cameras: lists them, gives them an address, shows and changes their "
    "features,\nsaves and loads their configuration.";

constexpr const char* kFooter =
    "Examples:\n"
    "  vxctl list\n"
    "  vxctl force-ip 02-00-00-00-00-01 192.168.0.10 --mask 255.255.255.0\n"
    "  vxctl features 192.168.0.10\n"
    "  vxctl set \"left camera\" ExposureAuto=Off ExposureTime=5000\n"
    "  vxctl save 192.168.0.10 camera.xml\n"
    "'vxctl COMMAND --help' explains a command and lists its options, which may stand before it as well:\n"
    "  vxctl --xml own.xml features 192.168.0.10\n"
    "A camera is named by its MAC address, IP address, serial number or user-defined name.\n"
    "Exit codes: 0 done; 1 the camera refused; 2 the command line is wrong; 3 the camera cannot be reached "
    "or\n"
    "controlled; 4 a file cannot be read, written or understood.";

constexpr const char* kCameraHelp = "MAC address, IP address, serial number or user-defined name";
constexpr const char* kXmlHelp = "Use this description (XML) instead of the camera's own";

constexpr const char* kRegistersHelp =
    "Byte order of registers of 4 bytes, for a camera whose values look swapped: auto (big-endian with an "
    "old description), described (as the description says) or big";
constexpr const char* kNoCacheHelp =
    "Ask the camera for every value, for a camera that shows values from before";

/// What is typed, before it is checked and brought into a Request.
struct Raw {
    Request request;
    std::vector<std::string> assignments;
    std::string visibility = "guru";
    std::string registers;
    std::string address;
    std::string mask = "255.255.255.0";
    std::string gateway = "0.0.0.0";
    std::uint32_t listPatienceMs = kListPatienceMs;
    std::uint32_t commandPatienceMs = kCommandPatienceMs;
    bool isJson = false;
    bool isLink = false;
    bool isUncached = false;
};

/// Wrong in a way that the parser does not see.
class WrongUse final : public std::invalid_argument {
public:
    using invalid_argument::invalid_argument;
};

CLI::App& AddCommand(CLI::App& app, Raw& raw, Action action, const char* name, const char* description)
{
    CLI::App* const command = app.add_subcommand(name, description);
    command->callback([&raw, action] { raw.request.action = action; });
    return *command;
}

void AddCamera(CLI::App& command, Raw& raw)
{
    command.add_option("camera", raw.request.camera, kCameraHelp)->required()->type_name("CAMERA");
    command.add_option("--xml", raw.request.xml, kXmlHelp)->type_name("FILE");
    command.add_option("--registers", raw.registers, kRegistersHelp)->type_name("auto|described|big");
    command.add_flag("--no-cache", raw.isUncached, kNoCacheHelp);
}

void AddJson(CLI::App& command, Raw& raw)
{
    command.add_flag("--json", raw.isJson, "Print JSON, for programs");
}

void AddPatience(CLI::App& command, std::uint32_t& value, const char* description)
{
    command.add_option("--timeout", value, description)
        ->type_name("MS")
        ->check(CLI::Range(1u, kLongestPatienceMs))
        ->capture_default_str();
}

void AddListing(CLI::App& app, Raw& raw)
{
    CLI::App& list =
        AddCommand(app, raw, Action::List, "list", "List the cameras on every network interface");
    AddPatience(list, raw.listPatienceMs, "How long to wait for answers, in milliseconds");
    AddJson(list, raw);
    list.footer(
        "The state is one of: ready; wrong subnet (the camera's address does not fit the interface it was\n"
        "found on: give it another one with 'vxctl force-ip'); no address; address used twice.");
}

void AddForceIp(CLI::App& app, Raw& raw)
{
    CLI::App& force = AddCommand(app, raw, Action::ForceIp, "force-ip",
                                 "Give a camera an IP address until it is switched off");
    force.add_option("camera", raw.request.camera, kCameraHelp)->required()->type_name("CAMERA");
    force.add_option("address", raw.address, "New address")->required()->type_name("ADDRESS");
    force.add_option("--mask", raw.mask, "Subnet mask")->type_name("MASK")->capture_default_str();
    force.add_option("--gateway", raw.gateway, "Default gateway; 0.0.0.0 stands for none")
        ->type_name("ADDRESS")
        ->capture_default_str();
    AddPatience(
        force, raw.listPatienceMs,
        "How long to look for the camera, and then to wait for it with its new address, in milliseconds");
    force.footer(
        "Works for a camera in any subnet. To make the address last, set the camera's persistent address\n"
        "afterwards (features GevPersistentIPAddress, GevPersistentSubnetMask, "
        "GevCurrentIPConfigurationPersistentIP).\n"
        "Example: vxctl force-ip 02-00-00-00-00-01 192.168.0.10 --mask 255.255.255.0");
}

void AddReading(CLI::App& app, Raw& raw)
{
    CLI::App& features = AddCommand(app, raw, Action::Features, "features",
                                    "Show the tree of features, or all that is known of the features named");
    AddCamera(features, raw);
    features.add_option("name", raw.request.names, "Features to show in full; without any, the whole tree")
        ->type_name("NAME...");
    features.add_option("--visibility", raw.visibility, "Show features up to this level in the tree")
        ->type_name("beginner|expert|guru|invisible")
        ->capture_default_str();
    features.add_flag("--link", raw.isLink, "The features of the connection instead of the camera's");
    AddJson(features, raw);
    features.footer(
        "In the tree: name, type, access (r readable, w writable now), value with unit, and what is "
        "accepted.\n"
        "Example: vxctl features 192.168.0.10 ExposureTime Gain");

    CLI::App& get = AddCommand(app, raw, Action::Get, "get", "Print values as NAME=VALUE");
    AddCamera(get, raw);
    get.add_option("name", raw.request.names, "Features to read")->required()->type_name("NAME...");
    get.add_flag("--link", raw.isLink, "The features of the connection instead of the camera's");
    AddJson(get, raw);
    get.footer("Example: vxctl get 192.168.0.10 Width Height");
}

void AddWriting(CLI::App& app, Raw& raw)
{
    CLI::App& set = AddCommand(app, raw, Action::Set, "set",
                               "Set values, in the order given, and print what the camera holds then");
    AddCamera(set, raw);
    set.add_option("assignment", raw.assignments, "Features and their new values")
        ->required()
        ->type_name("NAME=VALUE...");
    set.footer("Ends with the first value that is refused; those before it stay set.\n"
               "Example: vxctl set 192.168.0.10 GainSelector=All Gain=6.5");

    CLI::App& execute = AddCommand(app, raw, Action::Execute, "execute",
                                   "Execute commands of the camera and wait for their end");
    AddCamera(execute, raw);
    execute.add_option("name", raw.request.names, "Commands")->required()->type_name("NAME...");
    AddPatience(execute, raw.commandPatienceMs, "How long to wait for the end of each, in milliseconds");
    execute.footer("Example: vxctl execute 192.168.0.10 UserSetLoad");
}

void AddFiles(CLI::App& app, Raw& raw)
{
    CLI::App& save = AddCommand(app, raw, Action::Save, "save", "Save the camera's configuration to a file");
    AddCamera(save, raw);
    save.add_option("file", raw.request.file, "File to write; - writes to the standard output")
        ->required()
        ->type_name("FILE");
    save.footer(
        "Saved are all features that make up the camera's state, for every value of their selectors.\n"
        "Example: vxctl save 192.168.0.10 camera.xml");

    CLI::App& load =
        AddCommand(app, raw, Action::Load, "load", "Load a configuration that 'vxctl save' wrote");
    AddCamera(load, raw);
    load.add_option("file", raw.request.file, "File to read; - reads the standard input")
        ->required()
        ->type_name("FILE");
    load.footer("Goes on past features that refuse, tells which and why, and then ends with 1.\n"
                "Example: vxctl load 192.168.0.10 camera.xml");
}

transport::Ipv4Address AddressFrom(const std::string& text)
{
    const auto address = transport::Ipv4Address::Parse(text);
    if (!address)
        throw WrongUse("'" + text + "' is no IPv4 address: give four numbers, for instance 192.168.0.10");
    return *address;
}

VxGenVisibility VisibilityFrom(const std::string& text)
{
    constexpr std::array kLevels{
        std::pair{"beginner", VxGenVisibility::Beginner}, std::pair{"expert", VxGenVisibility::Expert},
        std::pair{"guru", VxGenVisibility::Guru}, std::pair{"invisible", VxGenVisibility::Invisible}};
    for (const auto& [name, level] : kLevels)
        if (CLI::detail::to_lower(text) == name)
            return level;
    throw WrongUse("'" + text + "' is no visibility: choose beginner, expert, guru or invisible");
}

/// @return  as the link's feature RegisterByteOrder has it; nothing when nothing was typed
std::optional<std::string> RegistersFrom(const std::string& text)
{
    constexpr std::array kOrders{std::pair{"auto", "Automatic"}, std::pair{"described", "AsDescribed"},
                                 std::pair{"big", "BigEndian"}};
    if (text.empty())
        return std::nullopt;
    for (const auto& [name, order] : kOrders)
        if (CLI::detail::to_lower(text) == name)
            return order;
    throw WrongUse("'" + text + "' is no order of registers: choose auto, described or big");
}

std::vector<Assignment> AssignmentsFrom(const std::vector<std::string>& texts)
{
    std::vector<Assignment> assignments;
    for (const std::string& text : texts) {
        const std::size_t sign = text.find('=');
        if (sign == std::string::npos || sign == 0)
            throw WrongUse("'" + text + "' sets nothing: write NAME=VALUE");
        assignments.push_back({text.substr(0, sign), text.substr(sign + 1)});
    }
    return assignments;
}

Request Understand(const Raw& raw)
{
    Request request = raw.request;
    request.form = raw.isJson ? Form::Json : Form::Text;
    request.subject = raw.isLink ? Subject::Link : Subject::Camera;
    request.registers = RegistersFrom(raw.registers);
    request.isCaching = !raw.isUncached;
    request.visibility = VisibilityFrom(raw.visibility);
    request.assignments = AssignmentsFrom(raw.assignments);
    request.patience =
        milliseconds(request.action == Action::Execute ? raw.commandPatienceMs : raw.listPatienceMs);
    if (request.action == Action::ForceIp)
        request.forced = {AddressFrom(raw.address), AddressFrom(raw.mask), AddressFrom(raw.gateway)};
    return request;
}

/// The option of that name of any command; null when none has it.
const CLI::Option* FindOption(const CLI::App& app, const std::string& name)
{
    for (const CLI::App* const command : app.get_subcommands({}))
        if (const CLI::Option* const option = command->get_option_no_throw(name); option != nullptr)
            return option;
    return nullptr;
}

/// Brings the command before options of commands that were typed before it: there the parser looks for it.
/// Where there is no command, nothing is left, and of an unknown one nothing but its name.
std::vector<std::string> WithCommandFirst(const CLI::App& app, std::vector<std::string> arguments)
{
    std::size_t place = 0;
    while (place < arguments.size() && arguments[place].starts_with("--")) {
        const std::size_t sign = arguments[place].find('=');
        const CLI::Option* const option = FindOption(app, arguments[place].substr(0, sign));
        if (option == nullptr)
            return arguments; // the program's own, or unknown: the parser knows what to say
        const bool isValueNext = option->get_items_expected_min() > 0 && sign == std::string::npos;
        place += isValueNext ? 2 : 1;
    }
    if (place == 0)
        return arguments;
    if (place >= arguments.size())
        return arguments.front() == "--help" ? arguments : std::vector<std::string>();
    const auto command = arguments.begin() + static_cast<std::ptrdiff_t>(place);
    const auto isCommand = [&](const CLI::App* each) { return each->check_name(*command); };
    if (std::ranges::none_of(app.get_subcommands({}), isCommand))
        return {*command};
    std::rotate(arguments.begin(), command, command + 1);
    return arguments;
}

CommandLineResult Wrong(const std::string& sentence, const std::string& command)
{
    return {std::nullopt,
            "error: " + sentence + ": see vxctl " + command + (command.empty() ? "" : " ") + "--help\n",
            static_cast<int>(ExitCode::Usage)};
}

} // namespace

CommandLineResult ReadCommandLine(std::vector<std::string> arguments)
{
    CLI::App app(kDescription, "vxctl");
    Raw raw;
    app.set_version_flag("--version", "vxctl " VXCTL_VERSION, "Print the version");
    app.require_subcommand(0, 1);
    AddListing(app, raw);
    AddForceIp(app, raw);
    AddReading(app, raw);
    AddWriting(app, raw);
    AddFiles(app, raw);
    app.footer(kFooter);

    arguments = WithCommandFirst(app, std::move(arguments));
    const std::string typed = arguments.empty() ? std::string() : arguments.front();
    const auto command = [&] {
        return app.get_subcommands().empty() ? std::string() : app.get_subcommands()[0]->get_name();
    };
    std::reverse(arguments.begin(), arguments.end()); // the way the parser takes them
    try {
        app.parse(arguments);
        if (app.get_subcommands().empty())
            return Wrong("a command is missing, for instance 'vxctl list'", "");
        return {Understand(raw), {}, 0};
    } catch (const CLI::CallForHelp&) {
        return {std::nullopt, app.help(), 0}; // that of the command, where one was typed
    } catch (const CLI::CallForVersion& version) {
        return {std::nullopt, version.what() + std::string("\n"), 0};
    } catch (const CLI::ParseError& error) {
        const bool isCommandUnknown = command().empty() && !typed.empty() && !typed.starts_with('-');
        return Wrong(isCommandUnknown ? "'" + typed + "' is no command" : error.what(), command());
    } catch (const WrongUse& wrong) {
        return Wrong(wrong.what(), command());
    }
}

} // namespace vxctl
