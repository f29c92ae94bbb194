#include "tests/oracle/Rules.h"

#include <algorithm>
#include <cmath>

namespace kqu::oracle {

namespace {
constexpr int rowHeight = 73;
constexpr int scrollColumn = 11;
} // namespace

bool Panel::Resize(int newWidth, int newHeight, bool exact, bool force, int rows) {
    const int rowCount = rows > 0 ? rows : 1;
    int h = newHeight;
    if (!exact) {
        h = height;
        if (newHeight > height + rowHeight / 2.0)
            h = height + rowHeight;
        else if (newHeight < height - rowHeight / 2.0)
            h = height - rowHeight;
    }
    h = std::max(h, rowHeight);
    h = std::min(h, rowCount * rowHeight);
    const int w = std::min(std::max(newWidth, 270), 500);
    height = h;
    if (w == lastWidth && h == lastHeight && !exact && !force)
        return false;
    width = w;
    grip = {w - 17 - 1, h - 14 - 1, 17, 14};
    maximum = rowCount - Whole((h + 2) / 73.0);
    const bool scrolls = maximum >= 1;
    list = {-1, -1, scrolls ? w - scrollColumn : w, h};
    bar = {scrolls ? w - scrollColumn : w + 1, 0, 10, h - 15};
    value = std::min(value, maximum);
    maxHeight = rowCount * rowHeight;
    lastWidth = w;
    lastHeight = h;
    return true;
}

bool Panel::RowCame(int rows, int screenHeight) {
    const bool isShort = rows != lastCount && screenHeight < top + height + rowHeight;
    lastCount = rows;
    return Resize(width, isShort ? height : height + rowHeight, isShort, true, rows);
}

bool Panel::RowWent(int rows) {
    if (rows > 0)
        return Resize(width, rows < height / 73.0 ? height - rowHeight : height, false, true, rows);
    lastCount = 0;
    return false;
}

bool Panel::Drag(int column, int pointerX, int pointerY, int rows) {
    return Resize(pointerX - left + 17 - column + 1, pointerY - top, false, false, rows);
}

void Panel::Wheel(int delta) {
    value = std::clamp(value + (delta > 0) - (delta < 0), 0, std::max(maximum, 0));
}

bool Bar::HasFill(int column) const {
    const double filled = value * width / maximum;
    return value > -1.0 && filled != 0.0 && value != 0.0 && maximum != 0.0 &&
           column < Whole(filled);
}

char Bar::Mask(int column) const {
    return value == -1.0 ? ' ' : HasFill(column) ? 'f' : 't';
}

char Bar::Colour(int column) const {
    if (value == -1.0)
        return ' ';
    char letter = HasFill(column) ? 'f' : column >= width - 5 ? 'r' : column < 5 ? 'l' : 'm';
    double sum = 0.0;
    for (double way = 0.0; value > -1.0 && way <= width; way += width / 10.0) {
        sum += width / 10.0;
        if (const std::int64_t tick = Whole(sum); column == tick || column == tick + 1)
            letter = column == tick ? '1' : '2';
    }
    return letter;
}

namespace {
std::string TextOf(const Cell& cell) {
    if (const auto* text = std::get_if<std::string>(&cell))
        return *text;
    const double number = std::get<double>(cell);
    return number == 0.0 ? "0" : "another number";
}

int NumberOf(const Cell& cell) {
    const auto* text = std::get_if<std::string>(&cell);
    return Whole(text != nullptr ? Val(*text) : std::get<double>(cell));
}

/// One row while its texts are made.
struct RowTexts {
    const Row& row;
    const Machine& machine;
    int panelWidth, listWidth, left;

