#include "vxsim/CommandLine.h"

#include "VxSimulator/picture/PictureFormat.h"

#include <CLI/CLI.hpp>

#include <array>
#include <charconv>
#include <chrono>
#include <string_view>

namespace vxsim {

namespace {

using Mac = std::array<std::uint8_t, 6>;

// Chosen: the largest descriptions known have 5 MB.
constexpr std::size_t kLargestDescription = 16 * 1024 * 1024;

/// @param text  "00:11:22:33:44:55", with ':' or '-'
std::optional<Mac> ParseMac(std::string_view text)
{
    constexpr std::size_t kStep = 3; // two digits and a separator
    Mac mac{};
    if (text.size() != mac.size() * kStep - 1)
        return std::nullopt;
    for (std::size_t i = 0; i < mac.size(); ++i) {
        const char* first = text.data() + i * kStep;
        constexpr int kHexadecimal = 16;
        const auto [end, error] = std::from_chars(first, first + 2, mac[i], kHexadecimal);
        const bool isSeparated = i + 1 == mac.size() || first[2] == ':' || first[2] == '-';
        if (error != std::errc() || end != first + 2 || !isSeparated)
            return std::nullopt;
    }
    return mac;
}

/// @param text  hexadecimal, with or without "0x"
std::optional<std::uint32_t> ParseAddress(std::string_view text)
{
    if (text.starts_with("0x") || text.starts_with("0X"))
        text.remove_prefix(2);
    std::uint32_t address = 0;
    constexpr int kHexadecimal = 16;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), address, kHexadecimal);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(address) : std::nullopt;
}

std::string FormatNames()
{
    std::string names;
    for (const auto& format : simulator::PictureFormats())
        names += (names.empty() ? "" : ", ") + std::string(format.name);
    return names;
}

/// What has no type of its own on the command line.
struct Texts {
    std::string address = "127.0.0.1";
    std::string format = "Mono8";
    std::string mac;
    std::string refusedAddress;
    std::uint16_t answerDelayMs = 0;
    std::uint16_t pendingMs = 0;
};

void AddCameraOptions(CLI::App& app, Texts& texts, VxSimulatorOptions& camera)
{
    app.add_option("--address", texts.address, "Address of this machine at which the camera is")
        ->type_name("ADDRESS")
        ->capture_default_str();
    app.add_option("--port", camera.controlPort,
                   "UDP port for commands; 0 takes any free one. Applications look for cameras at 3956 only")
        ->type_name("PORT")
        ->capture_default_str();
    app.add_option("--width", camera.widthPx, "Columns of the picture, a multiple of 4 from 128 to 16384")
        ->type_name("PIXELS")
        ->capture_default_str();
    app.add_option("--height", camera.heightPx, "Rows of the picture, a multiple of 2 from 64 to 16384")
        ->type_name("PIXELS")
        ->capture_default_str();
    app.add_option("--format", texts.format, "Format of the pixels: " + FormatNames())
        ->type_name("NAME")
        ->capture_default_str();
    app.add_option("--fps", camera.frameRateHz, "Frames per second, from 0.1 to 1000")
        ->type_name("RATE")
        ->capture_default_str();
    app.add_option("--link-speed", camera.linkSpeedMbps,
                   "Packets are not sent faster than on a link of this speed in Mbit/s")
        ->type_name("MBITS")
        ->capture_default_str();
    app.add_flag(
        "--send-runs", camera.isSendingRuns,
        "Give the system packets that are due together in one call: a receiver may get them as from a "
        "network card that collects");
    app.add_option("--frames", camera.frameLimit, "Send no more than this many frames, then stay silent")
        ->type_name("NUMBER");
}

void AddIdentityOptions(CLI::App& app, Texts& texts, VxSimulatorOptions& camera)
{
    app.add_option("--mac", texts.mac, "MAC address; without it one is made from the address")
        ->type_name("00:11:22:33:44:55");
    app.add_option("--serial", camera.serialNumber,
                   "Serial number, up to 16 characters; without it one is made from the MAC address")
        ->type_name("TEXT");
    app.add_option("--name", camera.userDefinedName, "Name given by the user, up to 16 characters")
        ->type_name("TEXT");
    app.add_option("--model", camera.modelName, "Name of the model, up to 32 characters")
        ->type_name("TEXT")
        ->capture_default_str();
    app.add_flag(
        "--no-source-selector", [&camera](std::int64_t) { camera.hasSources = false; },
        "Leave the feature SourceSelector out, as many cameras do");
    app.add_flag(
        "--no-test-packets", [&camera](std::int64_t) { camera.hasTestPackets = false; },
        "Send no packets with which an application finds the packet size, as many cameras do");
    app.add_option("--description-size", camera.descriptionBytes,
                   "Fill the feature description up to this many bytes")
        ->type_name("BYTES")
        ->check(CLI::Range(std::size_t{0}, kLargestDescription));
}

