#include "vxctl/Commands.h"

#include "VxCamera/surface/ForceIpAddress.h"
#include "VxDSSource/camera/VxConfigurationReader.h"
#include "VxDSSource/camera/VxConfigurationWriter.h"
#include "VxDSSource/camera/VxGenCommand.h"
#include "VxDSSource/camera/VxSystem.h"

#include "console/Console.h"

#include "vxctl/Camera.h"
#include "vxctl/CameraTable.h"
#include "vxctl/FeatureReport.h"
#include "vxctl/Text.h"
#include "vxctl/TextFile.h"

#include <array>
#include <thread>
#include <utility>

namespace vxctl {
namespace {

using Outcome = std::optional<Failure>;
using Clock = std::chrono::steady_clock;

// Chosen: a command of a camera that ends at once is not waited for noticeably.
constexpr std::chrono::milliseconds kLookInterval{10};

// Under this name a saved file tells of which model it is.
constexpr const char* kModelFeature = "DeviceModelName";

std::string Reason(const VxResult& result)
{
    return Printable(result.GetDescription().Narrow());
}

Outcome List(const Request& request)
{
    VxSystem system;
    system.SetDetectionTimeout(static_cast<std::uint32_t>(request.patience.count()));
    if (const VxResult found = system.Find(); !found.IsOK())
        return Failure{ExitCode::Camera, "cannot look for cameras: " + Reason(found)};
    const std::vector<CameraRow> rows = RowsOf(system);
    if (request.form == Form::Json) {
        console::PrintOutput(CameraTableJson(rows));
        return std::nullopt;
    }
    if (rows.empty())
        return Failure{ExitCode::Camera,
                       "no camera answered: check that it has power and a link, and that the "
                       "firewall lets this program receive UDP packets"};
    console::PrintOutput(CameraTableText(rows));
    console::PrintError(CameraAdvice(rows));
    return std::nullopt;
}

ExitCode ExitCodeOfForcing(VxError code)
{
    switch (code) {
    case VxError::InvalidParameter:
        return ExitCode::Usage;
    case VxError::AccessDenied:
    case VxError::NotSupported:
    case VxError::CameraError:
        return ExitCode::Refused;
    default:
        return ExitCode::Camera;
    }
}

Outcome ForceIp(const Request& request)
{
    const std::string address = request.forced.address.ToString();
    const ForcedIpAddress wanted{VxString(request.camera), VxString(address),
                                 VxString(request.forced.mask.ToString()),
                                 VxString(request.forced.gateway.ToString())};
    const VxResult forced = ForceIpAddress(wanted, static_cast<std::uint32_t>(request.patience.count()));
    if (!forced.IsOK())
        return Failure{ExitCodeOfForcing(forced.Code()), "cannot give camera '" + request.camera +
                                                             "' the address " + address + ": " +
                                                             Reason(forced)};
    console::PrintOutput("camera '" + request.camera + "' has the address " + address + " now\n");
    return std::nullopt;
}

Outcome ShowFeatures(const Request& request, Camera& camera)
{
    std::vector<FeatureFacts> features;
    for (const std::string& name : request.names) {
        VxGenParameter* feature = nullptr;
        if (auto missing = camera.Find(name, feature))
            return missing;
        features.push_back(ReadFacts(camera.Features(), *feature));
    }
    for (std::size_t i = 0; request.names.empty() && i < camera.Features().GetCount(); ++i) {
        VxGenParameter& feature = *camera.Features().Get(i);
        VxGenVisibility visibility = VxGenVisibility::Beginner;
        if (feature.GetVisibility(visibility).IsOK() && visibility <= request.visibility)
            features.push_back(ReadFacts(camera.Features(), feature));
    }
    if (request.form == Form::Json)
        console::PrintOutput(FeaturesJson(features));
    else if (request.names.empty())
        console::PrintOutput(FeatureTree(features));
    else
        for (const FeatureFacts& feature : features)
            console::PrintOutput(FeatureDetails(feature));
    return std::nullopt;
}

/// @param[out] value  untouched on failure
Outcome ReadValue(Camera& camera, const std::string& name, std::string& value)
{
    VxGenParameter* feature = nullptr;
    if (auto missing = camera.Find(name, feature))
        return missing;
    VxString text;
    if (const VxResult read = feature->ToString(text); !read.IsOK())
        return camera.FailureOf(name, read);
    value = text.Narrow();
    return std::nullopt;
}

Outcome GetValues(const Request& request, Camera& camera)
{
    std::string json;
    for (const std::string& name : request.names) {
        std::string value;
        if (auto failed = ReadValue(camera, name, value))
            return failed;
        if (request.form == Form::Text)
            console::PrintOutput(name + "=" + Printable(value) + "\n");
        json += (json.empty() ? "" : ", ") + JsonText(name) + ": " + JsonText(value);
    }
    if (request.form == Form::Json)
        console::PrintOutput("{" + json + "}\n");
    return std::nullopt;
}

Outcome SetValue(Camera& camera, const Assignment& assignment)
{
    VxGenParameter* feature = nullptr;
    if (auto missing = camera.Find(assignment.name, feature))
        return missing;
    if (dynamic_cast<VxGenCommand*>(feature) != nullptr)
        return Failure{ExitCode::Refused,
                       assignment.name + " is a command and has no value: use 'vxctl execute'"};
    if (const VxResult written = feature->FromString(VxString(assignment.value)); !written.IsOK())
        return camera.FailureOf(assignment.name, written);
    if (!feature->IsReadable())
        return std::nullopt;
    std::string value;
    if (auto failed = ReadValue(camera, assignment.name, value))
        return failed;
    console::PrintOutput(assignment.name + "=" + Printable(value) + "\n");
    return std::nullopt;
}

Outcome SetValues(const Request& request, Camera& camera)
{
    for (const Assignment& assignment : request.assignments)
        if (auto failed = SetValue(camera, assignment))
            return failed;
    return std::nullopt;
}

Outcome ExecuteOne(Camera& camera, const std::string& name, std::chrono::milliseconds patience)
{
    VxGenParameter* feature = nullptr;
    if (auto missing = camera.Find(name, feature))
        return missing;
    auto* const command = dynamic_cast<VxGenCommand*>(feature);
    if (command == nullptr)
        return Failure{ExitCode::Refused, name + " is no command: use 'vxctl set'"};
    if (const VxResult started = command->Execute(); !started.IsOK())
        return camera.FailureOf(name, started);
    const auto deadline = Clock::now() + patience;
    for (;;) {
        bool isDone = false;
        if (const VxResult asked = command->IsDone(isDone); !asked.IsOK())
            return camera.FailureOf(name, asked);
        if (isDone)
            return std::nullopt;
        if (Clock::now() >= deadline)
            return Failure{ExitCode::Refused, name + ": it has not ended within " +
                                                  std::to_string(patience.count()) +
                                                  " ms and may still be running; --timeout waits longer"};
        std::this_thread::sleep_for(kLookInterval); // ended by the deadline
    }
}

Outcome Execute(const Request& request, Camera& camera)
{
    for (const std::string& name : request.names)
        if (auto failed = ExecuteOne(camera, name, request.patience))
            return failed;
    return std::nullopt;
}

Outcome Save(const Request& request, Camera& camera)
{
    VxConfigurationWriter writer;
    const VxResult stored = writer.Store(&camera.Device(), VxString());
    if (!camera.Device().IsConnected())
        return Failure{ExitCode::Camera, Reason(stored)};
    VxString model;
    if (const VxGenParameter* const feature = camera.Features().Get(VxString(kModelFeature));
        feature != nullptr)
        std::ignore = feature->ToString(model); // empty: the file then fits every model
    VxString text;
    VxResult written = writer.Store(model, VxString(kModelFeature));
    if (written.IsOK())
        written = writer.SaveToString(text);
    if (written.IsOK())
        written = WriteTextFile(request.file, text.Narrow() + "\n");
    if (!written.IsOK())
        return Failure{ExitCode::File, written.GetDescription().Narrow()};
    if (!stored.IsOK())
        return Failure{ExitCode::Refused, "the file was written, but " + Reason(stored)};
    return std::nullopt;
}

void WarnOfOtherModel(const VxConfigurationReader& reader, Camera& camera)
{
    VxString saved;
    VxString present;
    const VxGenParameter* const feature = camera.Features().Get(VxString(kModelFeature));
    if (feature == nullptr || !feature->ToString(present).IsOK() ||
        !reader.Restore(VxString(kModelFeature), saved).IsOK())
        return;
    if (!saved.IsEmpty() && !(saved == present))
        console::PrintError("warning: the file was saved from a camera of model '" +
                            Printable(saved.Narrow()) + "'; this one is '" + Printable(present.Narrow()) +
                            "'\n");
}

/// The file is looked at before the camera is: a wrong one must not disturb anybody who uses the camera.
Outcome Load(const Request& request)
{
    const auto text = ReadTextFile(request.file);
    if (!text)
        return Failure{ExitCode::File, text.Error().GetDescription().Narrow()};
    VxConfigurationReader reader;
    if (const VxResult loaded = reader.LoadFromString(VxString(*text)); !loaded.IsOK())
        return Failure{ExitCode::File, "cannot load '" + request.file + "': " + Reason(loaded)};
    if (reader.GetDeviceCount() == 0)
        return Failure{ExitCode::File,
                       "cannot load '" + request.file + "': it holds no camera's configuration"};

    Camera camera;
    if (auto failed = camera.Connect(request))
        return failed;
    WarnOfOtherModel(reader, camera);
    const VxResult restored = reader.Restore(0, &camera.Device());
    if (!restored.IsOK())
        return Failure{camera.Device().IsConnected() ? ExitCode::Refused : ExitCode::Camera,
                       Reason(restored)};
    return std::nullopt;
}

} // namespace

std::optional<Failure> Run(const Request& request)
{
    switch (request.action) {
    case Action::List:
        return List(request);
    case Action::ForceIp:
        return ForceIp(request);
    case Action::Load:
        return Load(request);
    default:
        break;
    }
    Camera camera;
    if (auto failed = camera.Connect(request))
        return failed;
    switch (request.action) {
    case Action::Features:
        return ShowFeatures(request, camera);
    case Action::Get:
        return GetValues(request, camera);
    case Action::Set:
        return SetValues(request, camera);
    case Action::Execute:
        return Execute(request, camera);
    default:
        return Save(request, camera);
    }
}

} // namespace vxctl
