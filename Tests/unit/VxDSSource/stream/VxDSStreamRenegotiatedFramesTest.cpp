#include "BaseClasses/BitmapSizes.h"
#include "support/directshow/FakeGraph.h"

#include "FramesFixture.h"
#include "RenegotiatingSink.h"

#include <uuids.h>

#include <algorithm>
#include <ostream>
#include <string>

namespace {

enum class Way { SetOutputSize, SetFormat };

/// A change of the size while frames are produced.
struct Change {
    Way way;
    bool isAccepted; ///< by the peer, and by the graph that is asked to connect it again
    int widthPx;
    int heightPx;

    [[nodiscard]] std::string Name() const
    {
        return std::string(way == Way::SetOutputSize ? "SetOutputSize" : "SetFormat") +
               (widthPx < 16 ? "Smaller" : "Larger") + (isAccepted ? "Accepted" : "Refused");
    }
};

void PrintTo(const Change& change, std::ostream* out)
{
    *out << change.Name();
}

/// Connected to a peer downstream, with a camera whose pictures are as large as the connection's.
class VxDSStreamRenegotiatedFramesTest : public FramesFixture, public testing::WithParamInterface<Change> {
protected:
    static constexpr int kWidthPx = 16;
    static constexpr int kHeightPx = 12;
    static constexpr std::size_t kOldBytes = kWidthPx * kHeightPx * 3; // of the connection's buffers

    VxDSStreamRenegotiatedFramesTest()
    {
        Stream(kWidthPx, kHeightPx);
        EXPECT_EQ(Host().JoinFilterGraph(&m_graph, L"host"), S_OK);
        EXPECT_EQ(Pin().Connect(&m_sink, nullptr), S_OK);
        m_sink.renegotiating = GetParam().isAccepted ? S_OK : VFW_E_ALREADY_CONNECTED;
        // A graph refuses while it runs; else it does this.
        m_graph.onReconnect = [this] {
            if (!GetParam().isAccepted)
                return VFW_E_NOT_STOPPED;
            Disconnect();
            return Pin().Connect(&m_sink, nullptr);
        };
    }
    ~VxDSStreamRenegotiatedFramesTest() override
    {
        Disconnect();
        EXPECT_EQ(Host().JoinFilterGraph(nullptr, nullptr), S_OK);
    }

    void Disconnect()
    {
        EXPECT_EQ(Pin().Disconnect(), S_OK);
        EXPECT_EQ(m_sink.Disconnect(), S_OK);
    }

    void MakeTheChange()
    {
        const Change& change = GetParam();
        if (change.way == Way::SetOutputSize) {
            EXPECT_EQ(Pin().SetOutputSize(change.widthPx, change.heightPx), S_OK);
            EXPECT_EQ(m_sink.renegotiated.size(), 1U);
            EXPECT_EQ(m_graph.reconnects, 0);
            return;
        }
        CMediaType wanted;
        ASSERT_TRUE(vxds::BuildOfferedType(
            0, {static_cast<std::uint32_t>(change.widthPx), static_cast<std::uint32_t>(change.heightPx)},
            wanted));
        EXPECT_EQ(Pin().SetFormat(&wanted), S_OK);
        EXPECT_EQ(m_sink.renegotiated.size(), 0U);
        EXPECT_EQ(m_graph.reconnects, 1);
    }

    /// A peer that takes the new size has it; what SetFormat stored stays as long as nobody connects again.
    [[nodiscard]] static bool HasNewType()
    {
        return GetParam().way == Way::SetOutputSize ? GetParam().isAccepted : !GetParam().isAccepted;
    }
    [[nodiscard]] static int TypeWidthPx() { return HasNewType() ? GetParam().widthPx : kWidthPx; }
    [[nodiscard]] static int TypeHeightPx() { return HasNewType() ? GetParam().heightPx : kHeightPx; }

