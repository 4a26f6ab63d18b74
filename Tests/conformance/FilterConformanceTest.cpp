#include "conformance/FilterConformanceTest.h"

FilterConformanceTest::FilterConformanceTest() : filter(CreateFilter()), pin(Output()) {}

FilterConformanceTest::~FilterConformanceTest()
{
    if (filter) {
        EXPECT_EQ(filter->Stop(), S_OK);
        Disconnect();
        pin.Reset();
        EXPECT_EQ(filter.Detach()->Release(), 0u) << "somebody still holds the filter";
    }
    EXPECT_EQ(module.CanUnload(), S_OK);
}

VxComPtr<IBaseFilter> FilterConformanceTest::CreateFilter()
{
    VxComPtr<IBaseFilter> created;
    EXPECT_EQ(module.Create(GetParam().clsid, nullptr, IID_IBaseFilter, created.PutVoid()), S_OK);
    return created;
}

VxComPtr<IPin> FilterConformanceTest::Output()
{
    VxComPtr<IEnumPins> pins;
    EXPECT_EQ(filter->EnumPins(pins.Put()), S_OK);
    VxComPtr<IPin> first;
    EXPECT_EQ(pins->Next(1, first.Put(), nullptr), S_OK);
    return first;
}

std::vector<CMediaType> FilterConformanceTest::TypesOf(IPin& owner)
{
    std::vector<CMediaType> types;
    VxComPtr<IEnumMediaTypes> enumerator;
    EXPECT_EQ(owner.EnumMediaTypes(enumerator.Put()), S_OK);
    AM_MEDIA_TYPE* type = nullptr;
    while (enumerator->Next(1, &type, nullptr) == S_OK) {
        types.emplace_back(*type);
        DeleteMediaType(type);
    }
    return types;
}

FILTER_STATE FilterConformanceTest::State()
{
    auto state = static_cast<FILTER_STATE>(3); // none of the three
    EXPECT_EQ(filter->GetState(0, &state), S_OK);
    return state;
}

void FilterConformanceTest::Connect()
{
    ASSERT_EQ(pin->Connect(&sink, nullptr), S_OK);
}

void FilterConformanceTest::Disconnect()
{
    EXPECT_HRESULT_SUCCEEDED(pin->Disconnect());
    EXPECT_HRESULT_SUCCEEDED(sink.Disconnect());
}

ULONG FilterConformanceTest::References()
{
    filter->AddRef();
    return filter->Release();
}
