#include "tests/oracle/Rules.h"

#include <algorithm>

namespace kqu::oracle {

std::string ShellText(const std::string& printed, bool returns) {
    constexpr std::size_t chunk = 2048;
    std::string text;
    for (std::size_t start = 0; start <= printed.size(); start += chunk) {
        std::string block = printed.substr(start, chunk);
        block.resize(chunk, '\0');
        text += block.substr(0, block.find(std::string(2, '\0')));
    }
    if (returns)
        std::replace(text.begin(), text.end(), '\n', '\r');
    return text;
}

bool IsListed(std::int32_t process, const std::string& printed) {
    const std::string list = ShellText(printed, true);
    const std::string line = std::to_string(process) + "\r";
    return list.find("\r" + line) != std::string::npos ||
           list.find(" " + line) != std::string::npos;
}

bool IsSibling(const std::string& printedPreferences) {
    const std::string text = ShellText(printedPreferences, true);
    const std::string key = "<key>ParentLocation</key>";
    if (text.empty() || Place(text, key) == 0)
        return false;
    const std::string lineEnd = Place(text, "\n") > 1 ? "\n" : "\r";
    const std::string behind = Field(text, key + lineEnd, 2);
    const std::string path = Field(Field(behind, "<string>", 2), "</string>", 1);
    const Texts components = Fields(path, "/");
    const std::string name = components.empty() ? "" : Replaced(components.back(), ".app", "");
    return !name.empty() && Place(name, "Brackwater") == 0;
}

std::optional<PanelPlace> SavedPlace(const std::string& file, int screenWidth, int screenHeight) {
    const auto number = [&](std::size_t field) {
        return Whole(Val(Field(Field(file, "<integer>", field), "</integer>", 1)));
    };
    const PanelPlace place{number(2), number(3), number(4)};
    if (place.left > 0 && place.left < screenWidth - 10 && place.top > 0 &&
        place.top < screenHeight - 10)
        return place;
    return std::nullopt;
}

PanelPlace DefaultPlace(int screenWidth, int panelWidth) {
    return {Whole(screenWidth / 2.0 - panelWidth / 2.0), 42, panelWidth};
}

std::string PlaceFile(const PanelPlace& place) {
    const Texts lines = {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
                         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">",
                         "<plist version=\"1.0\">",
                         "<dict>",
                         "\t<key>left</key>",
                         "\t<integer>" + std::to_string(place.left) + "</integer>",
                         "\t<key>top</key>",
                         "\t<integer>" + std::to_string(place.top) + "</integer>",
                         "\t<key>width</key>",
                         "\t<integer>" + std::to_string(place.width) + "</integer>",
                         "</dict>",
                         "</plist>"};
    std::string file = lines.front();
    for (std::size_t i = 1; i < lines.size(); ++i)
        file += "\r" + lines[i];
    return file;
}

bool IsBattery(const Source& source) {
    if (!source)
        return false;
    // A name that does not fit into a buffer of 100 bytes reads as an empty one.
    return source->size() > 99 || Place(*source, "AC") == 0;
}

bool Objects(int rows, std::uint32_t message, const PowerSwitches& switches, const Source& first,
             const Source& second) {
    const bool isRefusable = message == 0xE0000240U || message == 0xE0000250U ||
                             message == 0xE0000270U || message == 0xE0000280U ||
                             message == 0xE0000310U;
    if (rows < 1 || (switches.prevent && IsBattery(first)))
        return false;
    // Only what is asked is asked: without the first switch the first question is the only one.
    const bool onBattery = IsBattery(switches.prevent ? second : first);
    if (onBattery && !switches.sleepOnBatt)
        return isRefusable;
    return !switches.sleepOnAC && isRefusable;
}

} // namespace kqu::oracle
