#include "VxDSSource/stream/VxDSStream.h"

#include "BaseClasses/CAutoLock.h"
#include "VxDSSource/camera/VxConfigurationReader.h"
#include "VxDSSource/camera/VxConfigurationWriter.h"

#include <tuple>
#include <utility>

using namespace vxds;

VxString VxDSStream::StoreConfiguration(VxConfigurationForm form)
{
    VxConfigurationWriter writer;
    {
        const AcquisitionMutex::Lock lock(m_acquisitionMutex);
        const CAutoLock linkLock(m_link.Guard());
        if (form == VxConfigurationForm::Full) {
            // What cannot be stored is missing from the configuration; the settings are there in any case.
            if (m_link.Device() != nullptr && m_link.Device()->IsConnected())
                std::ignore = writer.Store(m_link.Device(), VxString());
            if (m_link.Stream() != nullptr && m_link.Stream()->IsOpen())
                std::ignore = writer.Store(m_link.Stream(), VxString());
        }
        for (const SettingRow& row : kSettingRows)
            std::ignore = writer.Store(m_settings.ToText(row.setting), VxString(row.key));
    }
    VxString text;
    std::ignore = writer.SaveToString(text); // without memory the text is empty
    return text;
}

void VxDSStream::RestoreConfiguration(const VxString& text, VxConfigurationForm form)
{
    VxConfigurationReader reader;
    {
        const AcquisitionMutex::Lock lock(m_acquisitionMutex);
        std::ignore = reader.LoadFromString(text); // what is no configuration holds no entries
        const bool hadDiagnostics = m_settings.Flag(Setting::DiagnosticsEnabled);
        for (const SettingRow& row : kSettingRows) {
            VxString value;
            if (reader.Restore(VxString(row.key), value).IsOK())
                m_settings.FromText(row.setting, value);
        }
        if (hadDiagnostics && !m_settings.Flag(Setting::DiagnosticsEnabled))
            m_statistics.RequestClear(); // of what the diagnostics drew
    }
    ApplyConnection();
    if (form == VxConfigurationForm::SettingsOnly)
        return;

    const AcquisitionMutex::Lock lock(m_acquisitionMutex);
    const CAutoLock linkLock(m_link.Guard());
    // A camera that refuses a feature keeps its own value for it.
    if (reader.GetDeviceCount() > 0 && m_link.Device() != nullptr && m_link.Device()->IsConnected())
        std::ignore = reader.Restore(std::size_t{0}, m_link.Device());
    if (reader.GetStreamCount() > 0 && m_link.Stream() != nullptr && m_link.Stream()->IsOpen())
        std::ignore = reader.Restore(std::size_t{0}, m_link.Stream());
}

void VxDSStream::LoadDefault()
{
    SetDefaultSummary({});
    const auto saved = m_defaults.Load();
    if (!saved)
        return;
    RestoreConfiguration(saved->configuration, VxConfigurationForm::SettingsOnly);
    SetDefaultSummary(saved->summary);
}

bool VxDSStream::SaveDefault()
{
    std::ignore = ClearDefault(); // nothing may have been saved yet
    const VxString configuration = StoreConfiguration(VxConfigurationForm::SettingsOnly);
    const std::wstring summary = SummaryOf(m_settings);
    if (!m_defaults.Write(configuration.Wide(), summary))
        return false;
    SetDefaultSummary(summary);
    return true;
}

bool VxDSStream::ClearDefault()
{
    if (!m_defaults.Delete())
        return false;
    SetDefaultSummary({});
    return true;
}

std::wstring VxDSStream::DefaultSummary() const
{
    const VxLock lock(m_summaryMutex);
    return m_defaultSummary;
}

void VxDSStream::SetDefaultSummary(std::wstring summary)
{
    const VxLock lock(m_summaryMutex);
    m_defaultSummary = std::move(summary);
}
