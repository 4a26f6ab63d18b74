#include "BaseClasses/ModuleEntryPoints.h"

#include "BaseClasses/CAMThread.h"
#include "BaseClasses/CFactoryTemplate.h"
#include "BaseClasses/ModuleRegistration.h"
#include "BaseClasses/VxComPtr.h"
#include "support/directshow/TestObject.h"
#include "unit/BaseClasses/FakeFilterMapper.h"
#include "unit/BaseClasses/FrameworkTest.h"

#include <objidl.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace {

constexpr CLSID kThingClass = {0x21, 0, 0, {}};
constexpr CLSID kOtherClass = {0x22, 0, 0, {}};
constexpr CLSID kUnknownClass = {0x23, 0, 0, {}};

int g_ends = 0;

class Thing final : public CUnknown, public IPersist {
public:
    DECLARE_IUNKNOWN

    explicit Thing(LPUNKNOWN outer) : CUnknown("thing", outer) {}
    ~Thing() override { ++g_ends; }
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override
    {
        if (riid == IID_IPersist)
            return GetInterface(static_cast<IPersist*>(this), object);
        return CUnknown::NonDelegatingQueryInterface(riid, object);
    }
    STDMETHODIMP GetClassID(CLSID*) override { return E_NOTIMPL; }
};

std::function<CUnknown*(LPUNKNOWN, HRESULT*)> g_create;
std::string g_loads;

CUnknown* CALLBACK CreateThing(LPUNKNOWN outer, HRESULT* phr)
{
    return g_create(outer, phr);
}

void CALLBACK NoteLoading(BOOL loading, const CLSID* clsid)
{
    g_loads.append(loading ? "+" : "-").append(std::to_string(clsid->Data1)).append(" ");
}

} // namespace

CFactoryTemplate g_Templates[] = {
    {L"Thing", &kThingClass, CreateThing, NoteLoading, nullptr},
    {L"Other", &kOtherClass, CreateThing, nullptr, nullptr},
};
int g_cTemplates = ARRAYSIZE(g_Templates);

namespace {

class ModuleEntryPointsTest : public FrameworkTest {
protected:
    ModuleEntryPointsTest()
    {
        g_ends = 0;
        g_create = [](LPUNKNOWN outer, HRESULT*) { return new Thing(outer); };
    }
    VxComPtr<IClassFactory> Factory()
    {
        VxComPtr<IClassFactory> factory;
        EXPECT_EQ(::DllGetClassObject(kThingClass, IID_IClassFactory, factory.PutVoid()), S_OK);
        return factory;
    }
};

class CClassFactoryTest : public ModuleEntryPointsTest {
protected:
    VxComPtr<IClassFactory> factory = Factory();
    VxComPtr<IPersist> thing;
};

TEST_F(ModuleEntryPointsTest, GivesOutAFactoryForEachClass)
{
    VxComPtr<IUnknown> factory;

    EXPECT_EQ(::DllGetClassObject(kThingClass, IID_IUnknown, factory.PutVoid()), S_OK);
    EXPECT_EQ(::DllGetClassObject(kOtherClass, IID_IClassFactory, factory.PutVoid()), S_OK);
}

TEST_F(ModuleEntryPointsTest, FactoryHasOneReference)
{
    EXPECT_EQ(Factory().Detach()->Release(), 0u);
}

TEST_F(ModuleEntryPointsTest, RefusesWhatItDoesNotHave)
{
    void* object = &object;
    EXPECT_EQ(::DllGetClassObject(kUnknownClass, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    object = &object;
    EXPECT_EQ(::DllGetClassObject(kUnknownClass, IID_IPersist, &object), E_NOINTERFACE); // asked about first
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(::DllGetClassObject(kThingClass, IID_IClassFactory, nullptr), E_POINTER);
}

TEST_F(ModuleEntryPointsTest, CanUnloadWhenNothingIsLeft)
{
    EXPECT_EQ(::DllCanUnloadNow(), S_OK);

    VxComPtr<IClassFactory> factory = Factory();
    EXPECT_EQ(::DllCanUnloadNow(), S_FALSE);
    VxComPtr<IPersist> thing;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPersist, thing.PutVoid()), S_OK);
    factory.Reset();
    EXPECT_EQ(::DllCanUnloadNow(), S_FALSE);
    thing.Reset();
    EXPECT_EQ(::DllCanUnloadNow(), S_OK);
}

TEST_F(ModuleEntryPointsTest, CannotUnloadWhileLocked)
{
    VxComPtr<IClassFactory> factory = Factory();
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    factory.Reset();
    EXPECT_EQ(::DllCanUnloadNow(), S_FALSE);

    factory = Factory();
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    factory.Reset();

    EXPECT_EQ(::DllCanUnloadNow(), S_OK);
}

TEST_F(ModuleEntryPointsTest, CannotUnloadWhileAThreadRuns)
{
    class Worker final : public CAMThread {
    public:
        ~Worker() override { Close(); }
        DWORD ThreadProc() override
        {
            const DWORD command = GetRequest();
            Reply(command);
            return 0;
        }
    };
    Worker worker;
    ASSERT_TRUE(worker.Create());
    while (::DllCanUnloadNow() == S_OK) // until it has begun
        ::SwitchToThread();

    EXPECT_EQ(::DllCanUnloadNow(), S_FALSE);
    EXPECT_EQ(worker.CallWorker(5), 5u);
    worker.Close();
    EXPECT_EQ(::DllCanUnloadNow(), S_OK);
}

TEST_F(ModuleEntryPointsTest, LoadingAndUnloadingTellsTheClasses)
{
    g_loads.clear();
    const HINSTANCE module = ::GetModuleHandleW(nullptr);

    EXPECT_TRUE(DllEntryPoint(module, DLL_PROCESS_ATTACH, nullptr));
    EXPECT_TRUE(DllEntryPoint(module, DLL_THREAD_ATTACH, nullptr));
    EXPECT_TRUE(DllEntryPoint(module, DLL_PROCESS_DETACH, nullptr));

    EXPECT_EQ(g_loads, "+33 -33 ");
    EXPECT_EQ(g_hInst, module);
    EXPECT_EQ(g_amPlatform, static_cast<DWORD>(VER_PLATFORM_WIN32_NT));
    EXPECT_GE(g_osInfo.dwMajorVersion, 6u);
}

TEST_F(CClassFactoryTest, AnswersItsInterfacesOnly)
{
    VxComPtr<IUnknown> identity;
    EXPECT_EQ(factory->QueryInterface(IID_IUnknown, identity.PutVoid()), S_OK);
    EXPECT_EQ(identity.Get(), factory.Get());
    void* none = &none;
    EXPECT_EQ(factory->QueryInterface(IID_IPersist, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(factory->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(CClassFactoryTest, CreatesAnObjectWithOneReference)
{
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPersist, thing.PutVoid()), S_OK);

    EXPECT_EQ(thing.Detach()->Release(), 0u);
    EXPECT_EQ(g_ends, 1);
}

TEST_F(CClassFactoryTest, EndsAnObjectThatLacksTheInterface)
{
    void* object = &object;

    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IStream, &object), E_NOINTERFACE);

    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(g_ends, 1);
}

TEST_F(CClassFactoryTest, ChecksItsArguments)
{
    class Outer final : public TestObject<IUnknown> {};
    Outer outer;

    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPersist, nullptr), E_POINTER);
    EXPECT_EQ(factory->CreateInstance(&outer, IID_IPersist, thing.PutVoid()), E_NOINTERFACE);
}

