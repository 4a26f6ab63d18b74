#include "BaseClasses/CEnumMediaTypes.h"

#include "BaseClasses/VxComPtr.h"
#include "unit/BaseClasses/FrameworkTest.h"
#include "unit/BaseClasses/TestFilter.h"

#include <vfwmsgs.h>

#include <array>

namespace {

class CEnumMediaTypesTest : public FrameworkTest {
protected:
    CEnumMediaTypesTest()
    {
        pin.types = {TypeNumber(1), TypeNumber(2), TypeNumber(3)};
        EXPECT_EQ(pin.EnumMediaTypes(types.Put()), S_OK);
    }
    ~CEnumMediaTypesTest() override
    {
        for (AM_MEDIA_TYPE* const type : got)
            DeleteMediaType(type);
    }
    HRESULT Next(ULONG count)
    {
        for (AM_MEDIA_TYPE*& type : got) {
            DeleteMediaType(type);
            type = nullptr;
        }
        return types->Next(count, got.data(), &fetched);
    }
    bool IsNumber(std::size_t place, int number) const
    {
        return got[place] != nullptr && TypeNumber(number) == CMediaType(*got[place]);
    }

    TestFilter& filter = *new TestFilter;
    VxComPtr<IBaseFilter> held{&filter};
    TestPin& pin = filter.AddTestPin();
    VxComPtr<IEnumMediaTypes> types;
    std::array<AM_MEDIA_TYPE*, 8> got{};
    ULONG fetched = 99;
};

TEST_F(CEnumMediaTypesTest, HoldsThePin)
{
    EXPECT_EQ(held->AddRef(), 3u);
    held->Release();

    types.Reset();

    EXPECT_EQ(held->AddRef(), 2u);
    held->Release();
}

TEST_F(CEnumMediaTypesTest, IsAnObjectOfItsOwn)
{
    VxComPtr<IUnknown> identity;
    EXPECT_EQ(types->QueryInterface(IID_IUnknown, identity.PutVoid()), S_OK);
    EXPECT_EQ(identity.Get(), types.Get());
    void* none = &none;
    EXPECT_EQ(types->QueryInterface(IID_IPin, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(types->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(CEnumMediaTypesTest, ReturnsTheTypesInOrder)
{
    EXPECT_EQ(Next(2), S_OK);
    EXPECT_EQ(fetched, 2u);
    EXPECT_TRUE(IsNumber(0, 1));
    EXPECT_TRUE(IsNumber(1, 2));

    EXPECT_EQ(Next(2), S_FALSE);
    EXPECT_EQ(fetched, 1u);
    EXPECT_TRUE(IsNumber(0, 3));
    EXPECT_EQ(Next(1), S_FALSE);
    EXPECT_EQ(fetched, 0u);
}

TEST_F(CEnumMediaTypesTest, NextChecksItsArguments)
{
    AM_MEDIA_TYPE* type = nullptr;

    EXPECT_EQ(types->Next(1, nullptr, &fetched), E_POINTER);
    EXPECT_EQ(types->Next(2, &type, nullptr), E_INVALIDARG);
    EXPECT_EQ(types->Next(0, &type, nullptr), S_OK);
    EXPECT_EQ(pin.mediaTypeCalls, 0);
}

TEST_F(CEnumMediaTypesTest, ReportsAChangeBeforeItTouchesTheCount)
{
    pin.IncrementTypeVersion();
    fetched = 77;

    EXPECT_EQ(Next(1), VFW_E_ENUM_OUT_OF_SYNC);

    EXPECT_EQ(fetched, 77u);
    IEnumMediaTypes* copy = types.Get();
    EXPECT_EQ(types->Clone(&copy), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(types->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(types->Skip(0), S_OK);
}

TEST_F(CEnumMediaTypesTest, ResetTakesUpAChange)
{
    EXPECT_EQ(Next(1), S_OK);
    pin.types = {TypeNumber(5)};
    pin.IncrementTypeVersion();

    EXPECT_EQ(types->Reset(), S_OK);

    EXPECT_EQ(Next(1), S_OK);
    EXPECT_TRUE(IsNumber(0, 5));
}

TEST_F(CEnumMediaTypesTest, PlaceAdvancesPastTheEnd)
{
    EXPECT_EQ(Next(4), S_FALSE); // three types, and the end
    pin.types.push_back(TypeNumber(4));
    EXPECT_EQ(Next(1), S_FALSE); // its position is past already
    pin.types.push_back(TypeNumber(5));
    pin.types.push_back(TypeNumber(6));

    EXPECT_EQ(Next(1), S_OK);
    EXPECT_TRUE(IsNumber(0, 6));
}

TEST_F(CEnumMediaTypesTest, SkipAsksWhetherTheLastTypeIsThere)
{
    EXPECT_EQ(types->Skip(0), S_OK);
    EXPECT_EQ(types->Skip(2), S_OK);
    EXPECT_EQ(Next(1), S_OK);
    EXPECT_TRUE(IsNumber(0, 3));
    EXPECT_EQ(types->Skip(1), S_FALSE);
}

TEST_F(CEnumMediaTypesTest, SkipStaysAdvancedBeyondTheEnd)
{
    EXPECT_EQ(types->Skip(4), S_FALSE);
    pin.types = {TypeNumber(1), TypeNumber(2), TypeNumber(3), TypeNumber(4), TypeNumber(5)};

    EXPECT_EQ(Next(1), S_OK);
    EXPECT_TRUE(IsNumber(0, 5));
}

TEST_F(CEnumMediaTypesTest, HugeSkipsDoNotComeRoundToTheFirstType)
{
    EXPECT_EQ(types->Skip(0xFFFFFFFF), S_FALSE);
    EXPECT_EQ(types->Skip(1), S_FALSE);

    EXPECT_EQ(Next(1), S_FALSE);
}

TEST_F(CEnumMediaTypesTest, CloneHasTheSamePlaceAndGoesItsOwnWay)
{
    EXPECT_EQ(Next(1), S_OK);
    VxComPtr<IEnumMediaTypes> copy;
    EXPECT_EQ(types->Clone(copy.Put()), S_OK);
    EXPECT_EQ(types->Skip(2), S_OK);

    AM_MEDIA_TYPE* type = nullptr;
    ASSERT_EQ(copy->Next(1, &type, nullptr), S_OK);

    EXPECT_TRUE(TypeNumber(2) == CMediaType(*type));
    DeleteMediaType(type);
    EXPECT_EQ(types->Clone(nullptr), E_POINTER);
}

} // namespace
