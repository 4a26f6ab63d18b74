#pragma once

#include "BaseClasses/VxComPtr.h"
#include "conformance/ConformanceModule.h"
#include "conformance/ConformanceSubject.h"
#include "support/directshow/ComApartment.h"
#include "support/directshow/SinkPin.h"
#include "support/registry/PrivateUserRegistry.h"

#include <strmif.h>

#include <gtest/gtest.h>

#include <vector>

/// What every capture filter owes to DirectShow, asked of one: a new object of it for each test, from a
/// module loaded for it. At the end nothing may hold the filter, and the module may be unloaded.
///
/// A test program lists its filters with VX_CONFORMANCE_OF.
class FilterConformanceTest : public testing::TestWithParam<ConformanceSubject> {
protected:
    FilterConformanceTest();
    ~FilterConformanceTest() override;

    /// A new object of the filter.
    VxComPtr<IBaseFilter> CreateFilter();
    /// The filter's first pin.
    VxComPtr<IPin> Output();
    /// Types of a pin, in order.
    static std::vector<CMediaType> TypesOf(IPin& pin);
    FILTER_STATE State();
    /// Connects the filter's pin to the sink.
    void Connect();
    /// Ends the connection at both ends, if there is one.
    void Disconnect();
    /// References held on the filter.
    ULONG References();

    // In this order: what is declared later lets go first.
    const PrivateUserRegistry m_registry; // a filter may have settings saved there, for instance a camera
    const ComApartment m_com;
    const ConformanceModule module{GetParam().dll};
    SinkPin sink;
    VxComPtr<IBaseFilter> filter;
    VxComPtr<IPin> pin;
};

/// The module's registration, by the system's own tool, and what devices are listed afterwards. One at a
/// time: it writes into the registry that every program shares.
class RegistrationConformanceTest : public testing::TestWithParam<ConformanceSubject> {
protected:
    RegistrationConformanceTest();
    ~RegistrationConformanceTest() override;

    /// Runs the system's registration tool on the module.
    /// @return  its exit code
    DWORD RunRegsvr32(const std::wstring& options) const;

    const PrivateUserRegistry m_registry; // of this process only; classes are registered for the machine
    const ComApartment m_com;
    const ConformanceModule module{GetParam().dll};
};

/// Holds a list of subjects to the contract.
#define VX_CONFORMANCE_OF(name, ...)                                                                         \
    INSTANTIATE_TEST_SUITE_P(name, FilterConformanceTest, testing::Values(__VA_ARGS__));                     \
    INSTANTIATE_TEST_SUITE_P(name, RegistrationConformanceTest, testing::Values(__VA_ARGS__))