TEST_F(CClassFactoryTest, AggregatesForIUnknown)
{
    class Outer final : public TestObject<IUnknown> {};
    Outer outer;
    VxComPtr<IUnknown> inner;

    ASSERT_EQ(factory->CreateInstance(&outer, IID_IUnknown, inner.PutVoid()), S_OK);

    EXPECT_NE(inner.Get(), &outer);
    EXPECT_EQ(inner->QueryInterface(IID_IPersist, thing.PutVoid()), S_OK);
    EXPECT_EQ(outer.References(), 1);
    thing.Reset();
}

TEST_F(CClassFactoryTest, FailureWithoutAnObjectIsReturned)
{
    g_create = [](LPUNKNOWN, HRESULT* phr) {
        *phr = E_ACCESSDENIED;
        return nullptr;
    };
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPersist, thing.PutVoid()), E_ACCESSDENIED);

    g_create = [](LPUNKNOWN, HRESULT*) { return nullptr; };
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPersist, thing.PutVoid()), E_OUTOFMEMORY);
}

TEST_F(CClassFactoryTest, ObjectWithAFailureIsDeleted)
{
    g_create = [](LPUNKNOWN outer, HRESULT* phr) {
        *phr = E_ACCESSDENIED;
        return new Thing(outer);
    };

    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPersist, thing.PutVoid()), E_ACCESSDENIED);

    EXPECT_EQ(g_ends, 1);
    EXPECT_EQ(thing.Get(), nullptr);
}

TEST_F(CClassFactoryTest, ExceptionOfACreationBecomesAFailure)
{
    g_create = [](LPUNKNOWN, HRESULT*) -> CUnknown* { throw std::bad_alloc(); };
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPersist, thing.PutVoid()), E_OUTOFMEMORY);

    g_create = [](LPUNKNOWN, HRESULT*) -> CUnknown* { throw std::runtime_error("by the test"); };
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPersist, thing.PutVoid()), E_UNEXPECTED);
}

TEST_F(CClassFactoryTest, RowCreatesNothingWithoutAPlaceForTheResult)
{
    EXPECT_EQ(g_Templates[0].CreateInstance(nullptr, nullptr), nullptr);
    EXPECT_TRUE(g_Templates[0].IsClassID(kThingClass));
    EXPECT_FALSE(g_Templates[0].IsClassID(kOtherClass));
}

} // namespace
