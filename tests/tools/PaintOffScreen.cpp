#include "tests/support/SimulatedMachine.h"

#include <iostream>
#include <sstream>
#include <string>

// Paints the panel without any window system, for comparison with a real screen: the height of the
// screen is the argument, each line of the input one notification ("NAME\tOBJECT\tKEY=VALUE\t..."),
// and the output the panel's content as a portable pixmap.

namespace {

using namespace kqu::simulation;

PostedNotification Parse(const std::string& line) {
    std::istringstream fields(line);
    std::string name;
    std::string object;
    std::string pair;
    std::getline(fields, name, '\t');
    std::getline(fields, object, '\t');
    WireDictionary values;
    while (std::getline(fields, pair, '\t'))
        values.emplace_back(pair.substr(0, pair.find('=')), pair.substr(pair.find('=') + 1));
    return {name, WireValue(object), values};
}

void WritePixmap(const SimulatedWindow& window) {
    const kqu::platform::Size size = window.content.Extent();
    std::cout << "P6\n" << size.width << ' ' << size.height << "\n255\n";
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const std::uint32_t pixel = window.PixelOnScreen(x, y);
            for (const unsigned shift : {16U, 8U, 0U})
                std::cout.put(static_cast<char>(pixel >> shift & 0xFFU));
        }
}

} // namespace

int main(int count, char** arguments) {
    SimulatedMachine machine;
    machine.windows.screens = {{0, 0, 1024, count > 1 ? std::stoi(arguments[1]) : 768}};
    machine.Start();
    for (std::string line; std::getline(std::cin, line);) {
        machine.centre.Post(Parse(line));
        machine.Advance(1ms);
    }
    machine.Advance(600ms);
    WritePixmap(*machine.windows.window);
    return 0;
}
