#include "VxSimulator/CheckOptions.h"

#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include "VxSimulator/device/SimulatedRegisters.h"
#include "VxSimulator/picture/PictureFormat.h"

#include <array>
#include <string>
#include <string_view>

namespace simulator {

namespace {

VxResult Wrong(const std::string& sentence)
{
    return VxResult(VxError::InvalidParameter, sentence);
}

struct Size {
    std::string_view name;
    std::uint32_t value;
    std::uint32_t min;
    std::uint32_t step;
};

struct Text {
    std::string_view name;
    std::string_view value;
    std::size_t most;
};

struct Share {
    std::string_view name;
    double value;
};

VxResult CheckSize(const Size& size)
{
    if (size.value >= size.min && size.value <= kSensorMax && size.value % size.step == 0)
        return VxResult::Ok();
    return Wrong("the " + std::string(size.name) + " is " + std::to_string(size.value) +
                 ", but must be from " + std::to_string(size.min) + " to " + std::to_string(kSensorMax) +
                 " and a multiple of " + std::to_string(size.step));
}

VxResult CheckText(const Text& text)
{
    if (text.value.size() <= text.most)
        return VxResult::Ok();
    return Wrong("the " + std::string(text.name) + " has " + std::to_string(text.value.size()) +
                 " bytes, but only " + std::to_string(text.most) + " fit into its register");
}

VxResult CheckShare(const Share& share)
{
    if (share.value >= 0 && share.value <= 1)
        return VxResult::Ok();
    return Wrong("the share of " + std::string(share.name) + " packets must be from 0 to 1");
}

template <typename Items, typename Check>
VxResult CheckAll(const Items& items, Check check)
{
    for (const auto& item : items) {
        if (auto result = check(item); !result.IsOK())
            return result;
    }
    return VxResult::Ok();
}

VxResult CheckPicture(const VxSimulatorOptions& options)
{
    const std::array sizes{Size{"width", options.widthPx, kWidthMin, kWidthStep},
                           Size{"height", options.heightPx, kHeightMin, kHeightStep}};
    if (auto result = CheckAll(sizes, CheckSize); !result.IsOK())
        return result;
    if (FindPictureFormat(options.pixelFormat) == nullptr)
        return Wrong("the simulated camera does not have this pixel format");
    if (!(options.frameRateHz >= kFrameRateMin && options.frameRateHz <= kFrameRateMax))
        return Wrong("the frame rate must be from 0.1 to 1000 frames per second");
    return VxResult::Ok();
}

VxResult CheckControlFaults(const VxSimulatorFaults& faults)
{
    for (const double share : {faults.dropCommandShare, faults.dropAnswerShare})
        if (!(share >= 0 && share <= 1))
            return Wrong("the share of lost commands and answers must be from 0 to 1");
    constexpr std::chrono::milliseconds kLongest(UINT16_MAX); // what a PENDING_ACK can tell
    for (const auto time : {faults.answerDelay, faults.pendingTime})
        if (time.count() < 0 || time > kLongest)
            return Wrong("an answer cannot come later than 65535 ms");
    return VxResult::Ok();
}

} // namespace

VxResult CheckOptions(const VxSimulatorOptions& options)
{
    if (options.address.IsUnspecified() || options.address.IsMulticast() ||
        options.address == transport::Ipv4Address::LimitedBroadcast())
        return Wrong("a camera has one address: " + options.address.ToString() +
                     " is none, give one of this machine's own");
    if (auto result = CheckPicture(options); !result.IsOK())
        return result;
    if (options.linkSpeedMbps == 0)
        return Wrong("the link speed must be at least 1 Mbit/s");
    const std::array texts{
        Text{"manufacturer name", options.manufacturerName, bootstrap::kManufacturerNameBytes},
        Text{"model name", options.modelName, bootstrap::kModelNameBytes},
        Text{"serial number", options.serialNumber, bootstrap::kSerialNumberBytes},
        Text{"user defined name", options.userDefinedName, bootstrap::kUserDefinedNameBytes}};
    if (auto result = CheckAll(texts, CheckText); !result.IsOK())
        return result;
    const std::array shares{
        Share{"dropped", options.faults.dropShare}, Share{"duplicated", options.faults.duplicateShare},
        Share{"reordered", options.faults.reorderShare}, Share{"delayed", options.faults.delayShare}};
    if (auto result = CheckAll(shares, CheckShare); !result.IsOK())
        return result;
    return CheckControlFaults(options.faults);
}

} // namespace simulator
