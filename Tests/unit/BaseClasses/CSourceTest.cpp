#include "BaseClasses/CSource.h"

#include "BaseClasses/VxComPtr.h"
#include "unit/BaseClasses/FrameworkTest.h"
#include "unit/BaseClasses/TestSource.h"

#include <objbase.h>
#include <vfwmsgs.h>

namespace {

class CSourceTest : public FrameworkTest {
protected:
    std::wstring IdOf(IPin& pin)
    {
        LPWSTR id = nullptr;
        if (pin.QueryId(&id) != S_OK)
            return L"none";
        std::wstring text(id);
        ::CoTaskMemFree(id);
        return text;
    }

    TestSource& source = *new TestSource;
    VxComPtr<IBaseFilter> held{&source};
};

TEST_F(CSourceTest, HasNoPinsAtFirst)
{
    VxComPtr<IPin> pin;

    EXPECT_EQ(source.GetPinCount(), 0);
    EXPECT_EQ(source.GetPin(0), nullptr);
    EXPECT_EQ(source.GetPin(-1), nullptr);
    EXPECT_EQ(held->FindPin(L"1", pin.Put()), VFW_E_NOT_FOUND);
}

TEST_F(CSourceTest, PinsAddThemselves)
{
    auto* const first = new TestStream(&source);
    auto* const second = new TestStream(&source, L"Second");

    EXPECT_EQ(first->added, S_OK);
    EXPECT_EQ(source.GetPinCount(), 2);
    EXPECT_EQ(source.GetPin(0), first);
    EXPECT_EQ(source.GetPin(1), second);
    EXPECT_EQ(source.GetPin(2), nullptr);
    EXPECT_EQ(source.FindPinNumber(second), 1);
    EXPECT_EQ(IdOf(*first), L"1");
    EXPECT_EQ(IdOf(*second), L"2");
}

TEST_F(CSourceTest, AddingAPinReplacesAnArrayMadeInAdvance)
{
    source.MakeArrayInAdvance();
    const auto* const before = source.Array();

    auto* const stream = new TestStream(&source);
    source.Array()[0] = stream; // as such filters do: through the member's present value

    EXPECT_NE(source.Array(), before);
    EXPECT_EQ(source.GetPin(0), stream);
}

TEST_F(CSourceTest, ArrayMadeInAdvanceNeedsNoPin)
{
    source.MakeArrayInAdvance();
    source.Array()[0] = nullptr; // the pin could not be created

    EXPECT_EQ(source.GetPinCount(), 0);
    EXPECT_EQ(source.GetPin(0), nullptr);
}

TEST_F(CSourceTest, FindsPinsByNumber)
{
    auto* const stream = new TestStream(&source);
    VxComPtr<IPin> pin;

    EXPECT_EQ(held->FindPin(L"1", pin.Put()), S_OK);
    EXPECT_EQ(pin.Get(), static_cast<IPin*>(stream));
    for (const LPCWSTR id : {L"0", L"2", L"-1", L"Output", L"", L"-2147483648"}) {
        EXPECT_EQ(held->FindPin(id, pin.Put()), VFW_E_NOT_FOUND) << id;
        EXPECT_EQ(pin.Get(), nullptr);
    }
    EXPECT_EQ(held->FindPin(nullptr, pin.Put()), VFW_E_NOT_FOUND);
    EXPECT_EQ(held->FindPin(L"1", nullptr), E_POINTER);
}

TEST_F(CSourceTest, RemovedPinLeavesTheOthersInOrder)
{
    auto* const first = new TestStream(&source);
    auto* const second = new TestStream(&source);
    auto* const third = new TestStream(&source);

    EXPECT_EQ(source.RemovePin(first), S_OK);

    EXPECT_EQ(source.GetPinCount(), 2);
    EXPECT_EQ(source.GetPin(0), second);
    EXPECT_EQ(source.GetPin(1), third);
    EXPECT_EQ(source.RemovePin(first), S_FALSE);
    EXPECT_EQ(source.FindPinNumber(third), 1);
    delete first;
    EXPECT_EQ(source.GetPinCount(), 2);
}

TEST_F(CSourceTest, RemovedPinHasNoId)
{
    auto* const stream = new TestStream(&source);
    EXPECT_EQ(source.RemovePin(stream), S_OK);

    LPWSTR id = nullptr;
    EXPECT_EQ(stream->QueryId(&id), VFW_E_NOT_FOUND);
    EXPECT_EQ(id, nullptr);
    EXPECT_EQ(stream->QueryId(nullptr), E_POINTER);
    EXPECT_EQ(source.Array(), nullptr);
    delete stream;
}

TEST_F(CSourceTest, DestroysItsPinsLastOneFirst)
{
    std::string order;
    (new TestStream(&source))->onEnd = [&] { order += "first "; };
    (new TestStream(&source))->onEnd = [&] { order += "second "; };

    held.Reset();

    EXPECT_EQ(order, "second first ");
}

TEST_F(CSourceTest, PinsMayTakeReferencesWhileTheyAreDestroyed)
{
    int ends = 0;
    auto* const stream = new TestStream(&source);
    stream->onEnd = [&, filter = static_cast<IBaseFilter*>(&source)] {
        const VxComPtr<IBaseFilter> again(filter);
        ++ends;
    };

    held.Reset();

    EXPECT_EQ(ends, 1);
}

TEST_F(CSourceTest, PinOutlivesItsUseThroughTheFilterOnly)
{
    bool ended = false;
    auto* const stream = new TestStream(&source);
    stream->onEnd = [&] { ended = true; };
    VxComPtr<IPin> pin(stream);

    held.Reset();
    EXPECT_FALSE(ended); // the pin's reference counts on the filter
    pin.Reset();

    EXPECT_TRUE(ended);
}

TEST_F(CSourceTest, OffersTheOneTypeOfItsStream)
{
    auto* const stream = new TestStream(&source);
    CMediaType type;

    EXPECT_EQ(stream->GetMediaType(0, &type), S_OK);
    EXPECT_TRUE(type == TypeNumber(1));
    EXPECT_EQ(stream->GetMediaType(1, &type), VFW_S_NO_MORE_ITEMS);
    EXPECT_EQ(stream->GetMediaType(-1, &type), E_INVALIDARG);
    EXPECT_EQ(static_cast<CBasePin*>(stream)->CheckMediaType(&type), S_OK);
    type = TypeNumber(2);
    EXPECT_EQ(static_cast<CBasePin*>(stream)->CheckMediaType(&type), E_FAIL);
    stream->hasType = false;
    EXPECT_EQ(stream->GetMediaType(0, &type), E_UNEXPECTED);
    EXPECT_EQ(static_cast<CBasePin*>(stream)->CheckMediaType(&type), E_FAIL);
}

} // namespace
