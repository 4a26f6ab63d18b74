#include "VxCamera/receive/StreamCounters.h"

namespace receive {

void StreamCounters::Reset()
{
    for (Counter* counter : {&packets,
                             &bytes,
                             &packetsForeign,
                             &packetsMalformed,
                             &packetsUnsupported,
                             &packetsTest,
                             &packetsErrorStatus,
                             &packetsDuplicate,
                             &packetsLate,
                             &packetsOutOfRange,
                             &packetsWrongSize,
                             &packetsUnbuffered,
                             &resendRequests,
                             &packetsRequestedAgain,
                             &packetsRecovered,
                             &packetsRefused,
                             &blocksComplete,
                             &blocksIncomplete,
                             &blocksBufferTooSmall,
                             &blocksNotAnImage,
                             &blocksDamaged,
                             &blocksUnbuffered,
                             &blocksLost,
                             &packetsMissing})
        counter->Reset();
}

} // namespace receive
