#include "post/kqu-run/LineReader.h"
#include "post/kqu-run/Rate.h"
#include "post/kqu-run/RowText.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"
#include "tests/support/MadeUpTree.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>
#include <vector>

namespace kqu::run {
namespace {

namespace files = std::filesystem;

std::vector<std::string> Split(const std::string& text) {
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

struct Prepared {
    Launch launch;
    std::unique_ptr<Tool> tool;

    explicit Prepared(const std::string& command, bool onTerminal = false) {
        launch.arguments = Split(command);
        launch.terminal.fill(onTerminal);
        tool = Recognise(launch);
        tool->Prepare(launch);
    }
    ~Prepared() { close(launch.channel); }

    [[nodiscard]] std::string Command() const {
        std::string joined;
        for (const std::string& argument : launch.arguments)
            joined += (joined.empty() ? "" : " ") + argument;
        return joined;
    }
    Progress After(std::string_view printed) const {
        LineReader lines;
        lines.Add(printed);
        lines.Lines([&](std::string_view line) { tool->Read(line); });
        return tool->GetProgress();
    }
};

struct Case {
    std::string command, printed;
    double share;
    std::string text;
};

void ExpectRead(const std::vector<Case>& cases) {
    for (const Case& one : cases) {
        const Progress progress = Prepared(one.command, true).After(one.printed);
        EXPECT_NEAR(progress.share.value_or(-1), one.share, 0.0001) << one.command;
        EXPECT_EQ(Shown(WithNumbers(progress, "", false), Row{}), one.text) << one.command;
    }
}

/// What the tools print, as it was recorded.
const std::vector<Case> recorded{
    {"rsync -a src/ dst/", "\r      8,700,000  14%  217.52MB/s    0:00:00 (xfr#29, to-chk=2/34)",
     0.14, "32 of 34 files, 8.7 MB"},
    {"rsync -a --info=progress2 src/ dst/",
     "\r      8.700.000  14%  217,52MB/s    0:00:00 (xfr#29, ir-chk=2/34)", 0.14,
     "32 of 34 files so far, 8.7 MB"},
    {"rsync -av --progress src/ dst/",
     "d1/f10\n\r         32,768  10%    2.23MB/s    0:00:00  "
     "\r        300,000 100%   19.07MB/s    0:00:00 (xfr#2, to-chk=17/34)\n",
     0.5, "d1/f10"},
    {"dd if=/dev/null of=/dev/null bs=1M count=720 status=progress",
     "\r377487360 Bytes (377 MB, 360 MiB) kopiert, 1,2 s, 3,7 MB/s", 0.5, "377 MB of 755 MB"},
    {"badblocks -sw /dev/none 1000",
     "Testing with pattern 0xaa: 100.00% done, 0:05 elapsed. (0/0/0 errors)\b\bdone   \n"
     "Reading and comparing:   0.00% done, 0:05 elapsed. (0/0/0 errors)\b\b"
     " 50,00% done, 0:05 elapsed. (0/0/0 errors)\b\b",
     0.1875, ""},
    {"e2fsck -f /dev/none", "1 25 25 Data\n2 0 17 Data\n2 17 34 Data\n", 0.8,
     "Pass 2 of 5: directory structure"},
    {"e2fsck -C0 /dev/none", "Data: |==                    |  2.8%   \r", 0.028, ""},
    {"e4defrag /none",
     "\x1b[79;0H\x1b[K[35/70]/mnt/src/d2/big:\t  0%\x1b[79;0H\x1b[K[35/70]/mnt/src/d2/big:\t "
     "16%",
     0.5, "/mnt/src/d2/big"},
    {"restic -r rep backup src",
     "\r\x1b[2K[0:01] 34.50%  30 files 19.413 MiB, total 31 files 56.267 MiB, 0 errors ETA 0:02"
     "\r\n\r\x1b[2K/src/d2/big\r\x1b[1A",
     0.345, "/src/d2/big"},
    {"restic -r rep backup src", "[0:00] 30 files 28 MiB, total 31 files 56.000 MiB, 0 errors\n",
     0.5, "restic backup"},
    {"restic -r rep backup --json src",
     R"({"message_type":"status","percent_done":0.25,"total_files":31,"current_files":["/src/\"f1"]})",
     0.25, "/src/\"f1"},
    {"borg create -p rep::a src", "33.55 MB O 33.55 MB C 0 B D 30 N src/d2/big      \r", -1,
     "src/d2/big"},
    {"borg create -p --log-json rep::a src", R"({"original_size":12,"path":"src/\u00e4"})", -1,
     "src/\u00E4"},
    {"badblocks -w -t 0 -t 1 -p 2 /dev/none 1000", "50% done", 0.0625, ""},
    {"badblocks -b 0 -s /dev/none 5 9", "50% done", 0.5, ""},
    {"dd count=1000 iflag=count_bytes status=progress", "500 Bytes (", 0.5, "0.5 kB of 1.0 kB"},
    {"borg check -p --repository-only rep", "Checking segments 12.5%\r", 0.125,
     "Checking segments"},
    {"borg check -p rep", "Checking segments 99%\rAnalyzing archive a (3/4)\n", 0.75,
     "Analyzing archive"},
    {"restic -r rep check",
     "[0:00] 100.00%  1 / 1 index files loaded\n[0:01] 11.00%  11 / 100 snapshots\n", 0.11,
     "restic check, 11 of 100 snapshots"},
    {"rsync -a src/ dst/", "\r      8,700,000   4%  217.52MB/s    0:00:00 (xfr#2, to-chk=17/34)",
     0.5, "17 of 34 files, 8.7 MB"},
    {"e4defrag /a /b",
     "ext4 defragmentation for directory(/a)\n[1/1]/a/f:\t100%\next4 defragmentation for "
     "directory(/b)\n[1/2]/b/f:\t100%\n",
     0.75, "/b/f"},
};

