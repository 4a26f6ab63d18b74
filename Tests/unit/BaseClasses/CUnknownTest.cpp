#include "BaseClasses/CUnknown.h"

#include "BaseClasses/VxComPtr.h"
#include "support/directshow/TestObject.h"
#include "unit/BaseClasses/FrameworkTest.h"

#include <objidl.h>

namespace {

/// An object with one interface.
class Thing final : public CUnknown, public IPersist {
public:
    DECLARE_IUNKNOWN

    Thing(LPUNKNOWN outer, bool* ended) : CUnknown("thing", outer), m_ended(ended) {}
    ~Thing() override
    {
        // A pair in the destructor, as when an object lets go of something that still knows it.
        countInDestructor = NonDelegatingAddRef() - 1;
        NonDelegatingRelease();
        *m_ended = true;
    }

    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override
    {
        if (riid == IID_IPersist)
            return GetInterface(static_cast<IPersist*>(this), object);
        return CUnknown::NonDelegatingQueryInterface(riid, object);
    }
    STDMETHODIMP GetClassID(CLSID* clsid) override
    {
        *clsid = CLSID_NULL;
        return S_OK;
    }

    static inline ULONG countInDestructor = 0;

private:
    bool* m_ended;
};

class CUnknownTest : public FrameworkTest {
protected:
    bool ended = false;
    Thing* thing = new Thing(nullptr, &ended);
};

TEST_F(CUnknownTest, CountStartsAtZero)
{
    EXPECT_EQ(thing->NonDelegatingAddRef(), 1u);

    EXPECT_EQ(thing->NonDelegatingRelease(), 0u);
    EXPECT_TRUE(ended);
}

TEST_F(CUnknownTest, GivesTheSameIdentityThroughEveryInterface)
{
    const VxComPtr<IPersist> persist(thing);
    VxComPtr<IUnknown> direct;
    VxComPtr<IUnknown> throughInterface;

    ASSERT_EQ(thing->NonDelegatingQueryInterface(IID_IUnknown, direct.PutVoid()), S_OK);
    ASSERT_EQ(persist->QueryInterface(IID_IUnknown, throughInterface.PutVoid()), S_OK);

    EXPECT_EQ(direct.Get(), throughInterface.Get());
    EXPECT_EQ(direct.Get(), thing->GetOwner());
}

TEST_F(CUnknownTest, OwnTableWorksAsIUnknown)
{
    const VxComPtr<IUnknown> unknown(thing->GetOwner());

    VxComPtr<IPersist> persist;
    EXPECT_EQ(unknown->QueryInterface(IID_IPersist, persist.PutVoid()), S_OK);
    EXPECT_EQ(persist.Get(), static_cast<IPersist*>(thing));
    EXPECT_EQ(unknown->AddRef(), 3u);
    EXPECT_EQ(unknown->Release(), 2u);
}

TEST_F(CUnknownTest, RefusesAnUnknownInterfaceAndClearsTheOutput)
{
    const VxComPtr<IPersist> persist(thing);
    void* object = thing;

    EXPECT_EQ(persist->QueryInterface(IID_IStream, &object), E_NOINTERFACE);

    EXPECT_EQ(object, nullptr);
}

TEST_F(CUnknownTest, RefusesANullOutput)
{
    const VxComPtr<IPersist> persist(thing);

    EXPECT_EQ(persist->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(persist->QueryInterface(IID_IPersist, nullptr), E_POINTER);
    EXPECT_EQ(GetInterface(persist.Get(), nullptr), E_POINTER);
}

TEST_F(CUnknownTest, CountIsOneInsideTheDestructor)
{
    Thing::countInDestructor = 0;
    VxComPtr<IPersist> persist(thing);

    persist.Reset();

    EXPECT_TRUE(ended);
    EXPECT_EQ(Thing::countInDestructor, 1u);
}

TEST_F(CUnknownTest, CountsAsAnActiveObject)
{
    const LONG with = CBaseObject::ObjectsActive();
    VxComPtr<IPersist>(thing).Reset();

    EXPECT_EQ(CBaseObject::ObjectsActive(), with - 1);
}

/// Aggregates: every interface it does not have comes from the inner object.
class Outer final : public TestObject<IErrorInfo> {
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** object) override
    {
        if (inner != nullptr && riid == IID_IPersist)
            return inner->QueryInterface(riid, object);
        return TestObject::QueryInterface(riid, object);
    }
    STDMETHODIMP GetGUID(GUID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetSource(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetDescription(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetHelpFile(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetHelpContext(DWORD*) override { return E_NOTIMPL; }

    IUnknown* inner = nullptr; // held by the test
};

class AggregatedUnknownTest : public FrameworkTest {
protected:
    AggregatedUnknownTest()
    {
        auto* const thing = new Thing(&outer, &ended);
        thing->NonDelegatingAddRef();
        EXPECT_EQ(thing->NonDelegatingQueryInterface(IID_IUnknown, inner.PutVoid()), S_OK);
        thing->NonDelegatingRelease();
        outer.inner = inner.Get();
    }

    bool ended = false;
    Outer outer;
    VxComPtr<IUnknown> inner;
};

TEST_F(AggregatedUnknownTest, CreatorGetsTheInnerTable)
{
    EXPECT_NE(inner.Get(), static_cast<IUnknown*>(&outer));
}

TEST_F(AggregatedUnknownTest, InterfacesCountOnTheOuterObject)
{
    VxComPtr<IPersist> persist;
    ASSERT_EQ(outer.QueryInterface(IID_IPersist, persist.PutVoid()), S_OK);

    EXPECT_EQ(outer.References(), 1);
    persist.Reset();
    EXPECT_EQ(outer.References(), 0);
    EXPECT_FALSE(ended);
}

TEST_F(AggregatedUnknownTest, InterfacesHaveTheOuterIdentity)
{
    VxComPtr<IPersist> persist;
    ASSERT_EQ(inner->QueryInterface(IID_IPersist, persist.PutVoid()), S_OK);
    VxComPtr<IUnknown> identity;
    ASSERT_EQ(persist->QueryInterface(IID_IUnknown, identity.PutVoid()), S_OK);
    VxComPtr<IErrorInfo> ofOuter;

    EXPECT_EQ(identity.Get(), static_cast<IUnknown*>(&outer));
    EXPECT_EQ(persist->QueryInterface(IID_IErrorInfo, ofOuter.PutVoid()), S_OK);
}

TEST_F(AggregatedUnknownTest, EndsWithTheInnerReference)
{
    outer.inner = nullptr;
    inner.Reset();

    EXPECT_TRUE(ended);
}

class IsEqualObjectTest : public FrameworkTest {};

TEST_F(IsEqualObjectTest, ComparesIdentitiesAndReleasesThem)
{
    bool firstEnded = false;
    bool secondEnded = false;
    auto* const first = new Thing(nullptr, &firstEnded);
    auto* const second = new Thing(nullptr, &secondEnded);
    VxComPtr<IPersist> firstPersist(first);
    VxComPtr<IPersist> secondPersist(second);

    EXPECT_TRUE(IsEqualObject(firstPersist.Get(), firstPersist.Get()));
    EXPECT_TRUE(IsEqualObject(firstPersist.Get(), first->GetOwner()));
    EXPECT_FALSE(IsEqualObject(firstPersist.Get(), secondPersist.Get()));
    EXPECT_FALSE(IsEqualObject(firstPersist.Get(), nullptr));
    EXPECT_FALSE(IsEqualObject(nullptr, secondPersist.Get()));

    firstPersist.Reset();
    secondPersist.Reset();
    EXPECT_TRUE(firstEnded);
    EXPECT_TRUE(secondEnded);
}

} // namespace
