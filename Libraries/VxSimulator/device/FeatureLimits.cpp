#include "VxSimulator/device/FeatureLimits.h"

#include "VxBase/VxByteOrder.h"

#include "VxSimulator/device/SimulatedRegisters.h"
#include "VxSimulator/picture/PictureFormat.h"
#include "VxSimulator/picture/TestScene.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>

namespace simulator {

using gvcp::Status;

namespace {

enum class Locking { Never, WhileActive };

struct IntegerLimit {
    std::uint32_t address;
    std::uint32_t min;
    std::uint32_t max;
    std::uint32_t step = 1;
    Locking locking = Locking::Never;
};

constexpr auto kLocked = Locking::WhileActive;
constexpr std::uint32_t kLastPattern = static_cast<std::uint32_t>(TestPattern::White);

// The largest sizes and offsets depend on each other and follow below.
constexpr std::array kIntegers{
    IntegerLimit{kAcquisitionMode, kModeContinuous, kModeMultiFrame, 1, kLocked},
    IntegerLimit{kAcquisitionFrameCount, 1, 65535, 1, kLocked},
    IntegerLimit{kTriggerSelector, 0, 0},
    IntegerLimit{kTriggerMode, 0, 1},
    IntegerLimit{kTriggerSource, 0, 0},
    IntegerLimit{kExposureAuto, 0, 1},
    IntegerLimit{kGainRaw, 0, 2400},
    IntegerLimit{kBlackLevelRaw, 0, 1020},
    IntegerLimit{kWidth, kWidthMin, kSensorMax, kWidthStep, kLocked},
    IntegerLimit{kHeight, kHeightMin, kSensorMax, kHeightStep, kLocked},
    IntegerLimit{kOffsetX, 0, kSensorMax, kWidthStep, kLocked},
    IntegerLimit{kOffsetY, 0, kSensorMax, kHeightStep, kLocked},
    IntegerLimit{kPixelFormat, 0, UINT32_MAX, 1, kLocked},
    IntegerLimit{kTestPattern, 0, kLastPattern},
    IntegerLimit{kSourceSelector, 0, 1},
    IntegerLimit{kLineSelector, 0, kLines - 1},
    IntegerLimit{kLineInverter, 0, 1},
    IntegerLimit{kLineInverter + 4, 0, 1},
    IntegerLimit{kLutEnable, 0, 1},
    IntegerLimit{kUserSetSelector, 0, 0},
    IntegerLimit{kUserSetLoad, 0, 1, 1, kLocked},
    IntegerLimit{kChunkModeActive, 0, 1, 1, kLocked},
    IntegerLimit{kChunkSelector, 0, kChunks - 1},
    IntegerLimit{kChunkEnable, 0, 1, 1, kLocked},
    IntegerLimit{kChunkEnable + 4, 0, 1, 1, kLocked},
    IntegerLimit{kChunkEnable + 8, 0, 1, 1, kLocked},
};

/// Part of the sensor: a size, or where it begins, and the register that is the other one.
struct Extent {
    std::uint32_t address;
    std::uint32_t other;
    std::uint32_t sensor;
};

constexpr std::array kExtents{
    Extent{kWidth, kOffsetX, kSensorWidth},
    Extent{kHeight, kOffsetY, kSensorHeight},
    Extent{kOffsetX, kWidth, kSensorWidth},
    Extent{kOffsetY, kHeight, kSensorHeight},
};

/// The memory as it would be after the write.
class Overlay {
public:
    Overlay(const DeviceMemory& memory, std::uint32_t address, std::span<const std::byte> bytes)
        : m_memory(memory), m_address(address), m_bytes(bytes)
    {
    }

    [[nodiscard]] bool Touches(std::uint32_t address, std::size_t size) const
    {
        return std::uint64_t{address} < std::uint64_t{m_address} + m_bytes.size() &&
               std::uint64_t{m_address} < std::uint64_t{address} + size;
    }

    [[nodiscard]] std::uint32_t Word(std::uint32_t address) const
    {
        if (!Touches(address, sizeof(std::uint32_t)))
            return m_memory.Load32(address);
        return VxLoadBe<std::uint32_t>(m_bytes.subspan(address - m_address).first<sizeof(std::uint32_t)>());
    }

    [[nodiscard]] double Double(std::uint32_t address) const
    {
        constexpr unsigned kWordBits = 32;
        return std::bit_cast<double>((std::uint64_t{Word(address)} << kWordBits) | Word(address + 4));
    }

private:
    const DeviceMemory& m_memory; // borrowed for one check
    std::uint32_t m_address;
    std::span<const std::byte> m_bytes;
};

Status CheckIntegers(const Overlay& after, AcquisitionState state)
{
    for (const IntegerLimit& limit : kIntegers) {
        if (!after.Touches(limit.address, sizeof(std::uint32_t)))
            continue;
        if (limit.locking == Locking::WhileActive && state == AcquisitionState::Active)
            return Status::AccessDenied;
        const std::uint32_t value = after.Word(limit.address);
        if (value < limit.min || value > limit.max || (value - limit.min) % limit.step != 0)
            return Status::InvalidParameter;
    }
    return Status::Success;
}

Status CheckExtents(const Overlay& after)
{
    for (const Extent& extent : kExtents) {
        if (!after.Touches(extent.address, sizeof(std::uint32_t)))
            continue;
        const std::uint64_t sum = std::uint64_t{after.Word(extent.address)} + after.Word(extent.other);
        if (sum > after.Word(extent.sensor))
            return Status::InvalidParameter;
    }
    return Status::Success;
}

bool IsBetween(double value, double min, double max)
{
    return value >= min && value <= max; // false for what is no number
}

Status CheckFloats(const Overlay& after)
{
    constexpr float kGammaMin = 0.25F;
    constexpr float kGammaMax = 4.0F;
    if (after.Touches(kAcquisitionFrameRate, sizeof(double)) &&
        !IsBetween(after.Double(kAcquisitionFrameRate), kFrameRateMin, kFrameRateMax))
        return Status::InvalidParameter;
    if (after.Touches(kExposureTime, sizeof(double)) &&
        !IsBetween(after.Double(kExposureTime), kExposureMin, kExposureMax))
        return Status::InvalidParameter;
    if (after.Touches(kGamma, sizeof(float)) &&
        !IsBetween(std::bit_cast<float>(after.Word(kGamma)), kGammaMin, kGammaMax))
        return Status::InvalidParameter;
    return Status::Success;
}

} // namespace

Status CheckFeatures(const DeviceMemory& memory, std::uint32_t address, std::span<const std::byte> bytes,
                     AcquisitionState state)
{
    const Overlay after(memory, address, bytes);
    if (const Status status = CheckIntegers(after, state); status != Status::Success)
        return status;
    if (after.Touches(kPixelFormat, sizeof(std::uint32_t)) &&
        FindPictureFormat(after.Word(kPixelFormat)) == nullptr)
        return Status::InvalidParameter;
    if (const Status status = CheckExtents(after); status != Status::Success)
        return status;
    return CheckFloats(after);
}

} // namespace simulator
