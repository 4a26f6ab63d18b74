#include "BaseClasses/CBasePin.h"

#include "BaseClasses/VxComPtr.h"
#include "support/directshow/SinkPin.h"
#include "unit/BaseClasses/FrameworkTest.h"
#include "unit/BaseClasses/TestFilter.h"

#include <objbase.h>
#include <vfwmsgs.h>

#include <stdexcept>
#include <string>

namespace {

constexpr HRESULT kOwnError = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x777);
constexpr HRESULT kOtherError = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x778);

class CBasePinTest : public FrameworkTest {
protected:
    ~CBasePinTest() override
    {
        filter.SetState(State_Stopped);
        pin.onBreak = [] { return S_OK; };
        pin.Disconnect();
        peer.Disconnect();
    }
    void ConnectPin() { ASSERT_EQ(pin.Connect(&peer, &type), S_OK); }

    SinkPin peer;
    TestFilter& filter = *new TestFilter;
    VxComPtr<IBaseFilter> held{&filter};
    TestPin& pin = filter.AddTestPin(PINDIR_OUTPUT, L"Out");
    const CMediaType type = TypeNumber(1);
};

TEST_F(CBasePinTest, CountsOnItsFilter)
{
    const VxComPtr<IPin> first(&pin);

    EXPECT_EQ(held->AddRef(), 3u);
    EXPECT_EQ(held->Release(), 2u);
}

TEST_F(CBasePinTest, HasItsOwnIdentity)
{
    VxComPtr<IUnknown> ofPin;
    VxComPtr<IUnknown> ofFilter;
    ASSERT_EQ(pin.QueryInterface(IID_IUnknown, ofPin.PutVoid()), S_OK);
    ASSERT_EQ(held->QueryInterface(IID_IUnknown, ofFilter.PutVoid()), S_OK);
    VxComPtr<IQualityControl> quality;
    VxComPtr<IMemInputPin> input;

    EXPECT_NE(ofPin.Get(), ofFilter.Get());
    EXPECT_EQ(pin.QueryInterface(IID_IQualityControl, quality.PutVoid()), S_OK);
    EXPECT_EQ(pin.QueryInterface(IID_IMemInputPin, input.PutVoid()), E_NOINTERFACE);
}

TEST_F(CBasePinTest, TellsAboutItself)
{
    PIN_INFO info = {};
    PIN_DIRECTION direction = PINDIR_INPUT;
    LPWSTR id = nullptr;

    EXPECT_EQ(pin.QueryPinInfo(&info), S_OK);
    EXPECT_EQ(info.pFilter, held.Get());
    info.pFilter->Release();
    EXPECT_EQ(info.dir, PINDIR_OUTPUT);
    EXPECT_STREQ(info.achName, L"Out");
    EXPECT_EQ(pin.QueryDirection(&direction), S_OK);
    EXPECT_EQ(direction, PINDIR_OUTPUT);
    EXPECT_EQ(pin.QueryId(&id), S_OK);
    EXPECT_STREQ(id, L"Out");
    ::CoTaskMemFree(id);
}

TEST_F(CBasePinTest, LongNameIsCutInThePinInfo)
{
    TestPin& other = filter.AddTestPin(PINDIR_OUTPUT, std::wstring(200, L'p').c_str());
    PIN_INFO info = {};

    EXPECT_EQ(other.QueryPinInfo(&info), S_OK);

    info.pFilter->Release();
    EXPECT_EQ(std::wstring(info.achName), std::wstring(127, L'p'));
}

