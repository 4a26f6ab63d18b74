#pragma once

#include "HostFilter.h"

#include "support/camera/CameraDouble.h"
#include "support/directshow/ComApartment.h"
#include "support/registry/PrivateUserRegistry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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