    void ExpectTheType()
    {
        AM_MEDIA_TYPE* type = nullptr;
        ASSERT_EQ(Pin().GetFormat(&type), S_OK);
        EXPECT_EQ(type->subtype, MEDIASUBTYPE_RGB24);
        ASSERT_EQ(type->cbFormat, sizeof(VIDEOINFOHEADER));
        const BITMAPINFOHEADER bitmap = *HEADER(type->pbFormat);
        DeleteMediaType(type);
        EXPECT_EQ(bitmap.biWidth, TypeWidthPx());
        EXPECT_EQ(bitmap.biHeight, TypeHeightPx());
        EXPECT_EQ(bitmap.biBitCount, 24);
        EXPECT_EQ(bitmap.biSizeImage, static_cast<DWORD>(TypeWidthPx() * TypeHeightPx() * 3));
    }

    /// What a buffer that held something else has to hold: a picture that is as large as the output size.
    static std::vector<std::uint8_t> Expected(const ReferencePicture& camera, std::size_t bufferBytes)
    {
        const bool isResized = GetParam().way == Way::SetOutputSize;
        const auto width = static_cast<std::size_t>(isResized ? GetParam().widthPx : kWidthPx);
        const auto height = static_cast<std::size_t>(isResized ? GetParam().heightPx : kHeightPx);
        const auto typeWidth = static_cast<std::size_t>(TypeWidthPx());
        const auto typeHeight = static_cast<std::size_t>(TypeHeightPx());
        std::vector<std::uint8_t> frame(bufferBytes, CanarySample::kStale);
        if (typeWidth < width || typeHeight < height) { // as many bytes as the type names, and no picture
            std::fill_n(frame.begin(), std::min(bufferBytes, typeWidth * typeHeight * 3), std::uint8_t{0});
            return frame;
        }
        const auto bytes = AsBitmap(isResized ? Resized(camera, width, height) : camera, 3, true);
        if (isResized) { // without row padding, as far as the buffer goes
            std::copy_n(bytes.begin(), std::min(bytes.size(), bufferBytes), frame.begin());
            return frame;
        }
        const std::size_t rowBytes = width * 3;
        const std::size_t stride = typeWidth * 3;
        if (stride * height > bufferBytes)
            return std::vector<std::uint8_t>(bufferBytes, 0); // no buffer for this type
        for (std::size_t y = 0; y < height; ++y)
            std::copy_n(&bytes[y * rowBytes], rowBytes, &frame[y * stride]);
        return frame;
    }

    FakeGraph m_graph;
    RenegotiatingSink m_sink;
};

TEST_P(VxDSStreamRenegotiatedFramesTest, TheNextFrameFollows)
{
    const ReferencePicture picture = TestPicture(kWidthPx, kHeightPx);
    Queue(picture);
    CanarySample before(kOldBytes);
    Fill(before);
    ASSERT_EQ(before.Copy(), AsBitmap(picture, 3, true));

    MakeTheChange();

    ExpectTheType();
    const auto newBytes = static_cast<std::size_t>(GetParam().widthPx * GetParam().heightPx * 3);
    // The buffers stay as they are, until the peer has its own of another size.
    for (const std::size_t bufferBytes : {kOldBytes, newBytes, 2 * std::max(kOldBytes, newBytes)}) {
        Queue(picture);
        CanarySample sample(bufferBytes);
        Fill(sample);
        EXPECT_EQ(sample.Copy(), Expected(picture, bufferBytes)) << "in " << bufferBytes << " bytes";
        EXPECT_TRUE(sample.time) << "it is a frame, whatever there is to be seen";
        EXPECT_FALSE(sample.attached) << "a type that the peer knows is not told again";
    }
    ExpectTheType();
}

INSTANTIATE_TEST_SUITE_P(
    Changes, VxDSStreamRenegotiatedFramesTest,
    testing::Values(Change{Way::SetOutputSize, true, 8, 6}, Change{Way::SetOutputSize, true, 32, 24},
                    Change{Way::SetOutputSize, false, 8, 6}, Change{Way::SetOutputSize, false, 32, 24},
                    Change{Way::SetFormat, true, 8, 6}, Change{Way::SetFormat, true, 32, 24},
                    Change{Way::SetFormat, false, 8, 6}, Change{Way::SetFormat, false, 32, 24}),
    [](const auto& test) { return test.param.Name(); });

} // namespace
