#include "VxBase/VxError.h"

#include <array>
#include <utility>

namespace {

constexpr std::array kNames{
    std::pair{VxError::Ok, std::string_view("OK")},
    std::pair{VxError::Failed, std::string_view("FAILED")},
    std::pair{VxError::InvalidParameter, std::string_view("INVALID_PARAMETER")},
    std::pair{VxError::NotFound, std::string_view("NOT_FOUND")},
    std::pair{VxError::NotConnected, std::string_view("NOT_CONNECTED")},
    std::pair{VxError::NotInitialized, std::string_view("NOT_INITIALIZED")},
    std::pair{VxError::Timeout, std::string_view("TIMEOUT")},
    std::pair{VxError::AccessDenied, std::string_view("ACCESS_DENIED")},
    std::pair{VxError::Truncated, std::string_view("TRUNCATED")},
    std::pair{VxError::BufferTooSmall, std::string_view("BUFFER_TOO_SMALL")},
    std::pair{VxError::MissingPackets, std::string_view("MISSING_PACKETS")},
    std::pair{VxError::InvalidData, std::string_view("INVALID_DATA")},
    std::pair{VxError::NetworkError, std::string_view("NETWORK_ERROR")},
    std::pair{VxError::NotSupported, std::string_view("NOT_SUPPORTED")},
    std::pair{VxError::NotAvailable, std::string_view("NOT_AVAILABLE")},
    std::pair{VxError::NotReadable, std::string_view("NOT_READABLE")},
    std::pair{VxError::NotWritable, std::string_view("NOT_WRITABLE")},
    std::pair{VxError::OutOfRange, std::string_view("OUT_OF_RANGE")},
    std::pair{VxError::TypeMismatch, std::string_view("TYPE_MISMATCH")},
    std::pair{VxError::AlreadyOpen, std::string_view("ALREADY_OPEN")},
    std::pair{VxError::NotOpen, std::string_view("NOT_OPEN")},
    std::pair{VxError::PortInUse, std::string_view("PORT_IN_USE")},
    std::pair{VxError::LinkLost, std::string_view("LINK_LOST")},
    std::pair{VxError::Busy, std::string_view("BUSY")},
    std::pair{VxError::Aborted, std::string_view("ABORTED")},
    std::pair{VxError::Ambiguous, std::string_view("AMBIGUOUS")},
    std::pair{VxError::NotStarted, std::string_view("NOT_STARTED")},
    std::pair{VxError::NotAnImage, std::string_view("NOT_AN_IMAGE")},
    std::pair{VxError::OutOfMemory, std::string_view("OUT_OF_MEMORY")},
    std::pair{VxError::InvalidConfiguration, std::string_view("INVALID_CONFIGURATION")},
    std::pair{VxError::CameraError, std::string_view("CAMERA_ERROR")},
};

} // namespace

std::string_view VxErrorName(VxError code)
{
    for (const auto& [value, name] : kNames)
        if (value == code)
            return name;
    return "UNKNOWN";
}
