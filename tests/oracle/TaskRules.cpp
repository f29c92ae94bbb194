#include "tests/oracle/Rules.h"

namespace kqu::oracle {

void FindVolume(Row& row, const std::string& disk, const Disks& disks) {
    row["bsd"] = disk;
    for (const std::string& line : Fields(disks.lookUpFile.value_or(""), "\r"))
        if (Same(Field(line, ":", 1), disk)) {
            row["volume"] = Field(line, ":", 2);
            row["totalfiles"] = Whole(Val(Field(line, ":", 3)));
            return;
        }
    for (const Mounted& volume : disks.volumes) {
        disks.asking(false);
        if (Same(volume.disk, disk)) {
            disks.asking(true);
            row["volume"] = volume.name;
            row["totalfiles"] = volume.files;
            return;
        }
    }
    row["volume"] = disk;
}

namespace {
/// What a tool sends under one key, and what becomes of it.
struct Reading {
    const Wire& wire;
    Row& row;

    [[nodiscard]] bool Has(const char* key) const { return wire.count(key) > 0; }
    [[nodiscard]] const std::string& Text(const char* key) const { return wire.at(key).value(); }
    [[nodiscard]] double Number(const char* key, double absent) const {
        return Has(key) ? Val(Text(key)) : absent;
    }
    void Last(const char* key, const char* rowKey, const std::string& before = "") const {
        if (Has(key))
            row[rowKey] = before + Text(key);
    }
    void LastNumber(const char* key, const char* rowKey) const {
        if (Has(key))
            row[rowKey] = Val(Text(key));
    }
    void First(const char* key, const char* rowKey) const {
        if (Has(key) && row.count(rowKey) == 0)
            row[rowKey] = Text(key);
    }
    void Upward(double progress) const {
        if (row.count("progress") == 0 || std::get<double>(row["progress"]) < progress)
            row["progress"] = progress;
    }
};

std::string ForkText(const Reading& sent) {
    const std::string status = sent.Has("status") ? sent.Text("status") : "";
    const bool isDefragmenting = Place(status, "check") == 0 && Place(status, "defrag") > 0;
    const double fork = isDefragmenting ? sent.Number("FileProgress", 100.0) : 100.0;
    if (fork >= 100.0)
        return "Checking File Fragmentation...";
    return "Defragging Fork: " + (fork > 0.0 ? Rounded(fork, 0) : "0") + " % Complete";
}

void TakeInDefragmenter(const Reading& sent, const Disks& disks) {
    Row& row = sent.row;
    sent.Last("FileName", "status", "File: ");
    row["fileprogress"] = ForkText(sent);
    row["task"] = 2;
    const double examined = sent.Number("NumFilesExamined", 0.0);
    if (sent.Has("BSD") && row.count("volume") == 0)
        FindVolume(row, sent.Text("BSD"), disks);
    if (row.count("totalfiles") == 0)
        return;
    const Cell& files = row["totalfiles"];
    const auto* counted = std::get_if<std::int32_t>(&files);
    const double total = counted != nullptr ? static_cast<double>(*counted)
                                            : static_cast<double>(std::get<std::uint32_t>(files));
    sent.Upward(examined * 1000.0 / total);
}
} // namespace

void TakeIn(Row& row, const std::string& tool, const Wire& wire, const Disks& disks) {
    const Reading sent{wire, row};
    const bool isScanner = Same(tool, "KQMS");
    const bool isDefragmenter = Same(tool, "KQDefrag");
    if (!isScanner && !isDefragmenter && !Same(tool, "KQBackup"))
        return;
    sent.First("Extra", "extra");
    sent.LastNumber("PID", "pid");
    if (isDefragmenter)
        return TakeInDefragmenter(sent, disks);
    sent.First("VolName", "volume");
    sent.First("BSD", "bsd");
    if (isScanner) {
        if (sent.Has("Progress"))
            sent.Upward(sent.Number("Progress", 0.0));
        sent.Last("Item", "status");
        sent.Last("ScanType", "type");
        row["task"] = 1;
        return;
    }
    sent.LastNumber("Progress", "progress");
    sent.Last("status", "status");
    sent.LastNumber("Type", "type");
    if (sent.Has("FolderBackup"))
        row["folderbackup"] = true;
    if (sent.Has("dVolName") && row.count("destination") == 0)
        row["destination"] = Replaced(sent.Text("dVolName"), "//", "/");
    row["task"] = 6;
}

std::string Title(int rows, bool sibling) {
    return std::string(sibling ? "Marlstone Pro" : "Brackwater") + " Scheduled Task" +
           (rows < 2 ? "" : "s");
}

} // namespace kqu::oracle
