#include "vxgrab/CommandLine.h"

#include "VxBase/VxString.h"

#include "vxgrab/ExitCode.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <sstream>

namespace vxgrab {
namespace {

// Chosen: longer than any camera needs for its first picture, short enough to wait for.
constexpr double kDefaultPatienceSeconds = 10;
// Chosen: enough for a frame rate, when neither frames nor seconds are asked for.
constexpr double kDefaultSeconds = 5;
// Chosen: a day, and its frames at 10 000 a second; larger numbers are typing errors.
constexpr double kLargestSeconds = 86400;
constexpr std::uint64_t kLargestCount = 864000000;

constexpr const char* kDescription =
    "Shows, sets up and grabs from video capture devices through DirectShow: pictures (PNG), a film (AVI),\n"
    "frame statistics. Made for the camera filter \"Vexa DirectShow Source\"; grabs from any other device, "
    "too.";

constexpr const char* kFooter = "Examples:\n"
                                "  vxgrab --list\n"
                                "  vxgrab --device-id 192.168.0.10 --png picture.png\n"
                                "  vxgrab --device-id 192.168.0.10 --seconds 10 --avi film.avi --summary\n"
                                "  vxgrab --device-id 192.168.0.10 --set ExposureTime=5000 --get Gain\n"
                                "  vxgrab --device-id 192.168.0.10 --properties\n"
                                "  vxgrab --dll VxDSSource.dll --device-id 192.168.0.10 --features\n"
                                "Exit codes: 0 done; 1 no picture arrived; 2 the command line is wrong; 3 "
                                "the system or the camera refused.";

/// The command line as it is typed, before it is checked and brought into Options.
struct RawArguments {
    std::string moduleFile, pngFile, aviFile;
    std::string outputSize;
    std::vector<std::string> assignments;
    double seconds = 0;
    double patienceSeconds = kDefaultPatienceSeconds;
    bool isDiagnosticsWanted = false;
};

std::chrono::milliseconds Milliseconds(double seconds)
{
    return std::chrono::milliseconds(std::llround(seconds * 1000));
}

std::filesystem::path PathFrom(const std::string& utf8)
{
    return std::filesystem::path(VxWideFromUtf8(utf8));
}

using Codes = std::map<std::string, std::uint32_t>;

/// Accepts a name or its code, and turns the name into the code.
CLI::Validator OneOf(const Codes& codes)
{
    return CLI::Validator(
        [&codes](std::string& text) {
            std::string names;
            for (const auto& [name, code] : codes) {
                const std::string number = std::to_string(code);
                if (CLI::detail::to_lower(text) == name || text == number) {
                    text = number;
                    return std::string();
                }
                names += (names.empty() ? "" : ", ") + name + " (" + number + ")";
            }
            return "'" + text + "' is none of " + names;
        },
        "");
}

void AddDeviceOptions(CLI::App& app, Options& options, RawArguments& raw)
{
    constexpr const char* kGroup = "Device";
    app.add_flag("-l,--list", options.isListWanted, "List the capture devices; our filter is marked with *")
        ->group(kGroup);
    app.add_option(
           "-d,--device", options.device,
           "Device to use: its number in --list, its name, or a part of its name (default: our filter)")
        ->group(kGroup);
    app.add_option("--dll", raw.moduleFile, "Use this VxDSSource.dll, which need not be registered")
        ->type_name("FILE")
        ->excludes("--device")
        ->group(kGroup);
}

template <typename T>
CLI::Option* AddSetting(CLI::App& app, const char* name, std::optional<T>& value, const char* description)
{
    return app.add_option(name, value, description)->group("Settings of our filter");
}

void AddSettingOptions(CLI::App& app, FilterSettings& settings, RawArguments& raw)
{
    static const Codes roles{{"controller", 0}, {"unicast", 1}, {"multicast", 2}};
    static const Codes pixelTypes{{"rgb", 0}, {"yuv", 1}};
    constexpr std::uint32_t kLargestPort = 65535;

    AddSetting(app, "-i,--device-id", settings.deviceId,
               "Camera: MAC address, IP address, serial number or name");
    AddSetting(app, "--role", settings.role, "controller (0), unicast (1) or multicast (2)")
        ->transform(OneOf(roles))
        ->type_name("ROLE");
    AddSetting(app, "--unicast-port", settings.unicastPort, "UDP port to listen on in role unicast")
        ->check(CLI::Range(0U, kLargestPort).description(""))
        ->type_name("PORT");
    AddSetting(app, "--multicast-ip", settings.multicastAddress, "Group to join in role multicast")
        ->check(CLI::Validator(CLI::ValidIPV4).description(""))
        ->type_name("ADDRESS");
    AddSetting(app, "--multicast-port", settings.multicastPort, "UDP port of the group")
        ->check(CLI::Range(0U, kLargestPort).description(""))
        ->type_name("PORT");
    AddSetting(app, "--source", settings.source, "Entry of the camera's SourceSelector")->type_name("ENTRY");
    AddSetting(app, "--channel", settings.channel, "Stream channel, from 0")->type_name("N");
    AddSetting(app, "--buffer-count", settings.bufferCount, "Number of buffers for frames that arrive")
        ->type_name("N");
    AddSetting(app, "--buffer-size", settings.bufferBytes, "Bytes of a buffer where the camera does not say")
        ->type_name("BYTES");
    AddSetting(app, "--drop-threshold", settings.dropThreshold,
               "Skip frames while more than this number wait; 0 never skips")
        ->type_name("N");
    AddSetting(app, "--pixel-type", settings.pixelType, "What the filter delivers: rgb (0) or yuv (1)")
        ->transform(OneOf(pixelTypes))
        ->type_name("TYPE");
    AddSetting(app, "--kernel", settings.kernelSize, "Median filter: 0 (off), 3 or 5")
        ->check(CLI::IsMember({0, 3, 5}).description(""))
        ->type_name("SIZE");
    AddSetting(app, "--zoom", settings.zoom, "Digital zoom: 0 (whole picture) to 9 (central tenth)")
        ->check(CLI::Range(0, 9).description(""))
        ->type_name("STEP");
    app.add_option("--output-size", raw.outputSize, "Size of the delivered picture, in pixels")
        ->type_name("WIDTHxHEIGHT")
        ->group("Settings of our filter");
    app.add_flag("--diagnostics,!--no-diagnostics", raw.isDiagnosticsWanted,
                 "Draw the status summary into the frames")
        ->group("Settings of our filter");
}

void AddFeatureOptions(CLI::App& app, Options& options, RawArguments& raw)
{
    static const Codes arrays{{"link", 0}, {"camera", 1}, {"stream", 2}};
    constexpr const char* kGroup = "Features and saved default";
    app.add_option("--set", raw.assignments, "Set a feature; may be repeated")
        ->type_name("FEATURE=VALUE")
        ->allow_extra_args(false)
        ->group(kGroup);
    app.add_option("--get", options.features.queries, "Show the value of a feature; may be repeated")
        ->type_name("FEATURE")
        ->allow_extra_args(false)
        ->group(kGroup);
    app.add_flag("--features", options.features.isTreeWanted, "Show all features with their values")
        ->group(kGroup);
    app.add_option("--of", options.features.array, "Whose features: camera (default), link or stream")
        ->transform(OneOf(arrays))
        ->type_name("WHAT")
        ->group(kGroup);
    app.add_flag("--properties", options.arePagesWanted,
                 "Show the device's property pages and wait until they are closed")
        ->group(kGroup);
    app.add_flag("--save-default", options.isSaveDefaultWanted, "Save the settings as this user's default")
        ->group(kGroup);
    app.add_flag("--clear-default", options.isClearDefaultWanted, "Delete this user's default")
        ->group(kGroup);
}

void AddGrabOptions(CLI::App& app, Options& options, RawArguments& raw)
{
    constexpr const char* kGroup = "Grabbing";
    app.add_option("-s,--subtype", options.subtype,
                   "Format of the frames: rgb24, rgb32, argb32 or yuy2 (default: the first that fits)")
        ->check(CLI::IsMember({"rgb24", "rgb32", "argb32", "yuy2"}).description(""))
        ->type_name("FORMAT")
        ->group(kGroup);
    app.add_option("-n,--frames", options.frames, "End after this number of pictures")
        ->check(CLI::Range(std::uint64_t{1}, kLargestCount).description(""))
        ->type_name("N")
        ->group(kGroup);
    app.add_option("-t,--seconds", raw.seconds,
                   "End after this time (default 5, if no number of pictures is given)")
        ->check(CLI::Range(0.1, kLargestSeconds).description(""))
        ->type_name("SECONDS")
        ->group(kGroup);
    app.add_option("--timeout", raw.patienceSeconds,
                   "Give up after this time without a picture, in seconds (default 10)")
        ->check(CLI::Range(0.1, kLargestSeconds).description(""))
        ->type_name("SECONDS")
        ->group(kGroup);
    app.add_option("-p,--png", raw.pngFile, "Write the first picture to this file")
        ->type_name("FILE")
        ->group(kGroup);
    app.add_option("--png-every", options.pngEvery, "Write every Nth picture, to FILE-000001.png and so on")
        ->check(CLI::Range(std::uint64_t{1}, kLargestCount).description(""))
        ->type_name("N")
        ->needs("--png")
        ->group(kGroup);
    app.add_option("-a,--avi", raw.aviFile, "Write the frames to this film")
        ->type_name("FILE")
        ->group(kGroup);
    app.add_flag("--summary", options.isSummaryWanted,
                 "Print a summary at the end, one \"name: value\" a line")
        ->group(kGroup);
    app.add_flag("-q,--quiet", options.isQuiet, "No progress on the standard error stream")->group(kGroup);
}

void TakeOutputSize(const std::string& text, FilterSettings& settings)
{
    if (text.empty())
        return;
    int widthPx = 0;
    int heightPx = 0;
    int length = 0;
    const int fields = std::sscanf(text.c_str(), "%6dx%6d%n", &widthPx, &heightPx, &length);
    if (fields != 2 || static_cast<std::size_t>(length) != text.size() || widthPx < 1 || heightPx < 1)
        throw CLI::ValidationError("--output-size", "'" + text + "' is no size: write for instance 640x480");
    settings.outputWidthPx = widthPx;
    settings.outputHeightPx = heightPx;
}

void TakeAssignments(const std::vector<std::string>& texts, FeatureRequests& features)
{
    for (const std::string& text : texts) {
        const std::size_t sign = text.find('=');
        if (sign == 0 || sign == std::string::npos)
            throw CLI::ValidationError("--set", "'" + text + "' is no assignment: write for instance Gain=4");
        features.assignments.push_back({text.substr(0, sign), text.substr(sign + 1)});
    }
}

/// Grabbing is what remains to be done when nothing else is asked for.
bool IsGrabMeant(const CLI::App& app, const Options& options)
{
    constexpr std::array kGrabOptions{"--frames", "--seconds", "--png", "--avi", "--summary", "--subtype"};
    const bool isGrabNamed = std::any_of(kGrabOptions.begin(), kGrabOptions.end(),
                                         [&](const char* name) { return app.count(name) > 0; });
    return isGrabNamed || (!options.isListWanted && options.features.IsEmpty() && !options.arePagesWanted &&
                           !options.isSaveDefaultWanted && !options.isClearDefaultWanted);
}

void Finish(const CLI::App& app, const RawArguments& raw, Options& options)
{
    options.moduleFile = PathFrom(raw.moduleFile);
    options.pngFile = PathFrom(raw.pngFile);
    options.aviFile = PathFrom(raw.aviFile);
    options.patience = Milliseconds(raw.patienceSeconds);
    if (app.count("--diagnostics") > 0)
        options.settings.diagnostics = raw.isDiagnosticsWanted;
    TakeOutputSize(raw.outputSize, options.settings);
    TakeAssignments(raw.assignments, options.features);
    options.isGrabWanted = IsGrabMeant(app, options);
    if (options.pngFile.empty() && options.aviFile.empty())
        options.isSummaryWanted = true; // nothing else would come of a grab
    if (app.count("--seconds") > 0)
        options.duration = Milliseconds(raw.seconds);
    else if (options.frames == 0 && !raw.pngFile.empty() && options.pngEvery == 0 && raw.aviFile.empty())
        options.frames = 1; // one picture is one file
    else if (options.frames == 0)
        options.duration = Milliseconds(kDefaultSeconds);
}

} // namespace

CommandLineResult ReadCommandLine(const std::vector<std::string>& arguments)
{
    Options options;
    RawArguments raw;
    CLI::App app{kDescription, "vxgrab"};
    app.footer(kFooter);
    app.set_version_flag("--version", "vxgrab " VXGRAB_VERSION);
    app.get_formatter()->column_width(30);
    try {
        AddDeviceOptions(app, options, raw);
        AddSettingOptions(app, options.settings, raw);
        AddFeatureOptions(app, options, raw);
        AddGrabOptions(app, options, raw);
        // This parser takes its arguments from the back.
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        app.parse(reversed);
        Finish(app, raw, options);
    } catch (const CLI::ParseError& error) {
        std::ostringstream text;
        const bool isAnswer = app.exit(error, text, text) == 0; // help or version
        return {std::nullopt, text.str(), static_cast<int>(isAnswer ? ExitCode::Ok : ExitCode::Usage)};
    }
    return {options, {}, 0};
}

} // namespace vxgrab
