#pragma once

#include "BaseClasses/CSource.h"
#include "VxDSSource/stream/VxDSStream.h"

#include <gtest/gtest.h>

/// A filter that does nothing but own the pin under test.
///
/// Owner:  its references.
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
