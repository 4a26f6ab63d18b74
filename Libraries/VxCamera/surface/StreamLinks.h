#pragma once

#include "VxCamera/receive/BlockGeometry.h"
#include "VxCamera/receive/StreamLink.h"
#include "VxCamera/transport/Ipv4Endpoint.h"

#include <memory>
#include <optional>

class VxStreamImpl;

/// The streams that are open in this process, so that a device finds the receiver to which its camera sends:
/// device and stream are made apart, and meet only where the device is told the stream's address and port.
///
/// Owner:  the process; without memory of its own, so nothing is left when the last stream is gone.
/// Thread: any. Its lock comes before that of a stream.
class StreamLinks {
public:
    /// @param stream  borrowed until Remove
    static void Add(VxStreamImpl& stream);
    static void Remove(VxStreamImpl& stream);

    /// Gives a link to the open stream that receives there, if it is in this process; to every one that has
    /// joined, when the camera sends to a group.
    static void Connect(const transport::Ipv4Endpoint& receiver,
                        const std::shared_ptr<const receive::StreamLink>& link);

    /// Tells every stream that has the link what the camera's pictures are like, see StreamReceiver.
    static void TellPicture(const std::shared_ptr<const receive::StreamLink>& link,
                            const std::optional<receive::PictureShape>& picture);

    /// Takes the link from every stream that still has it.
    static void Disconnect(const std::shared_ptr<const receive::StreamLink>& link);
};
