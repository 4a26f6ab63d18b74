#pragma once

#include <windows.h>

#include <unknwn.h>

#include <gtest/gtest.h>

/// A COM object of a test: written without the base classes, so that it can judge them. It is a variable of
/// the test; references are counted and do not end it, and at its end none may be left.
///
/// Owner:  the test.
/// Thread: any; the count is interlocked.
template <typename First, typename... Rest>
class TestObject : public First, public Rest... {
public:
    TestObject() = default;
    virtual ~TestObject()
    {
        EXPECT_EQ(m_references, 0) << "somebody still holds (or released too often) a test object";
    }
    TestObject(const TestObject&) = delete;
    TestObject& operator=(const TestObject&) = delete;

    STDMETHODIMP QueryInterface(REFIID riid, void** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        *object = nullptr;
        if (Hides(riid))
            return E_NOINTERFACE;
        if (riid == IID_IUnknown || IsBase(riid))
            *object = static_cast<First*>(this);
        else if (!Find<First>(riid, object))
            static_cast<void>((Find<Rest>(riid, object) || ...));
        if (*object == nullptr)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override
    {
        return static_cast<ULONG>(::InterlockedIncrement(&m_references));
    }
    STDMETHODIMP_(ULONG) Release() override
    {
        const LONG count = ::InterlockedDecrement(&m_references);
        if (count == 0)
            OnLastRelease();
        return static_cast<ULONG>(count);
    }

    [[nodiscard]] LONG References() const { return m_references; }

protected:
    /// Interfaces that the test wants refused.
    [[nodiscard]] virtual bool Hides(REFIID /*riid*/) const { return false; }
    /// Interfaces from which the first one derives.
    [[nodiscard]] virtual bool IsBase(REFIID /*riid*/) const { return false; }
    virtual void OnLastRelease() {}

private:
    template <typename Interface>
    bool Find(REFIID riid, void** object)
    {
        if (riid != __uuidof(Interface))
            return false;
        *object = static_cast<Interface*>(this);
        return true;
    }

    LONG m_references = 0; // interlocked
};
