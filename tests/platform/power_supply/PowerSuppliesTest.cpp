#include "platform/power_supply/PowerSupplies.h"

#include "tests/support/MadeUpTree.h"

#include <gtest/gtest.h>
#include <sstream>

namespace kqu::platform {
namespace {

using simulation::MadeUpTree;

/// Supplies with their files: "BAT0 type Battery status Full" and so on, one to a line.
void Plug(const MadeUpTree& tree, const std::string& supplies) {
    std::istringstream lines(supplies);
    for (std::string line, name, file, value; std::getline(lines, line);) {
        std::istringstream words(line);
        for (words >> name; words >> file && std::getline(words >> std::ws, value, ',');)
            tree.Write("sys/class/power_supply/" + name + "/" + file, value + "\n");
    }
}

const std::string acOffline = "AC type Mains, online 0\n";
const std::string acOnline = "AC type Mains, online 1\n";
const std::string discharging = "BAT0 type Battery, present 1, status Discharging\n";
const std::string emptyBay = "BAT1 type Battery, present 0, status Discharging\n";
const std::string ups = "ups type UPS, status Discharging\n";

TEST(PowerSuppliesTest, WhatProvidesPower) {
    const std::string usb = "ucsi type USB, online ";
    const std::string role = ", device/typec/port0/power_role ";
    const std::string otherRole = ", device/typec/port1/power_role [source] sink\n";
    const std::pair<std::string, std::string_view> cases[] = {
        {"", "AC Power"},
        {acOnline + "BAT0 type Battery, present 1, status Charging\n", "AC Power"},
        {acOnline + discharging, "AC Power"},
        {acOffline + discharging, "Battery Power"},
        {discharging + emptyBay, "Battery Power"},
        {acOffline + "BAT0 type Battery, status Full", "AC Power"},
        // A battery that does not tell, and empty bays on a dead mains.
        {acOffline + "BAT0 type Battery", "Battery Power"},
        {acOffline + emptyBay, "AC Power"},
        // USB ports that charge, that are fed, that feed a telephone, and without a charger.
        {acOffline + discharging + usb + "2", "AC Power"},
        {discharging + usb + "1" + role + "source [sink]" + otherRole, "AC Power"},
        {discharging + usb + "1" + role + "[source] sink" + otherRole, "Battery Power"},
        // A mouse, and a graphics tablet on its own mains, are not the machine's.
        {"hidpp_battery_0 type Battery, scope Device, status Discharging", "AC Power"},
        {discharging + "wacom type Mains, scope Device, online 1", "Battery Power"},
        {acOffline + ups, "UPS Power"},
        {acOnline + ups, "AC Power"},
        // A UPS on mains, before its battery is used, without a word, and beside a notebook's.
        {"ups type UPS, online 1, status Full", "AC Power"},
        {"ups type UPS, online 0, status Full", "UPS Power"},
        {"ups type UPS", "UPS Power"},
        {discharging + "ups type UPS, online 1, status Charging", "Battery Power"},
        // A wireless charger with a telephone's battery, and a supply without files.
        {discharging + "wireless type Wireless, online 1", "AC Power"},
        {discharging + "bare device/x -", "Battery Power"},
    };
    for (const auto& [supplies, source] : cases) {
        const MadeUpTree tree;
        Plug(tree, supplies);
        EXPECT_EQ(ProvidingPowerSource(tree.Root()), source) << supplies;
    }
}

} // namespace
} // namespace kqu::platform
