#include "platform/power_supply/PowerSupplyFunctions.h"

#include "platform/functions/Functions.h"
#include "tests/support/MadeUpTree.h"

#include <gtest/gtest.h>

#include <vector>

namespace kqu::platform {
namespace {

using simulation::MadeUpTree;

/// A supply by name, and its files.
struct Supply {
    std::string name;
    std::vector<std::pair<std::string, std::string>> files;
};

const Supply acOffline{"AC", {{"type", "Mains"}, {"online", "0"}}};
const Supply acOnline{"AC", {{"type", "Mains"}, {"online", "1"}}};
const Supply discharging{"BAT0",
                         {{"type", "Battery"}, {"present", "1"}, {"status", "Discharging"}}};
const Supply charging{"BAT0", {{"type", "Battery"}, {"present", "1"}, {"status", "Charging"}}};
const Supply emptyBay{"BAT1", {{"type", "Battery"}, {"present", "0"}, {"status", "Discharging"}}};
const Supply mouse{"hidpp_battery_0",
                   {{"type", "Battery"}, {"scope", "Device"}, {"status", "Discharging"}}};
const Supply ups{"ups", {{"type", "UPS"}, {"status", "Discharging"}}};
const Supply usbCharger{"ucsi-source-psy-0", {{"type", "USB"}, {"online", "2"}}};

Supply UsbPort(const std::string& firstRole, const std::string& secondRole) {
    return {"ucsi-source-psy-0",
            {{"type", "USB"},
             {"online", "1"},
             {"device/typec/port0/power_role", firstRole},
             {"device/typec/port1/power_role", secondRole}}};
}

void Plug(const MadeUpTree& tree, const Supply& supply) {
    for (const auto& [file, value] : supply.files)
        tree.Write("sys/class/power_supply/" + supply.name + "/" + file, value + "\n");
}

TEST(PowerSuppliesTest, WhatProvidesPower) {
    struct Case {
        const char* machine;
        std::vector<Supply> supplies;
        std::string_view source;
    };
    const std::vector<Case> cases{
        {"desktop without any supply", {}, "AC Power"},
        {"laptop on mains", {acOnline, charging}, "AC Power"},
        {"laptop on mains that draws on its battery too", {acOnline, discharging}, "AC Power"},
        {"laptop on battery", {acOffline, discharging}, "Battery Power"},
        {"laptop that has only batteries", {discharging, emptyBay}, "Battery Power"},
        {"laptop unplugged and full",
         {acOffline, {"BAT0", {{"type", "Battery"}, {"status", "Full"}}}},
         "AC Power"},
        {"battery that does not tell",
         {acOffline, {"BAT0", {{"type", "Battery"}}}},
         "Battery Power"},
        {"laptop with empty bays on a dead mains", {acOffline, emptyBay}, "AC Power"},
        {"laptop charged over USB", {acOffline, usbCharger, discharging}, "AC Power"},
        {"USB port that is fed",
         {UsbPort("source [sink]", "[source] sink"), discharging},
         "AC Power"},
        {"USB port that feeds a telephone",
         {UsbPort("[source] sink", "[source] sink"), discharging},
         "Battery Power"},
        {"USB port without a charger",
         {{"ucsi-source-psy-0", {{"type", "USB"}, {"online", "0"}}}, discharging},
         "Battery Power"},
        {"desktop with a mouse", {mouse}, "AC Power"},
        {"graphics tablet on its own mains",
         {{"wacom", {{"type", "Mains"}, {"scope", "Device"}, {"online", "1"}}}, discharging},
         "Battery Power"},
        {"machine on a UPS", {acOffline, ups}, "UPS Power"},
        {"machine on a UPS with a battery of its own", {discharging, ups}, "UPS Power"},
        {"machine with a UPS on mains", {acOnline, ups}, "AC Power"},
        {"supply of an unknown kind",
         {{"odd", {{"type", "Wireless"}, {"online", "1"}}}},
         "AC Power"},
        {"supply without files", {{"bare", {{"device/x", ""}}}, discharging}, "Battery Power"},
    };
    for (const Case& c : cases) {
        const MadeUpTree tree;
        for (const Supply& supply : c.supplies)
            Plug(tree, supply);
        EXPECT_EQ(PowerSupplies(tree.Root()).ProvidingSource(), c.source) << c.machine;
    }
}

TEST(PowerSuppliesTest, ABlobTellsOfTheMomentAtWhichItWasTaken) {
    const MadeUpTree tree;
    FunctionTable table;
    Handles handles;
    RegisterPowerSupplyFunctions(table, handles, PowerSupplies(tree.Root()));
    const auto copyInfo = *table.Find<functions::IOPSCopyPowerSourcesInfo>();
    const auto sourceOf = *table.Find<functions::IOPSGetProvidingPowerSourceType>();
    const std::int32_t before = copyInfo();
    Plug(tree, discharging);
    const std::int32_t after = copyInfo();
    EXPECT_EQ(*handles.Text(sourceOf(before)), "AC Power");
    // Nobody owns the name, and it is released all the same.
    handles.Release(sourceOf(after));
    EXPECT_EQ(*handles.Text(sourceOf(after)), "Battery Power");
    handles.Release(after);
    for (const std::int32_t none : {after, 0, sourceOf(before)})
        EXPECT_EQ(sourceOf(none), 0);
}

} // namespace
} // namespace kqu::platform
