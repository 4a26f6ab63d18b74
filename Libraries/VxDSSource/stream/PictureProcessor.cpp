#include "VxDSSource/stream/PictureProcessor.h"

#include <opencv2/imgproc.hpp>

namespace vxds {

namespace {

/// The central part of the picture that the zoom shows.
cv::Mat ZoomRegion(const cv::Mat& source, const FrameTarget& target)
{
    const PictureSize region = target.zoom.RegionFor(target.zoomValue);
    const int width = static_cast<int>(region.widthPx);   // at most the picture's
    const int height = static_cast<int>(region.heightPx); // at most the picture's
    return source(cv::Rect((source.cols - width) / 2, (source.rows - height) / 2, width, height));
}

} // namespace

cv::Mat PictureProcessor::Process(const cv::Mat& source, const FrameTarget& target, const cv::Mat& final)
{
    const bool needsMedian = target.kernelSize > 0;
    cv::Mat picture = source;
    if (target.NeedsResize())
        picture = Resize(source, target, needsMedian ? cv::Mat() : final);
    if (needsMedian)
        picture = Filter(picture, target.kernelSize, final);
    return picture;
}

cv::Mat PictureProcessor::Resize(const cv::Mat& source, const FrameTarget& target, const cv::Mat& final)
{
    const cv::Size size(static_cast<int>(target.delivered.widthPx),
                        static_cast<int>(target.delivered.heightPx));
    cv::Mat result = final.empty() ? m_resized : final;
    cv::resize(ZoomRegion(source, target), result, size, 0.0, 0.0, cv::INTER_AREA);
    if (final.empty())
        m_resized = result; // never `final`: that memory belongs to this frame only
    return result;
}

cv::Mat PictureProcessor::Filter(const cv::Mat& picture, int kernelSize, const cv::Mat& final)
{
    cv::Mat result = final.empty() ? m_filtered : final;
    cv::medianBlur(picture, result, kernelSize);
    if (final.empty())
        m_filtered = result; // never `final`: that memory belongs to this frame only
    return result;
}

} // namespace vxds
