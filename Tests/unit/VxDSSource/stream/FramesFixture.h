#pragma once

#include "VxDSSource/stream/VxMediaTypes.h"

#include "CanarySample.h"
#include "PinFixture.h"
#include "support/picture/ReferencePictures.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

/// A pin that streams from a camera of a given size.
class FramesFixture : public PinFixture {
protected:
    // Fixed by the cameras' list of pixel formats.
    static constexpr std::uint32_t kBgr8 = 0x02180015;
    static constexpr std::uint32_t kMono8 = 0x01080001;
    static constexpr std::uint32_t kYuyv = 0x02100032;
    static constexpr std::uint32_t kUyvy = 0x0210001F;

    ~FramesFixture() override
    {
        if (m_isStreaming)
            (void)Pin().OnThreadDestroy();
    }

    void Stream(int width, int height)
    {
        dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString("Width"))).value = width;
        dynamic_cast<ScriptedInteger&>(*TheCamera().device->Get(VxString("Height"))).value = height;
        ConnectAndForget();
        (void)Pin().OnThreadCreate();
        m_isStreaming = true;
    }

    /// Makes one of the offered types, changed as wanted, the pin's own.
    void UseType(int position, int width, int height)
    {
        CMediaType type;
        ASSERT_TRUE(vxds::BuildOfferedType(
            position, {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)}, type));
        ASSERT_EQ(Pin().SetMediaType(&type), S_OK);
    }

    static ScriptedPicture AsScripted(const ReferencePicture& picture)
    {
        return {static_cast<std::uint32_t>(picture.width), static_cast<std::uint32_t>(picture.height), kBgr8,
                AsBgr8(picture), 0};
    }

    static void Queue(const ReferencePicture& picture) { TheCamera().QueuePicture(AsScripted(picture)); }

    static void QueueEmptyPicture()
    {
        TheCamera().QueuePicture({4, 2, kMono8, std::vector<std::uint8_t>(8, 200), 0});
    }

    /// Fills one sample and checks what always holds.
    void Fill(CanarySample& sample)
    {
        EXPECT_EQ(Pin().FillBuffer(&sample), S_OK);
        EXPECT_TRUE(sample.IsIntact());
    }

    static void ExpectZeroFrame(CanarySample& sample)
    {
        EXPECT_TRUE(sample.IsAll(0));
        EXPECT_FALSE(sample.time);
        EXPECT_FALSE(sample.mediaTime);
        EXPECT_FALSE(sample.isSyncPoint);
    }

private:
    bool m_isStreaming = false;
};
