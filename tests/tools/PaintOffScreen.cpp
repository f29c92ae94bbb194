#include "tests/support/SimulatedMachine.h"

#include <iostream>
#include <sstream>
#include <string>

// Paints the panel without any window system, for comparison with a real screen: each line of the
// input is one notification ("NAME\tOBJECT\tKEY=VALUE\t..."), and the output is the panel's content
// as a portable pixmap.

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

int main() {
    SimulatedMachine machine;
    machine.Start();
    for (std::string line; std::getline(std::cin, line);) {
        machine.centre.Post(Parse(line));
        machine.Advance(1ms);
    }
    machine.Advance(600ms);
    WritePixmap(*machine.windows.window);
    return 0;
}
