// Hands out what the script says.

#include "VxDSSource/camera/VxPipeline.h"

#include "support/camera/CameraDouble.h"

#include <gtest/gtest.h>

#include <atomic>

class VxPipelineImpl {
public:
    std::atomic<bool> isStarted = false;
    std::atomic<std::size_t> waiting = 0;
};

VxPipeline::VxPipeline(VxStream* stream) : m_impl(std::make_unique<VxPipelineImpl>())
{
    EXPECT_NE(stream, nullptr);
    TheCamera().log.Add(CallKind::Action, "new VxPipeline");
    ++TheCamera().livePipelines;
}

VxPipeline::~VxPipeline()
{
    EXPECT_GT(TheCamera().liveStreams, 0) << "a pipeline must be deleted before its stream";
    TheCamera().log.Add(CallKind::Action, "delete pipeline");
    --TheCamera().livePipelines;
}

void VxPipeline::SetBufferSize(std::uint32_t bytes)
{
    TheCamera().log.Add(CallKind::Action, "pipeline.SetBufferSize(" + std::to_string(bytes) + ")");
}

VxResult VxPipeline::SetBufferCount(std::uint32_t count)
{
    return TheCamera().Act("pipeline.SetBufferCount(" + std::to_string(count) + ")");
}

void VxPipeline::SetHandleBufferTooSmall(bool handle)
{
    TheCamera().log.Add(CallKind::Action,
                        std::string("pipeline.SetHandleBufferTooSmall(") + (handle ? "true)" : "false)"));
}

VxResult VxPipeline::Start()
{
    const VxResult result = TheCamera().Act("pipeline.Start");
    m_impl->isStarted = result.IsOK();
    return result;
}

VxResult VxPipeline::Stop()
{
    m_impl->isStarted = false;
    return TheCamera().Act("pipeline.Stop");
}

bool VxPipeline::IsStarted() const
{
    TheCamera().log.Add(CallKind::Query, "pipeline.IsStarted");
    return m_impl->isStarted;
}

VxResult VxPipeline::RetrieveNextBuffer(VxBuffer** buffer, std::uint32_t timeoutMs, VxResult* operationResult)
{
    CameraDouble& camera = TheCamera();
    camera.log.Add(CallKind::Action, "pipeline.Retrieve(" + std::to_string(timeoutMs) + ")");
    EXPECT_EQ(operationResult, nullptr);
    if (camera.onRetrieve)
        camera.onRetrieve();
    *buffer = nullptr;
    if (camera.retrievals.empty())
        return VxError::Timeout;
    const ScriptedRetrieval next = camera.retrievals.front();
    camera.retrievals.pop_front();
    m_impl->waiting = next.waitingAfter;
    *buffer = next.buffer;
    return next.buffer != nullptr ? VxResult::Ok() : VxResult(VxError::Timeout);
}

VxResult VxPipeline::ReleaseBuffer(VxBuffer* buffer)
{
    TheCamera().log.Add(CallKind::Action, "pipeline.Release(" + TheCamera().NameOf(buffer) + ")");
    return VxResult::Ok();
}

std::size_t VxPipeline::GetOutputQueueSize() const
{
    TheCamera().log.Add(CallKind::Query, "pipeline.GetOutputQueueSize");
    return m_impl->waiting;
}