TEST(Tools, AreReadByTheirRealOutput) {
    ExpectRead(recorded);
    EXPECT_NEAR(*Prepared("e4defrag /none").After("[1/2]/a:b:\t 37%\r").fileShare, 0.37, 0.001);
}

TEST(Tools, AreAskedForProgressOnlyWhereThatDoesNoHarm) {
    const std::string noTerminal =
        "rsync -a src/ dst/;rsync --info=progress2 -a src/ dst/;1\n"
        "nice -n 5 rsync -e ssh a b;nice -n 5 rsync --info=progress2 -e ssh a b;1\n"
        "rsync -aP a b;=;1\nrsync -q a b;=;1\nrsync a;=;1\nrsync --daemon;=;0\n"
        "dd if=a of=b;=;0\nsudo -u me dd if=a status=progress;=;2\n"
        "badblocks /dev/none;=;0\nbadblocks -b 512 -s /dev/none;=;2\n"
        "e2fsck -C 0 /dev/none;=;1\nsudo e2fsck /dev/zero;=;0\n"
        "restic backup a;=;0\nrestic dump latest a;=;0\n"
        "borg create r::a b;=;0\nborg -p create r::a b;=;2\n"
        "tar czf a.tgz b;=;0\nenv A=b make;=;0\n";
    std::istringstream lines(noTerminal);
    std::string command, started, stream;
    while (std::getline(lines, command, ';') && std::getline(lines, started, ';') &&
           std::getline(lines, stream)) {
        const Prepared prepared(command);
        EXPECT_EQ(prepared.Command(), started == "=" ? command : started);
        EXPECT_EQ(std::to_string(prepared.launch.stream), stream) << command;
    }
    EXPECT_EQ(Prepared("borg create r::a b", true).Command(), "borg --progress create r::a b");
    EXPECT_EQ(Prepared("restic dump latest a", true).launch.stream, 0);
}

