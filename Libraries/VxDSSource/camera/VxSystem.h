#pragma once

#include "VxBase/VxResult.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

class VxInterface;
class VxSystemImpl;

/// A discovery context: finds the cameras on every interface of this machine.
///
/// Owner:  whoever looks for cameras, by value.
/// Thread: one at a time.
class VxSystem {
public:
    VxSystem();
    ~VxSystem();
    VxSystem(const VxSystem&) = delete;
    VxSystem& operator=(const VxSystem&) = delete;

    /// @param timeoutMs  how long Find waits for answers, on all interfaces at once; 1500 at first
    void SetDetectionTimeout(std::uint32_t timeoutMs);

    /// Asks every interface and waits for the detection time-out.
    ///
    /// Records borrowed before become invalid. An interface that cannot be used is skipped and never fails
    /// the scan.
    /// @return  OK also when no camera answered
    VxResult Find();

    [[nodiscard]] std::size_t GetInterfaceCount() const;

    /// @return  borrowed until the next Find; null for an index without an interface. Order: by the
    ///          system's numbers, the same from search to search.
    [[nodiscard]] const VxInterface* GetInterface(std::size_t index) const;

private:
    std::unique_ptr<VxSystemImpl> m_impl;
};
