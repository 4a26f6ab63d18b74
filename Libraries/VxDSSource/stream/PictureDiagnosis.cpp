#include "VxDSSource/stream/PictureDiagnosis.h"

#include "VxDSSource/overlay/HotPixelDiagnostic.h"

namespace vxds {

void DiagnosePicture(const cv::Mat& source, const FrameTarget& target, FrameStatistics& statistics)
{
    if (target.hasDiagnostics && target.kernelSize > 0)
        statistics.NotePixelVariation(RunHotPixelDiagnostic(source, target.kernelSize), target.source);
}

} // namespace vxds
