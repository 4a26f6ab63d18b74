#include "conformance/FilterConformanceTest.h"
#include "support/directshow/ScriptedStream.h"

#include <amvideo.h>
#include <objbase.h>
#include <ocidl.h>
#include <uuids.h>
#include <vfwmsgs.h>

#include <algorithm>
#include <array>

// What a filter does not claim, FilterHasTheInterfacesItClaims and PinHasTheInterfacesItClaims find refused:
// the tests here then have no object to ask and say so.

namespace {

TEST_P(FilterConformanceTest, CapabilitiesAreComplete)
{
    const auto config = pin.As<IAMStreamConfig>();
    ASSERT_EQ(static_cast<bool>(config), GetParam().hasStreamConfig);
    if (!config)
        return;
    int count = 0;
    int bytes = 0;
    ASSERT_EQ(config->GetNumberOfCapabilities(&count, &bytes), S_OK);
    ASSERT_GE(count, 1);
    ASSERT_EQ(bytes, static_cast<int>(sizeof(VIDEO_STREAM_CONFIG_CAPS)));

    for (int index = 0; index < count; ++index) {
        AM_MEDIA_TYPE* type = nullptr;
        VIDEO_STREAM_CONFIG_CAPS caps = {};
        ASSERT_EQ(config->GetStreamCaps(index, &type, reinterpret_cast<BYTE*>(&caps)), S_OK);
        EXPECT_EQ(type->majortype, MEDIATYPE_Video);
        EXPECT_EQ(type->formattype, FORMAT_VideoInfo);
        EXPECT_GE(type->cbFormat, sizeof(VIDEOINFOHEADER));
        EXPECT_GT(caps.MaxOutputSize.cx, 0);
        EXPECT_GT(caps.MaxOutputSize.cy, 0);
        EXPECT_LE(caps.MinFrameInterval, caps.MaxFrameInterval);
        DeleteMediaType(type);
    }
}

TEST_P(FilterConformanceTest, FormatCanBeSetToACapabilityAndConnected)
{
    const auto config = pin.As<IAMStreamConfig>();
    ASSERT_EQ(static_cast<bool>(config), GetParam().hasStreamConfig);
    if (!config)
        return;
    AM_MEDIA_TYPE* type = nullptr;
    VIDEO_STREAM_CONFIG_CAPS caps = {};
    ASSERT_EQ(config->GetStreamCaps(0, &type, reinterpret_cast<BYTE*>(&caps)), S_OK);
    const CMediaType wanted(*type);
    DeleteMediaType(type);

    EXPECT_EQ(config->SetFormat(const_cast<CMediaType*>(&wanted)), S_OK);
    ASSERT_EQ(config->GetFormat(&type), S_OK);
    EXPECT_TRUE(wanted == CMediaType(*type));
    EXPECT_EQ(pin->Connect(&sink, type), S_OK);
    DeleteMediaType(type);
}

TEST_P(FilterConformanceTest, PinHasTheCategoryCapture)
{
    const auto properties = pin.As<IKsPropertySet>();
    ASSERT_EQ(static_cast<bool>(properties), GetParam().hasCategory);
    if (!properties)
        return;
    GUID category = {};
    DWORD bytes = 0;
    DWORD support = 0;

    EXPECT_EQ(properties->Get(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, nullptr, 0, &category,
                              sizeof(category), &bytes),
              S_OK);
    EXPECT_EQ(category, PIN_CATEGORY_CAPTURE);
    EXPECT_EQ(bytes, sizeof(GUID));
    bytes = 0;
    EXPECT_EQ(properties->Get(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, nullptr, 0, nullptr, 0, &bytes),
              S_OK);
    EXPECT_EQ(bytes, sizeof(GUID));
    EXPECT_EQ(properties->Get(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, nullptr, 0, nullptr, 0, nullptr),
              E_POINTER);
    EXPECT_EQ(properties->Get(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, nullptr, 0, &category, 1, &bytes),
              E_UNEXPECTED);
    EXPECT_EQ(
        properties->Get(GUID_NULL, AMPROPERTY_PIN_CATEGORY, nullptr, 0, &category, sizeof(category), &bytes),
        E_PROP_SET_UNSUPPORTED);
    EXPECT_EQ(properties->Get(AMPROPSETID_Pin, 99, nullptr, 0, &category, sizeof(category), &bytes),
              E_PROP_ID_UNSUPPORTED);
    EXPECT_EQ(properties->QuerySupported(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, &support), S_OK);
    EXPECT_EQ(support, static_cast<DWORD>(KSPROPERTY_SUPPORT_GET));
    EXPECT_EQ(
        properties->Set(AMPROPSETID_Pin, AMPROPERTY_PIN_CATEGORY, nullptr, 0, &category, sizeof(category)),
        E_NOTIMPL);
}

TEST_P(FilterConformanceTest, EveryPropertyPageOfTheModuleCanBeCreated)
{
    const auto specify = filter.As<ISpecifyPropertyPages>();
    ASSERT_EQ(static_cast<bool>(specify), GetParam().hasPages);
    if (!specify)
        return;
    EXPECT_EQ(specify->GetPages(nullptr), E_POINTER);
    CAUUID pages = {};
    ASSERT_EQ(specify->GetPages(&pages), S_OK);
    EXPECT_GE(pages.cElems, 1u);

    for (ULONG n = 0; n < pages.cElems; ++n) {
        VxComPtr<IPropertyPage> page;
        const auto& classes = GetParam().classes;
        const bool isOffered = std::ranges::any_of(
            classes, [&](const ConformanceSubject::Class& each) { return each.clsid == pages.pElems[n]; });
        EXPECT_EQ(module.Create(pages.pElems[n], nullptr, IID_IPropertyPage, page.PutVoid()),
                  isOffered ? S_OK : CLASS_E_CLASSNOTAVAILABLE);
        if (!isOffered)
            continue; // named, but not there
        PROPPAGEINFO info = {};
        ASSERT_TRUE(page);
        EXPECT_EQ(page->GetPageInfo(&info), S_OK);
        EXPECT_STRNE(info.pszTitle, L"");
        EXPECT_GT(info.size.cx, 0);
        EXPECT_GT(info.size.cy, 0);
        ::CoTaskMemFree(info.pszTitle);
        EXPECT_EQ(page.Detach()->Release(), 0u);
    }
    ::CoTaskMemFree(pages.pElems);
}

TEST_P(FilterConformanceTest, SavedFilterLoadsAgain)
{
    const auto persist = filter.As<IPersistStream>();
    ASSERT_EQ(static_cast<bool>(persist), GetParam().isPersistent);
    if (!persist)
        return;
    ScriptedStream stream;
    ULARGE_INTEGER most = {};

    EXPECT_EQ(persist->Save(&stream, TRUE), S_OK);
    EXPECT_EQ(persist->IsDirty(), S_FALSE);
    EXPECT_EQ(persist->GetSizeMax(&most), S_OK);
    EXPECT_LE(stream.bytes.size(), most.QuadPart);
    CLSID clsid = {};
    EXPECT_EQ(persist->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, GetParam().clsid);

    EXPECT_EQ(persist->Load(&stream), S_OK);
    EXPECT_EQ(stream.position, stream.bytes.size());
    ScriptedStream again;
    EXPECT_EQ(persist->Save(&again, FALSE), S_OK);
    EXPECT_EQ(again.bytes, stream.bytes);
}

TEST_P(FilterConformanceTest, LoadReturnsFromEveryTruncatedStream)
{
    const auto persist = filter.As<IPersistStream>();
    ASSERT_EQ(static_cast<bool>(persist), GetParam().isPersistent);
    if (!persist)
        return;
    ScriptedStream whole;
    ASSERT_EQ(persist->Save(&whole, TRUE), S_OK);
    constexpr std::size_t kVersionBytes = 24;

    for (std::size_t length = 0; length < whole.bytes.size(); ++length) {
        ScriptedStream cut;
        cut.bytes.assign(whole.bytes.begin(), whole.bytes.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(persist->Load(&cut),
                  length < kVersionBytes ? VFW_E_INVALID_FILE_FORMAT : GetParam().ofCutStream)
            << length;
    }
    EXPECT_EQ(persist->Load(nullptr), E_POINTER);
}

} // namespace