    [[nodiscard]] bool Has(const char* key) const { return row.count(key) > 0; }
    [[nodiscard]] std::string Text(const char* key, const char* absent = "") const {
        return Has(key) ? TextOf(row.at(key)) : absent;
    }
    [[nodiscard]] std::string Cut(const std::string& text, int limit) const {
        return text.empty() ? text : machine.shortened(text, limit);
    }
    void Rest(PaintedRow& painted, const std::string& status, const std::string& top) const {
        if (Has("status"))
            painted.lines.push_back({Cut(status + Text("status"), listWidth - 30), left, 65});
        if (Has("volume"))
            painted.lines.push_back({Cut(top + Text("volume"), listWidth - 30), left, 18});
    }
};

void Backup(PaintedRow& painted, const RowTexts& texts) {
    const std::string label = texts.Has("folderbackup") ? "To Image File: " : "To Image File on: ";
    const int allowance = Whole(texts.machine.textWidth(label) - 7.0);
    const std::string destination = texts.Cut(texts.Text("destination", "unknown"),
                                              texts.panelWidth - (64 + texts.left + allowance));
    const bool isImage = texts.Has("type") && NumberOf(texts.row.at("type")) == 4;
    painted.lines.push_back({(isImage ? label : "Destination: ") + destination, texts.left, 50});
    texts.Rest(painted, "Status: ", "Backing up: ");
}

void Scanner(PaintedRow& painted, const RowTexts& texts) {
    const bool isFiles = texts.Has("type") && texts.Text("type") == "0";
    const std::string what = isFiles ? "File " : texts.Has("type") ? "Volume " : "";
    painted.lines.push_back({"Scanning " + what + "Sectors...", texts.left, 50});
    texts.Rest(painted, isFiles ? "File: " : texts.Has("type") ? "Sector: " : "Item: ", "Volume: ");
}

void Defragmenter(PaintedRow& painted, const RowTexts& texts) {
    const std::string heading = texts.Text("fileprogress", "Defragging Files...");
    painted.lines.push_back({texts.Cut(heading, texts.listWidth - 75), texts.left, 50});
    texts.Rest(painted, "", "Volume: ");
}
} // namespace

PaintedRow PaintedRowOf(const Row& row, int panelWidth, int listWidth, bool sibling,
                        const Machine& machine) {
    PaintedRow painted;
    const int task = row.count("task") > 0 ? std::get<std::int32_t>(row.at("task")) : 0;
    const int reference = task == 6 ? 177 : task == 1 ? 173 : task == 2 ? 175 : 0;
    const int slot = reference == 0 ? 0 : machine.widthOf(reference) + 10;
    const RowTexts texts{row, machine, panelWidth, listWidth, 10 + slot};
    if (task == 6) {
        const bool isFolder = texts.Has("folderbackup");
        painted.icon = isFolder ? (sibling ? 181 : 179) : (sibling ? 183 : 177);
        Backup(painted, texts);
    } else if (task == 1) {
        painted.icon = sibling ? 185 : 173;
        Scanner(painted, texts);
    } else if (task == 2) {
        painted.icon = sibling ? 187 : 175;
        Defragmenter(painted, texts);
    }
    if (texts.Has("progress")) {
        const double value = std::get<double>(row.at("progress")) / 10.0;
        painted.barLeft = 10 + slot;
        painted.bar = {listWidth - 20 - slot, value, 100.0};
        const std::string percent =
            (std::isfinite(value) ? Rounded(value, 2) : machine.word(value)) + " %";
        painted.lines.push_back({percent, listWidth - 10 - Whole(machine.textWidth(percent)), 50});
    }
    const std::string extra = texts.Text("extra");
    painted.badge = Same(extra, "sleep") ? 170 : Same(extra, "shutdown") ? 169 : 0;
    return painted;
}

int Stripes(int rows, int panelHeight) {
    const int count = std::max(rows, 1);
    int stripes = 0;
    while (!((count - 1) + (panelHeight / 73.0 + 1.0) < stripes))
        ++stripes;
    return stripes;
}

std::uint32_t StripeColour(int row) {
    return row % 2 == 0 ? 0xFFFFFFU : 0xF1F5FAU;
}

std::uint32_t LineColour(int row) {
    // Black that leaves 200 of 255 of what is below.
    std::uint32_t colour = 0;
    for (const unsigned shift : {16U, 8U, 0U})
        colour |= static_cast<std::uint32_t>(
                      std::lround((StripeColour(row) >> shift & 0xFFU) * 200 / 255.0))
                  << shift;
    return colour;
}

} // namespace kqu::oracle
