#include "VxDSSource/filter/IVxDSSource.h"
#include "hosts/HostTest.h"
#include "hosts/RandomPeer.h"

#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/PictureView.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <thread>

// A renderer with buffers of its own, in a running graph: it is asked for another size while it gets frames,
// and asks for another type itself by attaching that to the next buffer that it hands out.

namespace {

class PeerTypeHostTest : public HostTest {
protected:
    /// @param bufferBytes  of each of the peer's buffers
    explicit PeerTypeHostTest(std::size_t bufferBytes = kBufferBytes)
    {
        m_camera = ChooseCamera();
        BuildGraph(m_camera);
        EXPECT_EQ(graph->AddFilter(&m_peer.Filter(), L"Peer"), S_OK);
        m_peer.hasClock = true;
        m_peer.UseOwnBuffers(bufferBytes);
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

/// The same peer, asked for another size by the pin, with buffers for the largest.
class PeerSizeHostTest : public PeerTypeHostTest {
protected:
    static constexpr std::size_t kTwiceAsLarge = kBufferBytes * 4;

    PeerSizeHostTest() : PeerTypeHostTest(kTwiceAsLarge) {}

    void SetOutputSize(std::uint32_t widthPx, std::uint32_t heightPx)
    {
        EXPECT_EQ(m_camera.As<IVxDSSource>(IID_IVxDSSource)
                      ->SetOutputSize(static_cast<INT>(widthPx), static_cast<INT>(heightPx)),
                  S_OK);
    }

    void ExpectType(std::uint32_t widthPx, std::uint32_t heightPx)
    {
        const auto config = CapturePin(*m_camera.Get()).As<IAMStreamConfig>(IID_IAMStreamConfig);
        const CMediaType type = Format(*config.Get());
        EXPECT_TRUE(type.subtype == MEDIASUBTYPE_RGB24);
        EXPECT_EQ(HeaderOf(type).biWidth, static_cast<LONG>(widthPx));
        EXPECT_EQ(HeaderOf(type).biHeight, static_cast<LONG>(heightPx));
        EXPECT_EQ(HeaderOf(type).biSizeImage, widthPx * heightPx * 3);
    }

    /// The camera's picture of a bitmap in which each of its pixels is a square of four; nothing when one is
    /// not.
    static std::vector<std::byte> Halved(const std::vector<std::byte>& bitmap)
    {
        constexpr std::size_t kRowBytes = std::size_t{kWidthPx} * 2 * 3;
        std::vector<std::byte> half;
        for (std::size_t y = 0; y < kHeightPx * 2; ++y) {
            for (std::size_t x = 0; x < kWidthPx * 2; ++x) {
                const std::byte* const pixel = &bitmap[y * kRowBytes + x * 3];
                const std::byte* const first = &bitmap[y / 2 * 2 * kRowBytes + x / 2 * 2 * 3];
                if (!std::equal(pixel, pixel + 3, first))
                    return {};
                if (y % 2 == 0 && x % 2 == 0)
                    half.insert(half.end(), pixel, pixel + 3);
            }
        }
        return half;
    }
};

TEST_F(PeerSizeHostTest, FramesFollowASizeThatThePeerTakesWhileItStreams)
{
    ASSERT_NO_FATAL_FAILURE(ExpectPicturesAs(Rgb(24, false)));

    SetOutputSize(kWidthPx * 2, kHeightPx * 2);

    ExpectType(kWidthPx * 2, kHeightPx * 2);
    std::vector<std::byte> half;
    ASSERT_TRUE(WaitUntil([&] { return !(half = Halved(m_peer.Picture())).empty(); }));
    const CMediaType camera = Rgb(24, false);
    ASSERT_NO_FATAL_FAILURE(ExpectPicture(half, HeaderOf(camera)));

    SetOutputSize(kWidthPx, kHeightPx);

    ExpectType(kWidthPx, kHeightPx);
    ASSERT_NO_FATAL_FAILURE(ExpectPicturesAs(camera));
}

TEST_F(PeerSizeHostTest, FramesAreZeroWhileThePeerRefusesALargerSize)
{
    const CMediaType camera = Rgb(24, false);
    ASSERT_NO_FATAL_FAILURE(ExpectPicturesAs(camera));
    m_peer.AnswerRenegotiation(VFW_E_TYPE_NOT_ACCEPTED);

    SetOutputSize(kWidthPx * 2, kHeightPx * 2);

    ExpectType(kWidthPx, kHeightPx);
    // What lies behind the bitmap in a larger buffer is not touched.
    const auto isZero = [&] {
        std::vector<std::byte> bytes = m_peer.Picture();
        bytes.resize(HeaderOf(camera).biSizeImage);
        return std::ranges::all_of(bytes, [](std::byte each) { return each == std::byte{0}; });
    };
    ASSERT_TRUE(WaitUntil(isZero));
    const int samples = m_peer.Samples();
    ASSERT_TRUE(WaitUntil([&] { return m_peer.Samples() >= samples + 3; }));
    EXPECT_TRUE(isZero());

    SetOutputSize(kWidthPx, kHeightPx);

    ExpectType(kWidthPx, kHeightPx);
    ASSERT_NO_FATAL_FAILURE(ExpectPicturesAs(camera));
}

} // namespace