void AddControlFaultOptions(CLI::App& app, VxSimulatorFaults& faults, Texts& texts)
{
    constexpr const char* kGroup = "Faults of commands other than discovery";
    const auto add = [&](const char* name, auto& value, const char* type, const char* what) {
        app.add_option(name, value, what)->type_name(type)->group(kGroup);
    };
    add("--drop-commands", faults.dropCommandShare, "SHARE", "Share of commands that get lost, from 0 to 1");
    add("--drop-answers", faults.dropAnswerShare, "SHARE",
        "Share of commands that are done, but not answered");
    add("--answer-delay", texts.answerDelayMs, "MS", "Answer so much later");
    add("--pending", texts.pendingMs, "MS", "Need so long for each write, and announce it (PENDING_ACK)");
    add("--refuse", texts.refusedAddress, "ADDRESS",
        "Refuse to read and write the register at this address, for instance 0xA108");
    add("--answer-length", faults.answerLengthError, "BYTES",
        "Add this to the length that answers tell; may be negative");
    add("--description-length", faults.descriptionLengthError, "BYTES",
        "Add this to the length of the feature description that is told; may be negative");
}

void AddFaultOptions(CLI::App& app, VxSimulatorFaults& faults)
{
    constexpr const char* kGroup = "Faults";
    const auto share = [&](const char* name, double& value, const char* what) {
        app.add_option(name, value, what)->type_name("SHARE")->group(kGroup);
    };
    share("--drop", faults.dropShare, "Share of stream packets that get lost, from 0 to 1");
    share("--duplicate", faults.duplicateShare, "Share of stream packets that are sent twice");
    share("--reorder", faults.reorderShare, "Share of stream packets that change places with the next one");
    share("--delay", faults.delayShare, "Share of stream packets that come 20 packets later");
    app.add_option("--largest-packet", faults.largestPacketBytes,
                   "Lose every stream packet of more bytes than this, headers of IP and UDP included")
        ->type_name("BYTES")
        ->group(kGroup);
    app.add_option_function<unsigned>(
           "--resend-memory", [&faults](unsigned ms) { faults.resendMemory = std::chrono::milliseconds(ms); },
           "For how many milliseconds a packet can be sent again")
        ->type_name("MS")
        ->group(kGroup);
    app.add_option("--seed", faults.seed, "Chance is the same for the same number")
        ->type_name("NUMBER")
        ->group(kGroup)
        ->capture_default_str();
    app.add_option(
           "--vanish-after", faults.vanishAfterFrames,
           "After this many frames neither send nor answer anything more, as if the cable were pulled")
        ->type_name("FRAMES")
        ->group(kGroup);
    app.add_option(
           "--reboot-after", faults.rebootAfterFrames,
           "After this many frames start anew: silent for a second, then without settings and control")
        ->type_name("FRAMES")
        ->group(kGroup);
}

VxResult Wrong(const std::string& sentence)
{
    return VxResult(VxError::InvalidParameter, sentence);
}

VxResult Understand(const Texts& texts, VxSimulatorOptions& camera)
{
    const auto address = transport::Ipv4Address::Parse(texts.address);
    if (!address)
        return Wrong("'" + texts.address + "' is no IPv4 address: give four numbers, for instance 127.0.0.1");
    camera.address = *address;

    const auto* format = simulator::FindPictureFormat(texts.format);
    if (format == nullptr)
        return Wrong("'" + texts.format + "' is no format of this camera: it has " + FormatNames());
    camera.pixelFormat = format->code;

    camera.faults.answerDelay = std::chrono::milliseconds(texts.answerDelayMs);
    camera.faults.pendingTime = std::chrono::milliseconds(texts.pendingMs);
    if (!texts.refusedAddress.empty()) {
        camera.faults.refusedAddress = ParseAddress(texts.refusedAddress);
        if (!camera.faults.refusedAddress)
            return Wrong("'" + texts.refusedAddress +
                         "' is no register address: give hexadecimal digits like 0xA108");
    }

    if (texts.mac.empty())
        return VxResult::Ok();
    camera.mac = ParseMac(texts.mac);
    if (!camera.mac)
        return Wrong("'" + texts.mac +
                     "' is no MAC address: give six pairs of digits like 00:11:22:33:44:55");
    return VxResult::Ok();
}

} // namespace

VxExpected<CommandLine> ParseCommandLine(int argc, const char* const* argv)
{
    CLI::App app("Simulates a GigE Vision camera at an address of this machine.\n"
                 "Prints 'ready ADDRESS:PORT MAC' when applications can connect, and runs until Ctrl-C.",
                 "vxsim");
    CommandLine commandLine;
    Texts texts;
    AddCameraOptions(app, texts, commandLine.camera);
    AddIdentityOptions(app, texts, commandLine.camera);
    AddFaultOptions(app, commandLine.camera.faults);
    AddControlFaultOptions(app, commandLine.camera.faults, texts);
    app.add_flag(
        "--verbose", [&commandLine](std::int64_t) { commandLine.talk = Talk::Verbose; },
        "Tell on the error output who takes control and when frames are sent");
    app.footer("Example: vxsim --address 127.0.0.1 --width 1280 --height 960 --format BayerRG8 --fps 30");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        commandLine.helpText = app.help();
        return commandLine;
    } catch (const CLI::ParseError& error) {
        return Wrong(std::string(error.what()) + ": see vxsim --help");
    }
    if (auto understood = Understand(texts, commandLine.camera); !understood.IsOK())
        return understood;
    return commandLine;
}

} // namespace vxsim