TEST_F(CBasePinTest, RefusesNullPointers)
{
    EXPECT_EQ(pin.Connect(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(pin.ReceiveConnection(nullptr, &type), E_POINTER);
    EXPECT_EQ(pin.ReceiveConnection(&peer, nullptr), E_POINTER);
    EXPECT_EQ(pin.ConnectedTo(nullptr), E_POINTER);
    EXPECT_EQ(pin.ConnectionMediaType(nullptr), E_POINTER);
    EXPECT_EQ(pin.QueryPinInfo(nullptr), E_POINTER);
    EXPECT_EQ(pin.QueryDirection(nullptr), E_POINTER);
    EXPECT_EQ(pin.QueryId(nullptr), E_POINTER);
    EXPECT_EQ(pin.QueryAccept(nullptr), E_POINTER);
    EXPECT_EQ(pin.EnumMediaTypes(nullptr), E_POINTER);
}

TEST_F(CBasePinTest, DoesNotImplementWhatASourceDoesNotNeed)
{
    ULONG count = 0;
    EXPECT_EQ(pin.QueryInternalConnections(nullptr, &count), E_NOTIMPL);
    EXPECT_EQ(pin.Notify(held.Get(), Quality{}), E_NOTIMPL);
    EXPECT_EQ(pin.SetSink(nullptr), S_OK);
    EXPECT_EQ(pin.EndOfStream(), S_OK);
}

TEST_F(CBasePinTest, KeepsTheSegment)
{
    EXPECT_EQ(pin.CurrentStartTime(), 0);
    EXPECT_EQ(pin.CurrentStopTime(), MAX_TIME);
    EXPECT_EQ(pin.CurrentRate(), 1.0);

    EXPECT_EQ(pin.NewSegment(10, 20, 0.5), S_OK);

    EXPECT_EQ(pin.CurrentStartTime(), 10);
    EXPECT_EQ(pin.CurrentStopTime(), 20);
    EXPECT_EQ(pin.CurrentRate(), 0.5);
}

TEST_F(CBasePinTest, InactiveClearsTheRunTimeError)
{
    pin.SetRunTimeError();

    EXPECT_EQ(pin.Inactive(), S_OK);

    EXPECT_FALSE(pin.HasRunTimeError());
}

TEST_F(CBasePinTest, QueryAcceptTurnsErrorsIntoSFalse)
{
    EXPECT_EQ(pin.QueryAccept(&type), S_OK);
    pin.onCheck = [](const CMediaType&) { return kOwnError; };
    EXPECT_EQ(pin.QueryAccept(&type), S_FALSE);
    pin.onCheck = [](const CMediaType&) { return S_FALSE; };
    EXPECT_EQ(pin.QueryAccept(&type), S_FALSE);
    pin.onCheck = [](const CMediaType&) { return HRESULT{5}; };
    EXPECT_EQ(pin.QueryAccept(&type), 5);
    pin.onCheck = [](const CMediaType&) -> HRESULT { throw std::runtime_error("by the test"); };
    EXPECT_EQ(pin.QueryAccept(&type), S_FALSE);
}

TEST_F(CBasePinTest, UnconnectedPinSaysSo)
{
    IPin* found = &pin;
    AM_MEDIA_TYPE got = {};

    EXPECT_EQ(pin.ConnectedTo(&found), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(pin.ConnectionMediaType(&got), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(got.pbFormat, nullptr);
    EXPECT_EQ(got.lSampleSize, 1u);
    EXPECT_TRUE(got.bFixedSizeSamples);
    EXPECT_EQ(pin.Disconnect(), S_FALSE);
    EXPECT_EQ(pin.breaks, 0);
}

TEST_F(CBasePinTest, ConnectsWithTheTypeGiven)
{
    EXPECT_EQ(pin.Connect(&peer, &type), S_OK);

    EXPECT_TRUE(pin.IsConnected());
    EXPECT_EQ(pin.GetConnected(), &peer);
    EXPECT_TRUE(pin.Type() == type);
    EXPECT_EQ(peer.Connected(), &pin);
    VxComPtr<IPin> found;
    EXPECT_EQ(pin.ConnectedTo(found.Put()), S_OK);
    EXPECT_EQ(found.Get(), &peer);
    AM_MEDIA_TYPE got = {};
    EXPECT_EQ(pin.ConnectionMediaType(&got), S_OK);
    EXPECT_TRUE(type == CMediaType(got));
    EXPECT_NE(got.pbFormat, pin.Type().pbFormat);
    FreeMediaType(got);
}

TEST_F(CBasePinTest, SuccessOfConnectIsAlwaysSOk)
{
    pin.onComplete = [] { return S_FALSE; };

    EXPECT_EQ(pin.Connect(&peer, &type), S_OK);
}

TEST_F(CBasePinTest, SecondConnectIsRefusedInEveryState)
{
    ConnectPin();

    for (const FILTER_STATE state : {State_Stopped, State_Paused, State_Running}) {
        filter.SetState(state);
        EXPECT_EQ(pin.Connect(&peer, &type), VFW_E_ALREADY_CONNECTED);
        EXPECT_EQ(pin.ReceiveConnection(&peer, &type), VFW_E_ALREADY_CONNECTED);
    }
}

TEST_F(CBasePinTest, ActiveFilterRefusesConnections)
{
    for (const FILTER_STATE state : {State_Paused, State_Running}) {
        filter.SetState(state);
        EXPECT_EQ(pin.Connect(&peer, &type), VFW_E_NOT_STOPPED);
        EXPECT_EQ(pin.ReceiveConnection(&peer, &type), VFW_E_NOT_STOPPED);
    }
    EXPECT_EQ(pin.breaks, 0);
}

TEST_F(CBasePinTest, PinThatCanReconnectWhenActiveConnectsThen)
{
    pin.SetReconnectWhenActive(true);
    EXPECT_TRUE(pin.CanReconnectWhenActive());
    filter.SetState(State_Running);

    EXPECT_EQ(pin.Connect(&peer, &type), S_OK);

    EXPECT_EQ(pin.Disconnect(), VFW_E_NOT_STOPPED); // the flag does not help here
}

TEST_F(CBasePinTest, DisconnectNeedsAStoppedFilter)
{
    ConnectPin();
    for (const FILTER_STATE state : {State_Paused, State_Running}) {
        filter.SetState(state);
        EXPECT_EQ(pin.Disconnect(), VFW_E_NOT_STOPPED);
    }
    filter.SetState(State_Stopped);

    EXPECT_EQ(pin.Disconnect(), S_OK);

    EXPECT_FALSE(pin.IsConnected());
    EXPECT_EQ(pin.breaks, 1);
    EXPECT_TRUE(pin.Type() == type); // kept
    EXPECT_EQ(pin.Disconnect(), S_FALSE);
}

TEST_F(CBasePinTest, IsUnconnectedWhenThePeerIsLetGo)
{
    ConnectPin();
    HRESULT asked = E_PENDING;
    peer.onLastRelease = [&] {
        peer.onLastRelease = nullptr;
        VxComPtr<IPin> connected;
        asked = pin.ConnectedTo(connected.Put());
    };

    EXPECT_EQ(pin.Disconnect(), S_OK);

    EXPECT_EQ(asked, VFW_E_NOT_CONNECTED);
}

TEST_F(CBasePinTest, DisconnectKeepsThePeerWhenBreakConnectFails)
{
    ConnectPin();
    pin.onBreak = [] { return kOwnError; };

    EXPECT_EQ(pin.Disconnect(), kOwnError);

    EXPECT_TRUE(pin.IsConnected());
}

TEST_F(CBasePinTest, PeerOfTheSameDirectionIsRefused)
{
    peer.direction = PINDIR_OUTPUT;

    EXPECT_EQ(pin.Connect(&peer, &type), VFW_E_INVALID_DIRECTION);
    EXPECT_GE(pin.breaks, 1);
    pin.breaks = 0;
    EXPECT_EQ(pin.ReceiveConnection(&peer, &type), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(pin.breaks, 1);
}

TEST_F(CBasePinTest, RefusalOfATypeIsMapped)
{
    struct Row {
        HRESULT checked;
        HRESULT expected;
    };
    for (const auto& [checked, expected] :
         {Row{S_FALSE, VFW_E_TYPE_NOT_ACCEPTED}, Row{E_FAIL, VFW_E_TYPE_NOT_ACCEPTED},
          Row{E_INVALIDARG, VFW_E_TYPE_NOT_ACCEPTED}, Row{kOwnError, kOwnError},
          Row{VFW_E_INVALIDMEDIATYPE, VFW_E_INVALIDMEDIATYPE}}) {
        pin.onCheck = [&](const CMediaType&) { return checked; };
        pin.breaks = 0;
        EXPECT_EQ(pin.Connect(&peer, &type), expected);
        EXPECT_GE(pin.breaks, 1);
        pin.breaks = 0;
        EXPECT_EQ(pin.ReceiveConnection(&peer, &type), expected);
        EXPECT_EQ(pin.breaks, 1);
        EXPECT_FALSE(pin.IsConnected());
    }
}

TEST_F(CBasePinTest, PeerSeesTheConnectionWhileItIsAsked)
{
    IPin* seen = nullptr;
    CMediaType seenType;
    peer.onReceiveConnection = [&](IPin* connector, const AM_MEDIA_TYPE*) {
        VxComPtr<IPin> found;
        EXPECT_EQ(connector->ConnectedTo(found.Put()), S_OK);
        seen = found.Get();
        AM_MEDIA_TYPE got = {};
        EXPECT_EQ(connector->ConnectionMediaType(&got), S_OK);
        seenType = got;
        FreeMediaType(got);
        return S_OK;
    };

    EXPECT_EQ(pin.Connect(&peer, &type), S_OK);

    EXPECT_EQ(seen, &peer);
    EXPECT_TRUE(seenType == type);
}

TEST_F(CBasePinTest, RefusalOfThePeerIsReturnedAndUndone)
{
    peer.onReceiveConnection = [](IPin*, const AM_MEDIA_TYPE*) { return kOwnError; };

    EXPECT_EQ(pin.Connect(&peer, &type), kOwnError);

    EXPECT_FALSE(pin.IsConnected());
    EXPECT_EQ(peer.References(), 0);
    EXPECT_EQ(peer.disconnects, 0);
    EXPECT_GE(pin.breaks, 1);
    EXPECT_TRUE(pin.Type() == type); // not restored
}

TEST_F(CBasePinTest, PeerIsDisconnectedWhenTheConnectionCannotBeCompleted)
{
    pin.onComplete = [] { return kOwnError; };

    EXPECT_EQ(pin.Connect(&peer, &type), kOwnError);

    EXPECT_EQ(peer.disconnects, 1);
    EXPECT_EQ(peer.Connected(), nullptr);
    EXPECT_FALSE(pin.IsConnected());
    EXPECT_EQ(peer.References(), 0);
}

TEST_F(CBasePinTest, ExceptionsWhileConnectingBecomeFailures)
{
    pin.onComplete = []() -> HRESULT { throw std::bad_alloc(); };
    EXPECT_EQ(pin.Connect(&peer, &type), E_OUTOFMEMORY);
    EXPECT_EQ(peer.disconnects, 1);
    EXPECT_EQ(pin.ReceiveConnection(&peer, &type), E_OUTOFMEMORY);
    EXPECT_FALSE(pin.IsConnected());

    pin.onCheck = [](const CMediaType&) -> HRESULT { throw std::runtime_error("by the test"); };
    EXPECT_EQ(pin.Connect(&peer, &type), E_UNEXPECTED);
    EXPECT_EQ(peer.References(), 0);
}

TEST_F(CBasePinTest, AcceptsAConnectionFromItsPeer)
{
    EXPECT_EQ(pin.ReceiveConnection(&peer, &type), S_OK);

    EXPECT_EQ(pin.GetConnected(), &peer);
    EXPECT_TRUE(pin.Type() == type);
}

TEST_F(CBasePinTest, AcceptedConnectionIsUndoneWhenItCannotBeCompleted)
{
    pin.onComplete = [] { return kOwnError; };

    EXPECT_EQ(pin.ReceiveConnection(&peer, &type), kOwnError);

    EXPECT_FALSE(pin.IsConnected());
    EXPECT_EQ(peer.References(), 0);
    EXPECT_EQ(pin.breaks, 1);
}

TEST_F(CBasePinTest, ThePeersTypesComeFirst)
{
    peer.offers = {TypeNumber(3)};
    pin.types = {TypeNumber(4)};

    EXPECT_EQ(pin.Connect(&peer, nullptr), S_OK);

    EXPECT_TRUE(pin.Type() == TypeNumber(3));
}

TEST_F(CBasePinTest, OwnTypesComeFirstOnRequest)
{
    pin.TryOwnTypesFirst();
    peer.offers = {TypeNumber(3)};
    pin.types = {TypeNumber(4)};

    EXPECT_EQ(pin.Connect(&peer, nullptr), S_OK);

    EXPECT_TRUE(pin.Type() == TypeNumber(4));
}

TEST_F(CBasePinTest, OwnTypesFollowWhenThePeerHasNone)
{
    pin.types = {TypeNumber(4), TypeNumber(5)};
    pin.onCheck = [](const CMediaType& t) { return t == TypeNumber(5) ? S_OK : S_FALSE; };

    EXPECT_EQ(pin.Connect(&peer, nullptr), S_OK);
    EXPECT_TRUE(pin.Type() == TypeNumber(5));
    pin.Disconnect();
    peer.Disconnect();
    peer.enumerating = VFW_E_NOT_CONNECTED; // a pin that has no list before its other side is connected
    EXPECT_EQ(pin.Connect(&peer, nullptr), S_OK);
}

TEST_F(CBasePinTest, PartialTypeSelectsAmongTheOffers)
{
    CMediaType partial;
    partial.SetSubtype(TypeNumber(5).Subtype());
    pin.types = {TypeNumber(4), TypeNumber(5), TypeNumber(6)};
    int checks = 0;
    pin.onCheck = [&](const CMediaType&) {
        ++checks;
        return S_OK;
    };

    EXPECT_EQ(pin.Connect(&peer, &partial), S_OK);

    EXPECT_TRUE(pin.Type() == TypeNumber(5));
    EXPECT_EQ(checks, 1);
}

TEST_F(CBasePinTest, WithoutACommonTypeThereIsNoConnection)
{
    EXPECT_EQ(pin.Connect(&peer, nullptr), VFW_E_NO_ACCEPTABLE_TYPES);

    pin.types = {TypeNumber(1)};
    pin.onCheck = [](const CMediaType&) { return S_FALSE; };
    EXPECT_EQ(pin.Connect(&peer, nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
    pin.onCheck = [](const CMediaType&) { return E_FAIL; };
    EXPECT_EQ(pin.Connect(&peer, nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
}

TEST_F(CBasePinTest, FirstSpecificErrorOfAListIsReported)
{
    pin.types = {TypeNumber(1), TypeNumber(2), TypeNumber(3)};
    pin.onCheck = [](const CMediaType& t) {
        if (t == TypeNumber(1))
            return E_FAIL;
        return t == TypeNumber(2) ? kOwnError : kOtherError;
    };

    EXPECT_EQ(pin.Connect(&peer, nullptr), kOwnError);
}

TEST_F(CBasePinTest, SpecificErrorOfTheLastListIsReported)
{
    peer.offers = {TypeNumber(1)};
    pin.types = {TypeNumber(2)};
    pin.onCheck = [](const CMediaType& t) { return t == TypeNumber(1) ? kOwnError : kOtherError; };
    EXPECT_EQ(pin.Connect(&peer, nullptr), kOtherError);

    pin.onCheck = [](const CMediaType& t) { return t == TypeNumber(1) ? kOwnError : S_FALSE; };
    EXPECT_EQ(pin.Connect(&peer, nullptr), kOwnError);
}

TEST_F(CBasePinTest, ListThatCannotBeResetFails)
{
    peer.resetting = kOwnError;

    EXPECT_EQ(pin.Connect(&peer, nullptr), kOwnError);
}

TEST_F(CBasePinTest, SearchGoesOnAfterATypeThatFails)
{
    pin.types = {TypeNumber(1), TypeNumber(2)};
    peer.onReceiveConnection = [](IPin*, const AM_MEDIA_TYPE* t) {
        return TypeNumber(2) == CMediaType(*t) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    };

    EXPECT_EQ(pin.Connect(&peer, nullptr), S_OK);

    EXPECT_TRUE(pin.Type() == TypeNumber(2));
}

} // namespace