TEST(Tools, AreFoundBehindOtherCommands) {
    for (const std::string command :
         {"e4defrag x", "sudo -u root -- /usr/sbin/e4defrag x", "ionice -c 3 nice e4defrag x",
          "env -u A B=c e4defrag x", "timeout -k 5 60 stdbuf -oL e4defrag x",
          "time -f %e e4defrag x", "sudo -nu me e4defrag x", "sudo -ume e4defrag x",
          "taskset -c 0,1 setpriv --reuid 5 systemd-inhibit --what=idle e4defrag x"})
        EXPECT_EQ(Prepared(command).tool->GetRow().tool->name, "defragmenter") << command;
    const std::vector<std::pair<std::string, std::string>> others{
        {"flock lock -c e4defrag", "flock"},
        {"sudo runuser -c e4defrag me", "sudo"},
        {"sudo -u me /bin/mysql -psecret --password=secret u:secret@host secret / .", "mysql"}};
    for (const auto& [command, text] : others)
        EXPECT_EQ(Prepared(command).tool->GetProgress().text, text);
    EXPECT_EQ(Prepared(others.back().first).tool->GetProgress().file, "/ and .");
    const std::vector<std::array<std::string, 4>> rows{
        {"btrfs scrub start -B .", "scanner", "btrfs scrub start", ""},
        {"rclone -P check . remote:secret", "scanner", "rclone check", "secret on remote"},
        {"btrfs balance start /", "defragmenter", "btrfs balance start", ""},
        {"xfs_repair -n /dev/zero", "scanner", "xfs_repair", ""},
        {"cp -r . nas", "backup", "cp", "nas"},
        {"ddrescue -B --mapfile-interval 5 none nas map", "backup", "ddrescue", "nas"},
        {"rclone purge remote:x", "backup", "rclone", ""}};
    for (const auto& [command, kind, title, destination] : rows) {
        const Prepared prepared(command);
        EXPECT_EQ(prepared.tool->GetRow().tool->name, kind) << command;
        EXPECT_EQ(prepared.tool->GetRow().volume.open, title) << command;
        const std::string place = prepared.tool->GetRow().destination.full;
        EXPECT_EQ(place.substr(place.rfind('/') + 1), destination) << command;
    }
}

TEST(Tools, SayWhereTheyWrite) {
    const simulation::MadeUpTree tree;
    tree.Write("real/file", std::string(2000, 'x'));
    tree.Write("real/deep/file", "");
    tree.Link("link", "real/file");
    const files::path before = files::current_path();
    files::current_path(tree.Root() / "real");
    const std::vector<std::pair<std::string, std::string>> destinations{
        {"rsync a .", "/real"},
        {"rsync a ..", ""},
        {"rsync a deep/none/", "/real/deep/none"},
        {"rsync a none/", "/real/none"},
        {"dd if=a of=../link", "/real/file"},
        {"borg create --unknown .. ./deep/::x a", "/real/deep"},
        {"borg prune --keep-daily 7 deep", "/real/deep"},
        {"restic --unknown .. -r local:deep backup a", "/real/deep"},
        {"tar cf deep/a.tar a", "/real/deep/a.tar"},
        {"tar -x --warning none --exclude-tag t -f a.tar -C ..", ""}};
    for (const auto& [command, place] : destinations)
        EXPECT_EQ(Prepared(command).tool->GetRow().destination.full, tree.Root().string() + place)
            << command;
    const Prepared zeros("dd if=/dev/zero");
    EXPECT_EQ(zeros.tool->GetRow().destination.full, "standard output");
    EXPECT_EQ(zeros.tool->GetRow().volume.full, "");
    EXPECT_EQ(Prepared("tar xf me@nas:/a.tar").tool->GetRow().volume.full, "/a.tar on nas");
    files::current_path(before);
}

TEST(Numbers, AreReadAsToolsWriteThem) {
    EXPECT_DOUBLE_EQ(*Amount("1,5 GB"), 1.5e9);
    EXPECT_DOUBLE_EQ(*Amount("292.969 KiB"), 292.969 * 1024);
    EXPECT_DOUBLE_EQ(*Amount("0 B"), 0);
    EXPECT_FALSE(Amount("none"));
    const std::pair<const char*, std::uint64_t> sizes[] = {
        {"4096", 4096}, {"64k", 65536}, {"10MB", 10000000}, {"2x512", 1024}, {"3b", 1536}};
    for (const auto& [text, size] : sizes)
        EXPECT_EQ(DdSize(text), size) << text;
    EXPECT_FALSE(DdSize("1q"));
    EXPECT_FALSE(DdSize(""));
    EXPECT_FALSE(LastPercentage("%"));
}

} // namespace
} // namespace kqu::run
