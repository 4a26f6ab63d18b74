#pragma once

#include "BaseClasses/CSource.h"
#include "VxDSSource/stream/VxDSStream.h"
#include "support/camera/CameraDouble.h"
#include "support/directshow/ComApartment.h"
#include "support/registry/PrivateUserRegistry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// A filter that does nothing but own the pin under test.
///
/// Owner:  its references: PinFixture has one.
/// Thread: any.
class HostFilter final : public CSource {
public:
    HostFilter() : CSource("host", nullptr, CLSID_NULL)
    {
        HRESULT hr = S_OK;
        m_pin = new VxDSStream(&hr, this, L"Output");
        EXPECT_EQ(hr, S_OK);
    }

    [[nodiscard]] VxDSStream& Pin() { return *m_pin; }

private:
    VxDSStream* m_pin = nullptr; // owned by CSource
};

/// A pin with the scripted camera behind it and a registry of its own.
class PinFixture : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    PinFixture() { TheCamera().Reset(); }
    ~PinFixture() override
    {
        DestroyPin();
        TheCamera().Reset(); // checks that nothing is left
    }

    /// Makes the pin; tests that script its construction call it themselves.
    VxDSStream& Pin()
    {
        if (m_host == nullptr) {
            m_host = new HostFilter;
            m_host->NonDelegatingAddRef();
        }
        return m_host->Pin();
    }

    [[nodiscard]] HostFilter& Host()
    {
        Pin();
        return *m_host;
    }

    void DestroyPin()
    {
        if (m_host != nullptr) {
            EXPECT_EQ(m_host->NonDelegatingRelease(), 0u) << "somebody still holds the filter or its pin";
        }
        m_host = nullptr;
    }

    vxds::SettingsRecord& Settings() { return Pin().Settings(); }
    void Store(vxds::Setting setting, std::uint32_t number) { Settings().Store(setting, number); }
    void Store(vxds::Setting setting, const wchar_t* text) { Settings().Store(setting, std::wstring(text)); }

    /// Connects in role 0 and forgets the calls that took.
    void ConnectAndForget()
    {
        Store(vxds::Setting::DeviceId, L"cam");
        Pin().ApplyConnection();
        TheCamera().log.Clear();
    }

    /// What was done since the last call.
    Lines Done()
    {
        Lines actions = TheCamera().Actions();
        TheCamera().log.Clear();
        return actions;
    }

    ComApartment m_com;
    PrivateUserRegistry m_registry;

private:
    HostFilter* m_host = nullptr;
};
