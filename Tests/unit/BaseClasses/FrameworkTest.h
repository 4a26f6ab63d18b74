#pragma once

#include "BaseClasses/CBaseObject.h"
#include "support/directshow/ComApartment.h"

#include <gtest/gtest.h>

/// Every test of the framework checks that the objects it made are gone at its end.
class FrameworkTest : public testing::Test {
protected:
    ~FrameworkTest() override
    {
        EXPECT_EQ(CBaseObject::ObjectsActive(), m_before) << "objects of the framework outlived the test";
    }

private:
    const ComApartment m_com;
    const LONG m_before = CBaseObject::ObjectsActive();
};
