#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// What the program is to compute, stated a second time: plainly, for being compared with on random
/// inputs, and with nothing of the program's own. Pixels, and bytes of UTF-8, throughout.
namespace kqu::oracle {

using Texts = std::vector<std::string>;

// Text. Letter case never counts; it is known of the Latin, Greek and Cyrillic letters in use.
double Val(const std::string& text);
std::int32_t Whole(double number);
/// With that many decimals, or without even a digit where none is wanted and nothing is left.
std::string Rounded(double number, std::size_t decimals);
/// Counted in bytes from 1; 0 if it is nowhere.
std::size_t Place(const std::string& text, const std::string& part);
bool Same(const std::string& a, const std::string& b);
Texts Fields(const std::string& text, const std::string& separator);
std::string Field(const std::string& text, const std::string& separator, std::size_t number);
std::string Replaced(const std::string& text, const std::string& part, const std::string& by);

// The shell, and what is made of its answers.
std::string ShellText(const std::string& printed, bool returns);
bool IsListed(std::int32_t process, const std::string& printed);
bool IsSibling(const std::string& printedPreferences);

// The panel's place.
struct PanelPlace {
    int left, top, width;
    bool operator==(const PanelPlace&) const = default;
};
std::optional<PanelPlace> SavedPlace(const std::string& file, int screenWidth, int screenHeight);
PanelPlace DefaultPlace(int screenWidth, int panelWidth);
std::string PlaceFile(const PanelPlace& place);

// Power. A source that nothing is known of has no name.
struct PowerSwitches {
    bool prevent, sleepOnBatt, sleepOnAC;
};
using Source = std::optional<std::string>;
bool IsBattery(const Source& source);
/// The source is asked for twice.
bool Objects(int rows, std::uint32_t message, const PowerSwitches& switches, const Source& first,
             const Source& second);

// Tasks. A row's keys are written in small letters here.
using Cell = std::variant<std::string, double, std::int32_t, std::uint32_t, bool>;
using Row = std::map<std::string, Cell>;
/// What was sent. To read a value that is no text raises std::bad_optional_access.
using Wire = std::map<std::string, std::optional<std::string>>;
struct Mounted {
    std::string disk, name;
    std::uint32_t files;
};
struct Disks {
    std::optional<std::string> lookUpFile;
    std::vector<Mounted> volumes;
    /// Called before a volume is asked for its disk, or for its files.
    std::function<void(bool forFiles)> asking = [](bool) {};
};
void FindVolume(Row& row, const std::string& disk, const Disks& disks);
void TakeIn(Row& row, const std::string& tool, const Wire& wire, const Disks& disks);
std::string Title(int rows, bool sibling);

// Sizing.
using Box = std::array<int, 4>;
struct Panel {
    int left = 0, top = 0, width = 340, height = 185;
    int lastWidth = 0, lastHeight = 0, lastCount = 0;
    int maximum = 100, value = 0, maxHeight = 32000;
    Box list{}, grip{0, 0, 17, 14}, bar{};

    // Each tells whether the panel was laid out anew.
    bool Resize(int newWidth, int newHeight, bool exact, bool force, int rows);
    bool RowCame(int rows, int screenHeight);
    bool RowWent(int rows);
    /// The grip was pressed at that column, and the pointer is there now.
    bool Drag(int column, int pointerX, int pointerY, int rows);
    void Wheel(int delta);
};

// Bars: a letter a column. Colours are the track's (l m r), the fill's (f) and the tick's (1 2);
// the mask is the track's (t) or the fill's (f). A blank is as the picture was made.
struct Bar {
    int width;
    double value, maximum;
    [[nodiscard]] char Colour(int column) const;
    [[nodiscard]] char Mask(int column) const;
    [[nodiscard]] bool HasFill(int column) const;
};

// Rows as painted, relative to the row's top.
struct Line {
    std::string text;
    int left, baseline;
};
struct PaintedRow {
    /// Pictures by their number, 0 for none.
    int icon = 0, badge = 0;
    std::vector<Line> lines;
    int barLeft = 0;
    std::optional<Bar> bar;
};
/// What depends on the machine.
struct Machine {
    std::function<int(int picture)> widthOf;
    std::function<double(const std::string&)> textWidth;
    std::function<std::string(const std::string&, int limit)> shortened;
    /// What stands for a percentage that is no finite number.
    std::function<std::string(double)> word;
};
PaintedRow PaintedRowOf(const Row& row, int panelWidth, int listWidth, bool sibling,
                        const Machine& machine);
int Stripes(int rows, int panelHeight);
std::uint32_t StripeColour(int row);
/// The colour of the line on top of the row.
std::uint32_t LineColour(int row);

} // namespace kqu::oracle
