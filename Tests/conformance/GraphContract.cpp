#include "conformance/FilterConformanceTest.h"

#include <control.h>
#include <qedit.h>
#include <uuids.h>

#include <evcode.h>

// In the import library, but in no header.
extern "C" const CLSID CLSID_SampleGrabber;
extern "C" const CLSID CLSID_NullRenderer;

namespace {

/// Counts what passes the grabber.
class Grabbed final : public TestObject<ISampleGrabberCB> {
public:
    Gate samples;
    Gate empty; // samples without bytes

    STDMETHODIMP SampleCB(double, IMediaSample* sample) override
    {
        if (sample->GetActualDataLength() <= 0)
            empty.Pass();
        samples.Pass();
        return S_OK;
    }
    STDMETHODIMP BufferCB(double, BYTE*, long) override { return E_NOTIMPL; }
};

template <typename Interface>
VxComPtr<Interface> Create(REFCLSID clsid)
{
    VxComPtr<Interface> object;
    EXPECT_EQ(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface), object.PutVoid()),
              S_OK);
    return object;
}

VxComPtr<IPin> PinOf(IBaseFilter& owner, PIN_DIRECTION direction)
{
    VxComPtr<IEnumPins> pins;
    owner.EnumPins(pins.Put());
    VxComPtr<IPin> pin;
    while (pins->Next(1, pin.Put(), nullptr) == S_OK) {
        PIN_DIRECTION found = direction;
        pin->QueryDirection(&found);
        if (found == direction)
            return pin;
    }
    return {};
}

/// The platform's own graph: the filter, a sample grabber, and a renderer if wanted.
class RealGraph final {
public:
    RealGraph(IBaseFilter& source, IPin& output) : m_source(source)
    {
        EXPECT_EQ(m_graph->AddFilter(&source, L"Subject"), S_OK);
        EXPECT_EQ(m_graph->AddFilter(m_grabber.Get(), L"Grabber"), S_OK);
        EXPECT_EQ(m_grabber.As<ISampleGrabber>()->SetCallback(&grabbed, 0), S_OK);
        EXPECT_EQ(m_graph->ConnectDirect(&output, PinOf(*m_grabber.Get(), PINDIR_INPUT).Get(), nullptr),
                  S_OK);
    }
    ~RealGraph()
    {
        EXPECT_HRESULT_SUCCEEDED(Control()->Stop());
        EXPECT_EQ(m_grabber.As<ISampleGrabber>()->SetCallback(nullptr, 0), S_OK);
        EXPECT_EQ(m_graph->RemoveFilter(&m_source), S_OK);
    }
    RealGraph(const RealGraph&) = delete;
    RealGraph& operator=(const RealGraph&) = delete;

    void AddRenderer()
    {
        const auto renderer = Create<IBaseFilter>(CLSID_NullRenderer);
        EXPECT_EQ(m_graph->AddFilter(renderer.Get(), L"Renderer"), S_OK);
        EXPECT_EQ(m_graph->ConnectDirect(PinOf(*m_grabber.Get(), PINDIR_OUTPUT).Get(),
                                         PinOf(*renderer.Get(), PINDIR_INPUT).Get(), nullptr),
                  S_OK);
    }
    VxComPtr<IMediaControl> Control() const { return m_graph.As<IMediaControl>(); }
    /// Whether an event that tells of a failure has arrived.
    bool HasFailed() const
    {
        const auto events = m_graph.As<IMediaEvent>(IID_IMediaEvent);
        long code = 0;
        LONG_PTR param1 = 0;
        LONG_PTR param2 = 0;
        bool failed = false;
        while (events->GetEvent(&code, &param1, &param2, 0) == S_OK) {
            failed = failed || code == EC_ERRORABORT || code == EC_COMPLETE;
            events->FreeEventParams(code, param1, param2);
        }
        return failed;
    }

    Grabbed grabbed;

private:
    IBaseFilter& m_source; // borrowed: the test's
    const VxComPtr<IGraphBuilder> m_graph = Create<IGraphBuilder>(CLSID_FilterGraph);
    const VxComPtr<IBaseFilter> m_grabber = Create<IBaseFilter>(CLSID_SampleGrabber);
};

TEST_P(FilterConformanceTest, RunsInTheSystemsGraphWithoutARenderer)
{
    RealGraph graph(*filter.Get(), *pin.Get());

    ASSERT_HRESULT_SUCCEEDED(graph.Control()->Run());
    EXPECT_TRUE(graph.grabbed.samples.WaitFor(10));
    EXPECT_EQ(graph.Control()->Stop(), S_OK);

    EXPECT_EQ(graph.grabbed.empty.Count(), 0);
    EXPECT_FALSE(graph.HasFailed());
}

TEST_P(FilterConformanceTest, RunsInTheSystemsGraphWithARenderer)
{
    RealGraph graph(*filter.Get(), *pin.Get());
    graph.AddRenderer();

    ASSERT_HRESULT_SUCCEEDED(graph.Control()->Run());
    EXPECT_TRUE(graph.grabbed.samples.WaitFor(5));
    EXPECT_EQ(graph.Control()->Stop(), S_OK);

    EXPECT_FALSE(graph.HasFailed());
}

TEST_P(FilterConformanceTest, PausesAndRunsAgainInTheSystemsGraph)
{
    RealGraph graph(*filter.Get(), *pin.Get());
    graph.AddRenderer();
    ASSERT_HRESULT_SUCCEEDED(graph.Control()->Pause());
    OAFilterState state = -1;
    constexpr long kPatienceMs = 30000;
    EXPECT_EQ(graph.Control()->GetState(kPatienceMs, &state), S_OK); // the renderer has its first frame
    EXPECT_EQ(state, State_Paused);

    ASSERT_HRESULT_SUCCEEDED(graph.Control()->Run());
    ASSERT_TRUE(graph.grabbed.samples.WaitFor(3));
    ASSERT_HRESULT_SUCCEEDED(graph.Control()->Stop());
    ASSERT_HRESULT_SUCCEEDED(graph.Control()->Run());

    EXPECT_TRUE(graph.grabbed.samples.WaitFor(graph.grabbed.samples.Count() + 3));
}

TEST_P(FilterConformanceTest, CaptureGraphBuilderFindsTheStreamConfiguration)
{
    const auto graph = Create<IGraphBuilder>(CLSID_FilterGraph);
    const auto builder = Create<ICaptureGraphBuilder2>(CLSID_CaptureGraphBuilder2);
    ASSERT_EQ(builder->SetFiltergraph(graph.Get()), S_OK);
    ASSERT_EQ(graph->AddFilter(filter.Get(), L"Subject"), S_OK);
    {
        VxComPtr<IAMStreamConfig> config;
        const HRESULT found = builder->FindInterface(&PIN_CATEGORY_CAPTURE, &MEDIATYPE_Video, filter.Get(),
                                                     IID_IAMStreamConfig, config.PutVoid());
        EXPECT_EQ(SUCCEEDED(found), GetParam().hasStreamConfig && GetParam().hasCategory);
        const HRESULT preview = builder->FindInterface(&PIN_CATEGORY_PREVIEW, &MEDIATYPE_Video, filter.Get(),
                                                       IID_IAMStreamConfig, config.PutVoid());
        EXPECT_TRUE(FAILED(preview));
    }
    EXPECT_EQ(graph->RemoveFilter(filter.Get()), S_OK);
}

} // namespace
