#include "BaseClasses/CBaseOutputPin.h"

#include "BaseClasses/VxComPtr.h"
#include "support/directshow/FakeAllocator.h"
#include "support/directshow/SinkPin.h"
#include "unit/BaseClasses/FrameworkTest.h"
#include "unit/BaseClasses/TestFilter.h"

#include <vfwmsgs.h>

namespace {

constexpr HRESULT kOwnError = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x777);
constexpr HRESULT kOtherError = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x778);

class OutputPin final : public CBaseOutputPin {
public:
    OutputPin(CBaseFilter* filter, CCritSec* lock) : CBaseOutputPin("output", filter, lock, nullptr, L"Out")
    {
    }

    std::function<HRESULT(IMemAllocator*)> onDecide = [](IMemAllocator*) { return S_OK; };
    FakeAllocator* own = nullptr; // null: the platform's
    HRESULT making = S_OK;
    std::vector<ALLOCATOR_PROPERTIES> wishes; // as DecideBufferSize was given them

    IMemAllocator* Allocator() const { return m_pAllocator; }
    void SetRunTimeError() { m_bRunTimeError = true; }
    bool HasRunTimeError() const { return m_bRunTimeError; }

    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* wanted) override
    {
        wishes.push_back(*wanted);
        wanted->cbBuffer += 100;
        return onDecide(allocator);
    }
    HRESULT InitAllocator(IMemAllocator** allocator) override
    {
        *allocator = nullptr;
        if (FAILED(making))
            return making;
        if (own == nullptr)
            return CBaseOutputPin::InitAllocator(allocator);
        *allocator = VxComPtr<IMemAllocator>(own).Detach();
        return S_OK;
    }
};

class CBaseOutputPinTest : public FrameworkTest {
protected:
    ~CBaseOutputPinTest() override
    {
        theirs.decommitting = ours.decommitting = S_OK;
        pin.Disconnect();
        peer.Disconnect();
    }
    HRESULT Connect() { return pin.Connect(&peer, &type); }

    FakeAllocator theirs;
    FakeAllocator ours;
    SinkPin peer;
    TestFilter& filter = *new TestFilter;
    VxComPtr<IBaseFilter> held{&filter};
    OutputPin pin{&filter, &filter.Lock()};
    const CMediaType type = TypeNumber(1);
};

TEST_F(CBaseOutputPinTest, PeerWithoutMemoryTransportIsRefused)
{
    peer.takesSamples = false;

    EXPECT_EQ(Connect(), E_NOINTERFACE);

    EXPECT_FALSE(pin.IsConnected());
}

TEST_F(CBaseOutputPinTest, PeerOfTheSameDirectionIsRefused)
{
    peer.direction = PINDIR_OUTPUT;

    EXPECT_EQ(Connect(), VFW_E_INVALID_DIRECTION);
}

TEST_F(CBaseOutputPinTest, UsesThePeersAllocator)
{
    peer.allocator = VxComPtr<IMemAllocator>(&theirs);
    BOOL isReadOnly = TRUE;
    IMemAllocator* told = nullptr;
    peer.onNotifyAllocator = [&](IMemAllocator* allocator, BOOL readOnly) {
        told = allocator;
        isReadOnly = readOnly;
        return S_OK;
    };

    EXPECT_EQ(Connect(), S_OK);

    EXPECT_EQ(pin.Allocator(), &theirs);
    EXPECT_EQ(told, &theirs);
    EXPECT_FALSE(isReadOnly);
}

TEST_F(CBaseOutputPinTest, BringsItsOwnAllocatorWhenThePeerHasNone)
{
    pin.own = &ours;

    EXPECT_EQ(Connect(), S_OK);

    EXPECT_EQ(pin.Allocator(), &ours);
}

