#pragma once

#include "VxCamera/control/FoundCamera.h"
#include "VxDSSource/camera/VxDeviceInfo.h"

/// A camera that answered discovery, as the module sees it.
///
/// Owner:  FoundInterface.
/// Thread: immutable.
class FoundDevice final : public VxDeviceInfo {
public:
    explicit FoundDevice(const control::FoundCamera& found);

    [[nodiscard]] VxString GetConnectionID() const override { return m_connectionId; }
    [[nodiscard]] VxString GetModelName() const override { return m_modelName; }
    [[nodiscard]] VxString GetManufacturerName() const override { return m_manufacturerName; }
    [[nodiscard]] VxString GetSerialNumber() const override { return m_serialNumber; }
    [[nodiscard]] VxString GetUserDefinedName() const override { return m_userDefinedName; }
    [[nodiscard]] VxString GetIPAddress() const override { return m_ipAddress; }
    [[nodiscard]] VxDeviceInfoType GetType() const override { return VxDeviceInfoType::Gev; }
    [[nodiscard]] bool IsConfigurationValid() const override { return m_isConfigurationValid; }

private:
    VxString m_connectionId;
    VxString m_modelName;
    VxString m_manufacturerName;
    VxString m_serialNumber;
    VxString m_userDefinedName;
    VxString m_ipAddress;
    bool m_isConfigurationValid;
};
