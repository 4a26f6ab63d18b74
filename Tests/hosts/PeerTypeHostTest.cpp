#include "hosts/HostTest.h"
#include "hosts/RandomPeer.h"

#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/PictureView.h"

#include <chrono>
#include <functional>
#include <limits>
#include <thread>

// A renderer with buffers of its own, in a running graph: it asks for another type by attaching that to the
// next buffer that it hands out.

namespace {

class PeerTypeHostTest : public HostTest {
protected:
    PeerTypeHostTest()
    {
        m_camera = ChooseCamera();
        BuildGraph(m_camera);
        EXPECT_EQ(graph->AddFilter(&m_peer.Filter(), L"Peer"), S_OK);
        m_peer.hasClock = true;
        m_peer.UseOwnBuffers(kBufferBytes);
        m_peer.ExpectSamples();
        EXPECT_EQ(graph->ConnectDirect(CapturePin(*m_camera.Get()).Get(), &m_peer.Pin(), nullptr), S_OK);
        Run();
    }
    ~PeerTypeHostTest() override
    {
        EXPECT_HRESULT_SUCCEEDED(graph.As<IMediaControl>(IID_IMediaControl)->Stop());
        m_peer.ExpectNoMoreSamples();
        EXPECT_EQ(graph->RemoveFilter(&m_peer.Filter()),
                  S_OK); // disconnects: the bytes around buffers are seen
        EXPECT_EQ(m_peer.Fault(), "");
    }

    /// @param isTopDown  whether the first row of the bitmap comes first
    static CMediaType Rgb(WORD bitCount, bool isTopDown)
    {
        CMediaType type = BuiltType(bitCount == 32 ? MEDIASUBTYPE_RGB32 : MEDIASUBTYPE_RGB24, bitCount,
                                    BI_RGB, kWidthPx, kHeightPx);
        if (isTopDown)
            HeaderOf(type).biHeight = -HeaderOf(type).biHeight;
        return type;
    }

    static bool WaitUntil(const std::function<bool()>& holds)
    {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (!holds()) {
            if (std::chrono::steady_clock::now() >= end)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    /// Pictures in this type come, each byte as the camera sent it.
    void ExpectPicturesAs(const CMediaType& type)
    {
        const BITMAPINFOHEADER& header = HeaderOf(type);
        const auto last = [&] {
            std::vector<std::byte> bytes = m_peer.Picture();
            bytes.resize(header.biSizeImage); // a buffer may be larger
            return bytes;
        };
        const auto showsItsNumber = [&] {
            const std::vector<std::byte> bytes = last();
            simulator::PictureView view;
            view.pixels = bytes;
            view.widthPx = kWidthPx;
            view.heightPx = kHeightPx;
            view.bytesPerPixel = header.biBitCount / 8U;
            view.strideBytes = std::size_t{kWidthPx} * view.bytesPerPixel;
            view.rowOrder =
                header.biHeight > 0 ? simulator::RowOrder::BottomUp : simulator::RowOrder::TopDown;
            return simulator::ReadFrameNumber(view).has_value();
        };
        ASSERT_TRUE(WaitUntil(showsItsNumber)) << "no picture in the type that was asked for";
        const int before = m_peer.Pictures();
        ASSERT_TRUE(WaitUntil([&] { return m_peer.Pictures() >= before + 3; })); // it stays with it
        ExpectPicture(last(), header);
    }

    /// Nothing but zero frames comes once the buffer with the type is out.
    void ExpectZeroFrames()
    {
        ASSERT_TRUE(WaitUntil([&] { return m_peer.HasAsked(); }));
        const int pictures = m_peer.Pictures();
        const int samples = m_peer.Samples();
        ASSERT_TRUE(WaitUntil([&] { return m_peer.Samples() >= samples + 4; }));
        EXPECT_EQ(m_peer.Pictures(), pictures);
    }

    static constexpr std::size_t kBufferBytes = std::size_t{kWidthPx} * kHeightPx * 4; // enough for each type

    VxComPtr<IBaseFilter> m_camera;
    RandomPeer m_peer;
};

TEST_F(PeerTypeHostTest, FramesFollowTheTypeThatComesWithABuffer)
{
    ASSERT_NO_FATAL_FAILURE(ExpectPicturesAs(Rgb(24, false))); // the pin's first
    for (const WORD bitCount : {WORD{32}, WORD{24}}) {
        for (const bool isTopDown : {true, false}) {
            SCOPED_TRACE(std::to_string(bitCount) + (isTopDown ? " bits, top-down" : " bits"));
            m_peer.Ask(Rgb(bitCount, isTopDown));
            ASSERT_NO_FATAL_FAILURE(ExpectPicturesAs(Rgb(bitCount, isTopDown)));
        }
    }
}

TEST_F(PeerTypeHostTest, TypesOfNoUseGiveZeroFramesUntilAUsableOneComes)
{
    const CMediaType usable = Rgb(32, false);
    const CMediaType noBlock(&MEDIATYPE_Video);
    CMediaType shortBlock = usable;
    shortBlock.cbFormat = sizeof(VIDEOINFOHEADER) - 1;
    CMediaType otherFormat = usable;
    otherFormat.SetFormatType(&FORMAT_MPEGVideo);
    CMediaType tooNarrow = usable;
    HeaderOf(tooNarrow).biWidth = static_cast<LONG>(kWidthPx) - 1;
    CMediaType tooLow = usable;
    HeaderOf(tooLow).biHeight = -(static_cast<LONG>(kHeightPx) - 1);
    CMediaType wider = usable;
    HeaderOf(wider).biWidth = std::numeric_limits<LONG>::max();
    CMediaType negative = usable;
    HeaderOf(negative).biWidth = std::numeric_limits<LONG>::min();
    HeaderOf(negative).biSizeImage = 0xFFFFFFFF;
    const std::pair<const char*, const CMediaType*> types[] = {
        {"no block", &noBlock},     {"a short block", &shortBlock}, {"another format", &otherFormat},
        {"too narrow", &tooNarrow}, {"too low", &tooLow},           {"wider than a buffer", &wider},
        {"negative", &negative}};

    for (const auto& [name, type] : types) {
        SCOPED_TRACE(name);
        m_peer.Ask(*type);
        ASSERT_NO_FATAL_FAILURE(ExpectZeroFrames());
        m_peer.Ask(usable);
        ASSERT_NO_FATAL_FAILURE(ExpectPicturesAs(usable));
    }
}

} // namespace