TEST_F(CBaseOutputPinTest, BringsItsOwnAllocatorWhenThePeerRefusesItsOwn)
{
    peer.allocator = VxComPtr<IMemAllocator>(&theirs);
    pin.own = &ours;
    peer.onNotifyAllocator = [&](IMemAllocator* allocator, BOOL) {
        return allocator == &theirs ? kOwnError : S_OK;
    };

    EXPECT_EQ(Connect(), S_OK);

    EXPECT_EQ(pin.Allocator(), &ours);
    peer.allocator.Reset();
    EXPECT_EQ(theirs.References(), 0);
}

TEST_F(CBaseOutputPinTest, BringsItsOwnAllocatorWhenItCannotUseThePeers)
{
    peer.allocator = VxComPtr<IMemAllocator>(&theirs);
    pin.own = &ours;
    pin.onDecide = [&](IMemAllocator* allocator) { return allocator == &theirs ? kOwnError : S_OK; };

    EXPECT_EQ(Connect(), S_OK);

    EXPECT_EQ(pin.Allocator(), &ours);
}

TEST_F(CBaseOutputPinTest, LastFailureIsTheResultOfTheConnection)
{
    peer.allocator = VxComPtr<IMemAllocator>(&theirs);
    pin.own = &ours;
    pin.onDecide = [&](IMemAllocator* allocator) { return allocator == &theirs ? kOwnError : kOtherError; };
    EXPECT_EQ(Connect(), kOtherError);

    pin.making = E_ACCESSDENIED;
    EXPECT_EQ(Connect(), E_ACCESSDENIED);
    EXPECT_EQ(pin.Allocator(), nullptr);
    EXPECT_EQ(ours.References(), 0);
    EXPECT_EQ(peer.Connected(), nullptr);
}

TEST_F(CBaseOutputPinTest, PassesOnWhatThePeerRequires)
{
    pin.own = &ours;
    peer.requiring = S_OK;
    peer.requirements = {3, 5000, 16, 4};

    EXPECT_EQ(Connect(), S_OK);

    ASSERT_EQ(pin.wishes.size(), 1u);
    EXPECT_EQ(pin.wishes[0].cBuffers, 3);
    EXPECT_EQ(pin.wishes[0].cbBuffer, 5000);
    EXPECT_EQ(pin.wishes[0].cbAlign, 16);
    EXPECT_EQ(pin.wishes[0].cbPrefix, 4);
}

TEST_F(CBaseOutputPinTest, AlignmentIsAtLeastOne)
{
    pin.own = &ours;

    EXPECT_EQ(Connect(), S_OK);

    ASSERT_EQ(pin.wishes.size(), 1u);
    EXPECT_EQ(pin.wishes[0].cbAlign, 1);
    EXPECT_EQ(pin.wishes[0].cBuffers, 0);
}

TEST_F(CBaseOutputPinTest, SecondAttemptStartsFromWhatTheFirstOneLeft)
{
    peer.allocator = VxComPtr<IMemAllocator>(&theirs);
    pin.own = &ours;
    pin.onDecide = [&](IMemAllocator* allocator) { return allocator == &theirs ? kOwnError : S_OK; };

    EXPECT_EQ(Connect(), S_OK);

    ASSERT_EQ(pin.wishes.size(), 2u);
    EXPECT_EQ(pin.wishes[1].cbBuffer, pin.wishes[0].cbBuffer + 100);
}

