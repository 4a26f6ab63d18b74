#pragma once

#include <cstdint>

/// Addresses of the registers that only this camera has, and limits of their values. All chosen;
/// description/camera.xml has them, too. 32 bits and big endian, unless said otherwise.
namespace simulator {

constexpr std::uint32_t kAcquisitionMode = 0xA000;
constexpr std::uint32_t kAcquisitionStart = 0xA004;
constexpr std::uint32_t kAcquisitionStop = 0xA008;
constexpr std::uint32_t kAcquisitionFrameCount = 0xA00C;
constexpr std::uint32_t kAcquisitionFrameRate = 0xA010; // double, Hz
constexpr std::uint32_t kExposureTime = 0xA018;         // double, microseconds
constexpr std::uint32_t kTriggerSelector = 0xA020;
constexpr std::uint32_t kTriggerMode = 0xA024;
constexpr std::uint32_t kTriggerSource = 0xA028;
constexpr std::uint32_t kTriggerSoftware = 0xA02C;
constexpr std::uint32_t kExposureAuto = 0xA030;

constexpr std::uint32_t kGainRaw = 0xA040;       // 1/100 dB
constexpr std::uint32_t kBlackLevelRaw = 0xA044; // quarters
constexpr std::uint32_t kGamma = 0xA048;         // float

constexpr std::uint32_t kSensorWidth = 0xA100;
constexpr std::uint32_t kSensorHeight = 0xA104;
constexpr std::uint32_t kWidth = 0xA108;
constexpr std::uint32_t kHeight = 0xA10C;
constexpr std::uint32_t kOffsetX = 0xA110;
constexpr std::uint32_t kOffsetY = 0xA114;
constexpr std::uint32_t kPixelFormat = 0xA118; // PFNC code
constexpr std::uint32_t kTestPattern = 0xA11C;
constexpr std::uint32_t kPayloadSize = 0xA120;

constexpr std::uint32_t kSourceCount = 0xA200;
constexpr std::uint32_t kSourceSelector = 0xA204;
constexpr std::uint32_t kSourceStreamChannel = 0xA208;

constexpr std::uint32_t kLineSelector = 0xA300;
constexpr std::uint32_t kLineMode = 0xA304;     // one register per line
constexpr std::uint32_t kLineInverter = 0xA30C; // one register per line
constexpr std::uint32_t kLineStatusAll = 0xA314;
constexpr std::uint32_t kLines = 2;

constexpr std::uint32_t kDeviceTemperature = 0xA400; // float, degrees Celsius
constexpr std::uint32_t kDeviceStatus = 0xA404;      // bit 0 busy, bits 31 to 16 refused commands
constexpr std::uint32_t kLutEnable = 0xA480;
constexpr std::uint32_t kLut = 0xA500;
constexpr std::uint32_t kLutBytes = 256;
constexpr std::uint32_t kUserSetSelector = 0xA600;
constexpr std::uint32_t kUserSetLoad = 0xA604;
constexpr std::uint32_t kPacketSizeMax = 0xA700; // bytes

constexpr std::uint32_t kChunkModeActive = 0xA800;
constexpr std::uint32_t kChunkSelector = 0xA804;
constexpr std::uint32_t kChunkEnable = 0xA808; // one register per chunk: picture, frame id, timestamp
constexpr std::uint32_t kChunks = 3;

constexpr std::uint32_t kDescription = 0x00010000;

// Values of AcquisitionMode.
constexpr std::uint32_t kModeContinuous = 0;
constexpr std::uint32_t kModeSingleFrame = 1;
constexpr std::uint32_t kModeMultiFrame = 2;

// Limits.
constexpr std::uint32_t kWidthMin = 128;
constexpr std::uint32_t kWidthStep = 4;
constexpr std::uint32_t kHeightMin = 64;
constexpr std::uint32_t kHeightStep = 2;
constexpr std::uint32_t kSensorWidthDefault = 4096;
constexpr std::uint32_t kSensorHeightDefault = 3072;
constexpr std::uint32_t kSensorMax = 16384; // pixels to one side
constexpr double kFrameRateMin = 0.1;
constexpr double kFrameRateMax = 1000.0;
constexpr double kExposureMin = 10.0;      // microseconds
constexpr double kExposureMax = 1000000.0; // microseconds
constexpr std::uint32_t kPacketSizeMin = 220;
constexpr std::uint32_t kPacketSizeStep = 4;
constexpr std::uint32_t kPacketSizeLargest = 65532;         // fixed by IPv4: 65535, in whole steps
constexpr std::uint32_t kPacketDelayMaxTicks = 100'000'000; // 0.1 s
constexpr std::uint32_t kHeartbeatMinMs = 500;

} // namespace simulator
