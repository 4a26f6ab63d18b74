#include "VxCamera/surface/VxBufferImpl.h"

#include <string>

#include "VxCamera/control/ControlText.h"

VxResult VxBufferImpl::OperationResult() const
{
    switch (operationCode) {
    case VxError::Ok:
        return VxResult::Ok();
    case VxError::NotInitialized:
        return {};
    case VxError::MissingPackets:
        return {operationCode, "block " + std::to_string(blockId) + ": " + std::to_string(packetsMissing) +
                                   (packetsMissing == 1 ? " packet is missing" : " packets are missing")};
    case VxError::BufferTooSmall:
        return {operationCode, "the picture takes " + std::to_string(neededBytes) +
                                   " bytes, the buffer has " + std::to_string(picture.Memory().size())};
    case VxError::NotAnImage:
        return {operationCode, "block " + std::to_string(blockId) + " carries " +
                                   std::string(carried.Name()) + " (payload type " +
                                   control::HexText(carried.bits) + ") and no picture that could be found"};
    case VxError::NotSupported:
        return {operationCode, "block " + std::to_string(blockId) +
                                   ": the lines of the picture run together, and do not begin with a byte; "
                                   "another width or pixel format helps"};
    case VxError::CameraError:
        return {operationCode, "the camera lost data of block " + std::to_string(blockId)};
    case VxError::InvalidData:
        return {operationCode, "block " + std::to_string(blockId) + " announces a picture that cannot be"};
    default:
        return {operationCode, "block " + std::to_string(blockId)};
    }
}
