#pragma once

#include "BaseClasses/VxComPtr.h"
#include "VxDSSource/filter/IVxDSSource.h"
#include "VxDSSource/filter/Identifiers.h"
#include "VxDSSource/filter/VxDSSource.h"
#include "VxDSSource/stream/VxDSStream.h"
#include "support/camera/CameraDouble.h"
#include "support/directshow/ComApartment.h"
#include "support/registry/PrivateUserRegistry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// A BSTR of a test.
///
/// Owner:  the test.
/// Thread: one at a time.
class TestText {
public:
    TestText() = default;
    explicit TestText(const wchar_t* text) : m_text(::SysAllocString(text)) {}
    ~TestText() { ::SysFreeString(m_text); }
    TestText(const TestText&) = delete;
    TestText& operator=(const TestText&) = delete;

    operator BSTR() const { return m_text; } // NOLINT(google-explicit-constructor)

    /// Where a method puts a new text; what was held is freed.
    [[nodiscard]] BSTR* Put()
    {
        ::SysFreeString(m_text);
        m_text = nullptr;
        return &m_text;
    }

    [[nodiscard]] bool IsNull() const { return m_text == nullptr; }
    [[nodiscard]] std::wstring Get() const
    {
        return m_text != nullptr ? std::wstring(m_text, ::SysStringLen(m_text)) : L"(null)";
    }

private:
    BSTR m_text = nullptr;
};

/// A filter as an application has it, with the scripted camera behind it and a registry of its own.
class FilterFixture : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    FilterFixture() { TheCamera().Reset(); }
    ~FilterFixture() override
    {
        DestroyFilter();
        TheCamera().Reset(); // checks that nothing is left
        EXPECT_EQ(CBaseObject::ObjectsActive(), m_objectsBefore) << "an object was not destroyed";
    }

    /// The filter; made when it is first asked for.
    IBaseFilter& Filter()
    {
        if (!m_filter) {
            HRESULT result = S_OK;
            CUnknown* const object = VxDSSource::CreateInstance(nullptr, &result);
            EXPECT_EQ(result, S_OK);
            m_pin = static_cast<VxDSStream*>(static_cast<VxDSSource*>(object)->GetPin(0));
            object->NonDelegatingAddRef();
            EXPECT_EQ(object->NonDelegatingQueryInterface(IID_IBaseFilter, m_filter.PutVoid()), S_OK);
            object->NonDelegatingRelease();
        }
        return *m_filter.Get();
    }

    template <typename Interface>
    VxComPtr<Interface> As(REFIID iid)
    {
        VxComPtr<Interface> other;
        EXPECT_EQ(Filter().QueryInterface(iid, other.PutVoid()), S_OK);
        return other;
    }

    /// The control interface; borrowed from the filter.
    IVxDSSource& Control()
    {
        if (!m_control)
            m_control = As<IVxDSSource>(IID_IVxDSSource);
        return *m_control.Get();
    }

    /// The filter's pin, on the near side of COM; borrowed.
    VxDSStream& Pin()
    {
        Filter();
        return *m_pin;
    }

    void DestroyFilter()
    {
        m_control.Reset();
        m_pin = nullptr;
        if (IBaseFilter* const filter = m_filter.Detach()) {
            EXPECT_EQ(filter->Release(), 0u) << "somebody still holds the filter";
        }
    }

    void Connect()
    {
        EXPECT_EQ(Control().SetDeviceId(TestText(L"cam")), S_OK);
        EXPECT_EQ(Control().Connect(), S_OK);
        TheCamera().log.Clear();
    }

    Lines Done()
    {
        Lines actions = TheCamera().Actions();
        TheCamera().log.Clear();
        return actions;
    }

    ComApartment m_com;
    PrivateUserRegistry m_registry;

private:
    const LONG m_objectsBefore = CBaseObject::ObjectsActive();
    VxComPtr<IBaseFilter> m_filter;
    VxComPtr<IVxDSSource> m_control;
    VxDSStream* m_pin = nullptr; // borrowed: m_filter owns it; null without memory for one
};
