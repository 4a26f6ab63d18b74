#pragma once

#include <cstdint>
#include <string_view>

/// Result codes of the camera library and of everything built on VxBase.
///
/// Numbers are stable: they are shown to users. Only two are fixed by the outside: Ok is 0, and a result that
/// was never assigned is 1541 (0x0605); the others were chosen around it.
enum class VxError : std::uint32_t {
    Ok = 0,
    Failed = 0x0601,               ///< no better code; the description tells
    InvalidParameter = 0x0602,     ///< the caller's argument is wrong
    NotFound = 0x0603,             ///< no such camera, feature, entry, file
    NotConnected = 0x0604,         ///< the operation needs a connection that is not there
    NotInitialized = 0x0605,       ///< a result that was never assigned
    Timeout = 0x0606,              ///< nothing arrived in the time given
    AccessDenied = 0x0607,         ///< another application controls the camera, or the camera refuses
    Truncated = 0x0608,            ///< bytes end before the value does
    BufferTooSmall = 0x0609,       ///< the destination cannot hold the data
    MissingPackets = 0x060A,       ///< an image arrived incomplete
    InvalidData = 0x060B,          ///< bytes or text that break their format
    NetworkError = 0x060C,         ///< the system refused a network operation
    NotSupported = 0x060D,         ///< the camera or this library does not offer it
    NotAvailable = 0x060E,         ///< the feature exists but is not available now
    NotReadable = 0x060F,          ///< the feature cannot be read now
    NotWritable = 0x0610,          ///< the feature cannot be written now
    OutOfRange = 0x0611,           ///< the value is outside the feature's limits
    TypeMismatch = 0x0612,         ///< the feature is of another type
    AlreadyOpen = 0x0613,          ///< opened before and not closed
    NotOpen = 0x0614,              ///< the stream is not open
    PortInUse = 0x0615,            ///< another program holds the UDP port
    LinkLost = 0x0616,             ///< the camera stopped answering
    Busy = 0x0617,                 ///< the camera is busy; the same call may work later
    Aborted = 0x0618,              ///< ended because somebody stopped it
    Ambiguous = 0x0619,            ///< the identifier fits more than one camera
    NotStarted = 0x061A,           ///< the pipeline is not started
    NotAnImage = 0x061B,           ///< the block carries no image
    OutOfMemory = 0x061C,          ///< the system has no memory left
    InvalidConfiguration = 0x061D, ///< the camera's network set-up does not allow a connection
    CameraError = 0x061E,          ///< the camera answered with an error status; the description names it
};

/// @return  the code's name in capitals ("OK", "MISSING_PACKETS"); "UNKNOWN" for a number that is no code
[[nodiscard]] std::string_view VxErrorName(VxError code);