TEST_F(CBaseOutputPinTest, ThePlatformsAllocatorIsTheDefault)
{
    pin.onDecide = [](IMemAllocator* allocator) {
        ALLOCATOR_PROPERTIES wanted = {2, 64, 1, 0};
        ALLOCATOR_PROPERTIES actual = {};
        const HRESULT hr = allocator->SetProperties(&wanted, &actual);
        return SUCCEEDED(hr) && actual.cBuffers == 2 && actual.cbBuffer == 64 ? S_OK : E_FAIL;
    };
    ASSERT_EQ(Connect(), S_OK);
    VxComPtr<IMediaSample> sample;
    EXPECT_EQ(pin.GetDeliveryBuffer(sample.Put(), nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);

    EXPECT_EQ(pin.Active(), S_OK);
    EXPECT_EQ(pin.GetDeliveryBuffer(sample.Put(), nullptr, nullptr, 0), S_OK);
    EXPECT_EQ(sample->GetSize(), 64);
    EXPECT_EQ(pin.Deliver(sample.Get()), S_OK);
    EXPECT_EQ(peer.samples.Count(), 1);
    sample.Reset();
    EXPECT_EQ(pin.Inactive(), S_OK);
}

TEST_F(CBaseOutputPinTest, ActiveAndInactiveCommitAndDecommit)
{
    EXPECT_EQ(pin.Active(), VFW_E_NO_ALLOCATOR);
    EXPECT_EQ(pin.Inactive(), VFW_E_NO_ALLOCATOR);
    pin.own = &ours;
    ASSERT_EQ(Connect(), S_OK);

    EXPECT_EQ(pin.Active(), S_OK);
    EXPECT_EQ(ours.commits, 1);
    pin.SetRunTimeError();
    EXPECT_EQ(pin.Inactive(), S_OK);
    EXPECT_EQ(ours.decommits, 1);
    EXPECT_FALSE(pin.HasRunTimeError());
    ours.committing = kOwnError;
    EXPECT_EQ(pin.Active(), kOwnError);
}

TEST_F(CBaseOutputPinTest, DisconnectDecommitsAndLetsGo)
{
    pin.own = &ours;
    ASSERT_EQ(Connect(), S_OK);

    EXPECT_EQ(pin.Disconnect(), S_OK);

    EXPECT_EQ(ours.decommits, 1);
    EXPECT_EQ(ours.References(), 0);
    EXPECT_EQ(peer.References(), 0);
}

TEST_F(CBaseOutputPinTest, AllocatorThatRefusesDecommitKeepsThePinConnected)
{
    pin.own = &ours;
    ASSERT_EQ(Connect(), S_OK);
    ours.decommitting = kOwnError;

    EXPECT_EQ(pin.Disconnect(), kOwnError);

    EXPECT_TRUE(pin.IsConnected());
    EXPECT_EQ(pin.Allocator(), &ours);
}

TEST_F(CBaseOutputPinTest, UnconnectedPinDeliversNothing)
{
    VxComPtr<IMediaSample> sample;

    EXPECT_EQ(pin.GetDeliveryBuffer(sample.Put(), nullptr, nullptr, 0), E_NOINTERFACE);
    EXPECT_EQ(pin.Deliver(nullptr), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(pin.DeliverEndOfStream(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(pin.DeliverBeginFlush(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(pin.DeliverEndFlush(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(pin.DeliverNewSegment(0, 1, 1.0), VFW_E_NOT_CONNECTED);
}

TEST_F(CBaseOutputPinTest, EventsReachThePeer)
{
    pin.own = &ours;
    ASSERT_EQ(Connect(), S_OK);

    EXPECT_EQ(pin.DeliverBeginFlush(), S_OK);
    EXPECT_EQ(pin.DeliverEndFlush(), S_OK);
    EXPECT_EQ(pin.DeliverNewSegment(0, 1, 1.0), S_OK);
    EXPECT_EQ(pin.DeliverEndOfStream(), S_OK);

    EXPECT_EQ(peer.events, (std::vector<std::string>{"begin flush", "end flush", "segment"}));
    EXPECT_EQ(peer.ends.Count(), 1);
}

TEST_F(CBaseOutputPinTest, EventsFromDownstreamAreUnexpected)
{
    EXPECT_EQ(pin.EndOfStream(), E_UNEXPECTED);
    EXPECT_EQ(pin.BeginFlush(), E_UNEXPECTED);
    EXPECT_EQ(pin.EndFlush(), E_UNEXPECTED);
}

} // namespace
