#include "hosts/HostTest.h"

#include "VxDSSource/filter/IVxDSSource.h"
#include "VxDSSource/filter/Identifiers.h"

// ffmpeg's dshow input: one direct connection without a tee, to a sink that offers no types and has no
// allocator.

namespace {

class FfmpegHostTest : public HostTest {
protected:
    /// Looks at a pin as ffmpeg does before it uses it.
    void InspectPin(IPin& pin)
    {
        PIN_INFO info{};
        ASSERT_EQ(pin.QueryPinInfo(&info), S_OK);
        ASSERT_EQ(info.dir, PINDIR_OUTPUT);
        info.pFilter->Release();
        LPWSTR id = nullptr;
        ASSERT_EQ(pin.QueryId(&id), S_OK);
        EXPECT_STREQ(id, L"1");
        ::CoTaskMemFree(id);

        VxComPtr<IEnumMediaTypes> types;
        ASSERT_EQ(pin.EnumMediaTypes(types.Put()), S_OK);
        AM_MEDIA_TYPE* type = nullptr;
        bool hasVideo = false;
        while (types->Next(1, &type, nullptr) == S_OK) {
            hasVideo = hasVideo || type->majortype == MEDIATYPE_Video;
            DeleteMediaType(type);
        }
        EXPECT_TRUE(hasVideo);
    }

    void Render(IPin& pin)
    {
        VxComPtr<ICaptureGraphBuilder2> builder;
        ASSERT_EQ(::CoCreateInstance(CLSID_CaptureGraphBuilder2, nullptr, CLSCTX_INPROC_SERVER,
                                     IID_ICaptureGraphBuilder2, builder.PutVoid()),
                  S_OK);
        ASSERT_EQ(builder->SetFiltergraph(graph.Get()), S_OK);
        ASSERT_EQ(builder->RenderStream(nullptr, nullptr, &pin, nullptr, &sink.Filter()), S_OK);
    }
};

TEST_F(FfmpegHostTest, CapturesWithoutOptions)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    BuildGraph(camera);
    const VxComPtr<IPin> pin = CapturePin(*camera.Get());
    InspectPin(*pin.Get());
    // What GetFormat says is the wish; where no capability is equal to it, it is set as it is.
    const auto config = pin.As<IAMStreamConfig>(IID_IAMStreamConfig);
    ASSERT_TRUE(config);
    CMediaType wish = Format(*config.Get());
    VIDEO_STREAM_CONFIG_CAPS caps{};
    if (Capability(*config.Get(), caps) != wish) {
        EXPECT_EQ(config->SetFormat(&wish), S_OK);
    }

    Render(*pin.Get());
    Run();
    ASSERT_TRUE(sink.WaitForSamples(10));
    StopAndSeeNothingMore();

    ExpectPictures(10);
}

TEST_F(FfmpegHostTest, FindsTheSizeThatWasAskedForAmongTheCapabilities)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    BuildGraph(camera);
    const VxComPtr<IPin> pin = CapturePin(*camera.Get());
    const auto config = pin.As<IAMStreamConfig>(IID_IAMStreamConfig);
    VIDEO_STREAM_CONFIG_CAPS caps{};
    CMediaType type = Capability(*config.Get(), caps);
    // -video_size 320x240 -framerate 30
    ASSERT_LE(caps.MinOutputSize.cx, static_cast<LONG>(kWidthPx));
    ASSERT_GE(caps.MaxOutputSize.cx, static_cast<LONG>(kWidthPx));
    ASSERT_LE(caps.MinOutputSize.cy, static_cast<LONG>(kHeightPx));
    ASSERT_GE(caps.MaxOutputSize.cy, static_cast<LONG>(kHeightPx));
    ASSERT_LE(caps.MinFrameInterval, 333333);
    ASSERT_GE(caps.MaxFrameInterval, 333333);
    HeaderOf(type).biWidth = static_cast<LONG>(kWidthPx);
    HeaderOf(type).biHeight = static_cast<LONG>(kHeightPx);
    EXPECT_EQ(config->SetFormat(&type), S_OK);

    Render(*pin.Get());
    Run();
    ASSERT_TRUE(sink.WaitForSamples(5));
    StopAndSeeNothingMore();

    ExpectPictures(5);
}

TEST_F(FfmpegHostTest, SizeThatTheCameraDoesNotHaveIsOutsideTheCapabilities)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    const auto config = CapturePin(*camera.Get()).As<IAMStreamConfig>(IID_IAMStreamConfig);
    VIDEO_STREAM_CONFIG_CAPS caps{};
    const CMediaType type = Capability(*config.Get(), caps);

    EXPECT_LT(caps.MaxOutputSize.cx,
              640); // -video_size 640x480 is an error there, not a frame of another size
    EXPECT_LT(caps.MaxOutputSize.cy, 480);
}

TEST_F(FfmpegHostTest, SavesTheDeviceAndLoadsItAgain)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    VxComPtr<IStream> file;
    ASSERT_EQ(::CreateStreamOnHGlobal(nullptr, TRUE, file.Put()), S_OK);
    ASSERT_EQ(::OleSaveToStream(camera.As<IPersistStream>(IID_IPersistStream).Get(), file.Get()), S_OK);
    ASSERT_EQ(file->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);

    VxComPtr<IBaseFilter> loaded;
    ASSERT_EQ(::OleLoadFromStream(file.Get(), IID_IBaseFilter, loaded.PutVoid()), S_OK);

    BSTR before = nullptr;
    BSTR after = nullptr;
    EXPECT_EQ(camera.As<IVxDSSource>(IID_IVxDSSource)->GetDeviceId(&before), S_OK);
    EXPECT_EQ(loaded.As<IVxDSSource>(IID_IVxDSSource)->GetDeviceId(&after), S_OK);
    EXPECT_STREQ(before, L"127.0.0.1");
    EXPECT_STREQ(after, L"127.0.0.1");
    ::SysFreeString(before);
    ::SysFreeString(after);
}

} // namespace
