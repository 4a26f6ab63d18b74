#include "hosts/HostTest.h"

#include "support/graph/FrameCatcher.h"

#include <qedit.h>

#include <array>

extern "C" {
extern const CLSID CLSID_SampleGrabber; // in the import library, declared in no header
extern const CLSID CLSID_NullRenderer;
}

// OpenCV's DirectShow back end: edits the current type and leaves fields of the old one in it, takes the
// first subtype that SetFormat does not refuse, wants RGB24 from a Sample Grabber, and runs without a clock.

namespace {

class OpenCvHostTest : public HostTest {
protected:
    void AddGrabber()
    {
        ASSERT_EQ(::CoCreateInstance(CLSID_SampleGrabber, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                     grabberFilter.PutVoid()),
                  S_OK);
        ASSERT_EQ(::CoCreateInstance(CLSID_NullRenderer, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                     renderer.PutVoid()),
                  S_OK);
        grabber = grabberFilter.As<ISampleGrabber>(IID_ISampleGrabber);
        ASSERT_TRUE(grabber);
        ASSERT_EQ(graph->AddFilter(grabberFilter.Get(), L"grabber"), S_OK);
        ASSERT_EQ(graph->AddFilter(renderer.Get(), L"renderer"), S_OK);
        ASSERT_EQ(grabber->SetOneShot(FALSE), S_OK);
        ASSERT_EQ(grabber->SetBufferSamples(FALSE), S_OK);
        ASSERT_EQ(grabber->SetCallback(&catcher, 0), S_OK);
        AM_MEDIA_TYPE wanted{};
        wanted.majortype = MEDIATYPE_Video;
        wanted.subtype = MEDIASUBTYPE_RGB24;
        wanted.formattype = FORMAT_VideoInfo;
        ASSERT_EQ(grabber->SetMediaType(&wanted), S_OK);
    }

    FrameCatcher catcher;
    VxComPtr<IBaseFilter> grabberFilter;
    VxComPtr<IBaseFilter> renderer;
    VxComPtr<ISampleGrabber> grabber;
};

TEST_F(OpenCvHostTest, CapturesAfterSettingATypeWithStaleFields)
{
    const VxComPtr<IBaseFilter> camera = ChooseCamera();
    BuildGraph(camera);
    VxComPtr<ICaptureGraphBuilder2> builder;
    ASSERT_EQ(::CoCreateInstance(CLSID_CaptureGraphBuilder2, nullptr, CLSCTX_INPROC_SERVER,
                                 IID_ICaptureGraphBuilder2, builder.PutVoid()),
              S_OK);
    ASSERT_EQ(builder->SetFiltergraph(graph.Get()), S_OK);
    VxComPtr<IAMStreamConfig> config;
    if (FAILED(builder->FindInterface(&PIN_CATEGORY_PREVIEW, &MEDIATYPE_Video, camera.Get(),
                                      IID_IAMStreamConfig, config.PutVoid()))) {
        ASSERT_EQ(builder->FindInterface(&PIN_CATEGORY_CAPTURE, &MEDIATYPE_Video, camera.Get(),
                                         IID_IAMStreamConfig, config.PutVoid()),
                  S_OK);
    }
    CMediaType edited = Format(*config.Get());
    // Size and subtype only: compression, depth and image size stay those of the old type.
    const std::array subtypes{MEDIASUBTYPE_RGB24, MEDIASUBTYPE_RGB32, MEDIASUBTYPE_YUY2};
    HRESULT set = E_FAIL;
    for (const GUID& subtype : subtypes) {
        edited.SetSubtype(&subtype);
        HeaderOf(edited).biWidth = 640;
        HeaderOf(edited).biHeight = 480;
        set = config->SetFormat(&edited);
        if (SUCCEEDED(set))
            break;
    }
    ASSERT_EQ(set, S_OK);

    AddGrabber();
    // There it is the preview; under Wine that would put a tee behind the pin, which waits for a second
    // buffer.
    ASSERT_HRESULT_SUCCEEDED(
        builder->RenderStream(nullptr, &MEDIATYPE_Video, camera.Get(), grabberFilter.Get(), renderer.Get()));
    ASSERT_EQ(graph.As<IMediaFilter>(IID_IMediaFilter)->SetSyncSource(nullptr), S_OK);
    Run();
    CMediaType type;
    ASSERT_EQ(grabber->GetConnectedMediaType(&type), S_OK);
    for (LONGLONG i = 0; i < 5; ++i) {
        const auto frame = catcher.WaitForPicture(kPatience);
        ASSERT_TRUE(frame);
        // The size that it asked for is none of the camera's: pictures come in the camera's.
        ASSERT_EQ(frame->bytes.size(), std::size_t{kWidthPx} * kHeightPx * 3);
        ASSERT_NO_FATAL_FAILURE(ExpectPicture(frame->bytes, HeaderOf(type)));
        EXPECT_EQ(frame->startTime, 0) << "without a clock every time is 0";
        EXPECT_EQ(frame->endTime, 0);
        EXPECT_EQ(frame->mediaTime, i);
    }
    StopAndSeeNothingMore();
    EXPECT_EQ(grabber->SetCallback(nullptr, 0), S_OK);
}

} // namespace
