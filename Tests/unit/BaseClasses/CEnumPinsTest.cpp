#include "BaseClasses/CEnumPins.h"

#include "BaseClasses/VxComPtr.h"
#include "unit/BaseClasses/FrameworkTest.h"
#include "unit/BaseClasses/TestFilter.h"

#include <vfwmsgs.h>

#include <array>

namespace {

class CEnumPinsTest : public FrameworkTest {
protected:
    CEnumPinsTest()
    {
        for (int n = 0; n < 3; ++n)
            filter.AddTestPin();
        EXPECT_EQ(held->EnumPins(pins.Put()), S_OK);
    }
    /// Calls Next and gives the references back; only the addresses count.
    HRESULT Next(ULONG count)
    {
        for (IPin*& pin : got)
            pin = nullptr;
        const HRESULT hr = pins->Next(count, got.data(), &fetched);
        for (IPin* const pin : got) {
            if (pin != nullptr)
                pin->Release();
        }
        return hr;
    }
    ULONG HeldReferences()
    {
        held->AddRef();
        return held->Release();
    }

    TestFilter& filter = *new TestFilter;
    VxComPtr<IBaseFilter> held{&filter};
    VxComPtr<IEnumPins> pins;
    std::array<IPin*, 8> got{};
    ULONG fetched = 99;
};

TEST_F(CEnumPinsTest, HoldsTheFilter)
{
    EXPECT_EQ(HeldReferences(), 2u);

    pins.Reset();

    EXPECT_EQ(HeldReferences(), 1u);
}

TEST_F(CEnumPinsTest, IsAnObjectOfItsOwn)
{
    VxComPtr<IUnknown> identity;
    EXPECT_EQ(pins->QueryInterface(IID_IUnknown, identity.PutVoid()), S_OK);
    EXPECT_EQ(identity.Get(), pins.Get());
    void* none = &none;
    EXPECT_EQ(pins->QueryInterface(IID_IBaseFilter, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(pins->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(CEnumPinsTest, ReturnsThePinsInOrder)
{
    EXPECT_EQ(Next(2), S_OK);
    EXPECT_EQ(fetched, 2u);
    EXPECT_EQ(got[0], filter.pins[0]);
    EXPECT_EQ(got[1], filter.pins[1]);

    EXPECT_EQ(Next(2), S_FALSE);
    EXPECT_EQ(fetched, 1u);
    EXPECT_EQ(got[0], filter.pins[2]);
    EXPECT_EQ(Next(1), S_FALSE);
    EXPECT_EQ(fetched, 0u);
}

TEST_F(CEnumPinsTest, EachPinHasAReference)
{
    IPin* pin = nullptr;
    ASSERT_EQ(pins->Next(1, &pin, nullptr), S_OK);

    EXPECT_EQ(HeldReferences(), 3u);

    pin->Release();
}

TEST_F(CEnumPinsTest, NextChecksItsArguments)
{
    IPin* pin = nullptr;

    EXPECT_EQ(pins->Next(1, nullptr, &fetched), E_POINTER);
    EXPECT_EQ(pins->Next(2, &pin, nullptr), E_INVALIDARG);
    EXPECT_EQ(pins->Next(0, &pin, nullptr), S_OK);
    EXPECT_EQ(Next(0), S_OK);
    EXPECT_EQ(fetched, 0u);
}

TEST_F(CEnumPinsTest, TakesUpNewPinsWithoutRepeatingOldOnes)
{
    EXPECT_EQ(Next(2), S_OK);
    filter.AddTestPin();
    filter.IncrementPinVersion();

    EXPECT_EQ(Next(8), S_FALSE);

    EXPECT_EQ(fetched, 2u);
    EXPECT_EQ(got[0], filter.pins[2]);
    EXPECT_EQ(got[1], filter.pins[3]);
}

TEST_F(CEnumPinsTest, ReportsAPinThatHasGone)
{
    filter.pins[1] = nullptr;

    EXPECT_EQ(Next(3), VFW_E_ENUM_OUT_OF_SYNC);

    EXPECT_EQ(fetched, 0u);
    EXPECT_EQ(HeldReferences(), 2u);
    EXPECT_EQ(Next(1), S_OK); // the first one was not lost
    EXPECT_EQ(got[0], filter.pins[0]);
}

TEST_F(CEnumPinsTest, SkipLeavesOutPins)
{
    EXPECT_EQ(pins->Skip(2), S_OK);
    EXPECT_EQ(Next(1), S_OK);

    EXPECT_EQ(got[0], filter.pins[2]);
}

TEST_F(CEnumPinsTest, SkipBeyondTheEndStaysInPlace)
{
    EXPECT_EQ(pins->Skip(4), S_FALSE);
    EXPECT_EQ(pins->Skip(0xFFFFFFFF), S_FALSE);
    EXPECT_EQ(Next(1), S_OK);

    EXPECT_EQ(got[0], filter.pins[0]);
}

TEST_F(CEnumPinsTest, SkipAndCloneReportAChange)
{
    filter.IncrementPinVersion();

    IEnumPins* copy = pins.Get();
    EXPECT_EQ(pins->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(pins->Clone(&copy), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(copy, nullptr);
}

TEST_F(CEnumPinsTest, ResetStartsAfreshAndTakesUpChanges)
{
    EXPECT_EQ(Next(3), S_OK);
    filter.AddTestPin();
    filter.IncrementPinVersion();

    EXPECT_EQ(pins->Reset(), S_OK);

    EXPECT_EQ(Next(4), S_OK);
    EXPECT_EQ(got[0], filter.pins[0]);
    EXPECT_EQ(got[3], filter.pins[3]);
}

TEST_F(CEnumPinsTest, CloneHasTheSamePlaceAndGoesItsOwnWay)
{
    EXPECT_EQ(Next(1), S_OK);
    VxComPtr<IEnumPins> copy;
    EXPECT_EQ(pins->Clone(copy.Put()), S_OK);
    EXPECT_EQ(pins->Skip(2), S_OK);

    VxComPtr<IPin> pin;
    EXPECT_EQ(copy->Next(1, pin.Put(), nullptr), S_OK);

    EXPECT_EQ(pin.Get(), filter.pins[1]);
    EXPECT_EQ(pins->Clone(nullptr), E_POINTER);
}

TEST_F(CEnumPinsTest, CloneRemembersWhatWasReturned)
{
    EXPECT_EQ(Next(1), S_OK);
    VxComPtr<IEnumPins> copy;
    EXPECT_EQ(pins->Clone(copy.Put()), S_OK);
    filter.IncrementPinVersion();

    VxComPtr<IPin> pin;
    EXPECT_EQ(copy->Next(1, pin.Put(), nullptr), S_OK);

    EXPECT_EQ(pin.Get(), filter.pins[1]);
}

} // namespace
