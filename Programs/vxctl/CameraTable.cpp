#include "vxctl/CameraTable.h"

#include "VxDSSource/camera/VxDeviceInfo.h"
#include "VxDSSource/camera/VxInterface.h"
#include "VxDSSource/camera/VxSystem.h"

#include "vxctl/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vxctl {
namespace {

constexpr const char* kReady = "ready";
constexpr const char* kNoAddress = "no address";
constexpr const char* kAddressUsedTwice = "address used twice";
constexpr const char* kWrongSubnet = "wrong subnet";

struct Column {
    const char* title;
    const char* key;
    std::string CameraRow::*cell;
};

constexpr std::array kColumns{Column{"ID", "id", &CameraRow::id},
                              Column{"MODEL", "model", &CameraRow::model},
                              Column{"SERIAL", "serial", &CameraRow::serial},
                              Column{"NAME", "name", &CameraRow::userName},
                              Column{"ADDRESS", "address", &CameraRow::address},
                              Column{"INTERFACE", "interface", &CameraRow::interface},
                              Column{"STATE", "state", &CameraRow::state}};

// For programs only: the table is wide enough without them.
constexpr std::array kMoreKeys{Column{"", "manufacturer", &CameraRow::manufacturer},
                               Column{"", "type", &CameraRow::type}};

CameraRow RowOf(const VxDeviceInfo& camera, const VxInterface& interface)
{
    CameraRow row;
    row.id = camera.GetConnectionID().Narrow();
    row.type = camera.GetType() == VxDeviceInfoType::U3v ? "USB3 Vision" : "GigE Vision";
    row.manufacturer = camera.GetManufacturerName().Narrow();
    row.model = camera.GetModelName().Narrow();
    row.serial = camera.GetSerialNumber().Narrow();
    row.userName = camera.GetUserDefinedName().Narrow();
    row.address = camera.GetIPAddress().Narrow();
    row.interface = interface.GetDisplayName().Narrow();
    return row;
}

} // namespace

std::vector<CameraRow> RowsOf(const VxSystem& system)
{
    std::vector<CameraRow> rows;
    std::vector<bool> isValid;
    for (std::size_t i = 0; i < system.GetInterfaceCount(); ++i) {
        const VxInterface& interface = *system.GetInterface(i);
        for (std::size_t j = 0; j < interface.GetDeviceCount(); ++j) {
            const VxDeviceInfo& camera = *interface.GetDeviceInfo(j);
            rows.push_back(RowOf(camera, interface));
            isValid.push_back(camera.IsConfigurationValid());
        }
    }
    TellStates(rows, isValid);
    return rows;
}

void TellStates(std::vector<CameraRow>& rows, const std::vector<bool>& isValid)
{
    for (std::size_t i = 0; i < rows.size(); ++i) {
        CameraRow& row = rows[i];
        const bool isShared = std::any_of(rows.begin(), rows.end(), [&](const CameraRow& other) {
            return other.address == row.address && other.id != row.id;
        });
        if (isValid[i])
            row.state = kReady;
        else if (row.address == "0.0.0.0")
            row.state = kNoAddress;
        else
            row.state = isShared ? kAddressUsedTwice : kWrongSubnet;
    }
}

std::string CameraTableText(const std::vector<CameraRow>& rows)
{
    std::vector<std::vector<std::string>> cells(1);
    for (const Column& column : kColumns)
        cells[0].emplace_back(column.title);
    for (const CameraRow& row : rows) {
        auto& line = cells.emplace_back();
        for (const Column& column : kColumns)
            line.push_back((row.*column.cell).empty() ? "-" : Printable(row.*column.cell));
    }
    return Table(cells);
}

std::string CameraTableJson(const std::vector<CameraRow>& rows)
{
    std::string text = "[";
    for (const CameraRow& row : rows) {
        text += text.size() > 1 ? ",\n {" : "\n {";
        bool isFirst = true;
        const auto add = [&](const Column& column) {
            text += (isFirst ? "" : ", ") + JsonText(column.key) + ": " + JsonText(row.*column.cell);
            isFirst = false;
        };
        std::for_each(kColumns.begin(), kColumns.end(), add);
        std::for_each(kMoreKeys.begin(), kMoreKeys.end(), add);
        text += "}";
    }
    return text + (rows.empty() ? "]\n" : "\n]\n");
}

std::string CameraAdvice(const std::vector<CameraRow>& rows)
{
    for (const CameraRow& row : rows)
        if (row.state != kReady)
            return "A camera that is not ready needs an address in the subnet of its interface, which no "
                   "other device "
                   "has:\n  vxctl force-ip " +
                   Printable(row.id) + " ADDRESS --mask MASK\n";
    return {};
}

} // namespace vxctl
