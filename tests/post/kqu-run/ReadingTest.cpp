#include "post/kqu-run/LineReader.h"
#include "post/kqu-run/Rate.h"
#include "post/kqu-run/Relay.h"
#include "post/kqu-run/tools/RsyncFilter.h"

#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <vector>

namespace kqu::run {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

Lines Take(LineReader& reader) {
    Lines lines;
    reader.Lines([&](std::string_view line) { lines.emplace_back(line); });
    return lines;
}

TEST(LineReader, MakesLinesOfWhatIsPrintedForEyes) {
    LineReader reader;
    reader.Add(
        "one\r\n\r\ntwo\rthree 12%\b\b\b 13%\x1b[79;0H\x1b[K[3/34]\x1b[1;31mred\x1b[0m\n\x1b[");
    EXPECT_EQ(Take(reader), (Lines{"one", "two", "three 12%", " 13%", "[3/34]red"}));
    reader.Add("2Kfour\x07 \xff");
    EXPECT_EQ(Take(reader), Lines{"four \xff"})
        << "a sequence in two pieces, a bell, another encoding";
    EXPECT_EQ(Take(reader), Lines{}) << "a line without an end is told once";
    reader.Add("!\n");
    EXPECT_EQ(Take(reader), Lines{"four \xff!"});
}

TEST(Rate, SaysSpeedAndTimeLeftOnceTheyAreSteadyAndThatNothingMoves) {
    Rate rate;
    const Rate::Time start{};
    Progress progress;
    const auto after = [&](std::chrono::seconds time, double done) {
        progress.done = done;
        progress.share = done / 20e9;
        rate.Add(start + time, progress);
        return rate.Text(start + time);
    };
    rate.Add(start - 60s, {}); // nothing is known yet
    for (int second = 0; second < 8; ++second)
        EXPECT_EQ(after(std::chrono::seconds(second), second * 40e6), "");
    EXPECT_EQ(after(8s, 320e6), "40 MB/s, 8 min left");
    EXPECT_EQ(after(9s, 19.99e9), "2.2 GB/s, under 1 min left");
    EXPECT_EQ(after(130s, 19.99e9), "no progress for 2 min");
    progress.phase = 1;
    EXPECT_EQ(after(131s, 0), "") << "another phase has another speed";
}

/// What goes on when the text comes in pieces of a size.
std::string Passed(std::string_view text, std::size_t size) {
    RsyncFilter filter;
    std::string out;
    for (; !text.empty(); text.remove_prefix(std::min(size, text.size())))
        filter.Pass(text.substr(0, size), out);
    filter.End(out);
    return out;
}

TEST(RsyncFilter, TakesOutItsProgressAndNothingElse) {
    const std::string progress =
        "\r         32,768   0%    0.00kB/s    0:00:00  "
        "\r      1.200.000   2%  139,14MB/s    0:00:00 (xfr#4, to-chk=27/34)"
        "\r          1.52M  15%  219.28MB/s    0:00:00 (xfr#30, ir-chk=1/34) ";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"sending incremental file list\nd1/\n" + progress + "\nd1/f1\n" + progress +
             "\n\nsent 1\n",
         "sending incremental file list\nd1/\nd1/f1\n\nsent 1\n"},
        {progress + "\n", ""},
        {progress + "ssh: gone\nand\n\n\nsent\n", "ssh: gone\nand\n\nsent\n"},
        {"motd\r\n\rother\r100%\n", "motd\r\n\rother\r100%\n"},
        {"\r" + std::string(1000, '9'), "\r" + std::string(1000, '9')},
        {"name 5% 1.0kB/s 0:00:01\n", "name 5% 1.0kB/s 0:00:01\n"},
    };
    for (const auto& [printed, wanted] : cases)
        for (const std::size_t size : {1U, 2U, 7U, 4096U})
            EXPECT_EQ(Passed(printed, size), wanted) << size << " bytes at a time";
}

TEST(Relay, LastWordsThatCameAfterThePollAreRead) {
    std::array<int, 2> tool{}, reader{};
    ASSERT_EQ(pipe2(tool.data(), O_NONBLOCK) + pipe2(reader.data(), O_NONBLOCK), 0);
    const Descriptor held(tool[1]), out(reader[0]), to(reader[1]);
    std::string told;
    Relay relay(Descriptor{tool[0]}, to.Number(), false,
                [&](std::string_view bytes) { told += bytes; });
    std::vector<pollfd> polled;
    relay.Await(polled);
    ASSERT_EQ(poll(polled.data(), polled.size(), 0), 0);
    // A child of the tool still holds the stream open.
    ASSERT_EQ(write(held.Number(), "last", 4), 4);
    relay.ToolHasEnded();
    for (int round = 0; round < 3 && !relay.IsDone(); ++round)
        relay.Work(polled[0], polled[1]);
    EXPECT_TRUE(relay.IsDone());
    std::array<char, 8> passed{};
    EXPECT_EQ(read(out.Number(), passed.data(), passed.size()), 4);
    EXPECT_EQ(std::string(passed.data()) + told, "lastlast");
}

} // namespace
} // namespace kqu::run
