#include "platform/x11/EchoFilter.h"

#include <gtest/gtest.h>
#include <sstream>
#include <vector>

namespace {

using kqu::platform::EchoFilter;
using kqu::platform::Moment;
using namespace std::chrono_literals;

struct EchoFilterTest : testing::Test {
    EchoFilter<int> filter{73};
    Moment now{1h};
    std::vector<int> told;

    void Pass(std::chrono::milliseconds time) {
        const Moment end = now + time;
        for (auto due = filter.Due(); due && *due <= end; due = filter.Due()) {
            now = std::max(now, *due);
            Tell(filter.Settle(now));
            ASSERT_NE(filter.Due(), due) << "would be due for ever";
        }
        now = end;
    }
    void Tell(const std::optional<int>& change) {
        if (change)
            told.push_back(*change);
    }
    /// What is told by a course of "ask 146", "see 146", "quiet 146" and "pass <milliseconds>".
    std::vector<int> Told(const std::string& course) {
        filter = EchoFilter<int>(73);
        told.clear();
        std::istringstream words(course);
        int value = 0;
        for (std::string what; words >> what >> value;)
            if (what == "ask")
                filter.Request(value, now);
            else if (what == "quiet")
                static_cast<void>(filter.Acknowledge(value, now));
            else if (what == "pass")
                Pass(std::chrono::milliseconds(value));
            else
                Tell(filter.Observe(value, now));
        return told;
    }
};

TEST_F(EchoFilterTest, OutsideChangesAreToldAndEchoesAreNot) {
    const std::string burst = "ask 146 ask 219 ask 292 ask 365 ";
    const std::string insists = "ask 146 see 73 pass 3000 ";
    const std::pair<std::string, std::vector<int>> cases[] = {
        {"see 73 see 300 see 300 see 73", {300, 73}},
        // The answers to a burst: all, the last, some, each twice, the old one first.
        {burst + "see 146 see 219 pass 200 see 292 see 365", {}},
        {burst + "pass 200 see 365", {}},
        // With the last one all before it are answered: what comes then is from outside.
        {"ask 146 ask 219 see 219 see 146 see 219", {146, 219}},
        {burst + "see 146 pass 200 see 292 pass 200 see 365", {}},
        {burst + "see 146 see 146 see 219 see 219 see 292 see 292 see 365 see 365", {}},
        {burst + "see 146 see 73 pass 200 see 365", {}},
        // A slow manager is waited for in the middle.
        {"ask 146 ask 219 see 146 pass 1900 see 219", {}},
        // The same size twice is no outside change; afterwards it is one.
        {"ask 146 ask 73 ask 146 see 146 see 146 see 73 see 73 see 146 see 146", {}},
        {"ask 146 ask 73 ask 146 see 146 see 73 see 146 pass 3000 see 73", {73}},
        // What stays against a request is told after a while, and the late answer as well, since
        // the owner believes otherwise by then.
        {"ask 146 see 500 pass 240 see 146", {}},
        {"ask 146 see 500 pass 260 see 146", {500, 146}},
        // A manager that insists is told once, however often the owner asks.
        {insists + insists + insists + "see 200", {73, 200}},
        // Quiet acknowledgements tell nothing and answer requests.
        {"ask 146 quiet 146 quiet 90 see 90 pass 3000 see 146 see 90", {90}},
    };
    for (const auto& [course, expected] : cases) {
        EXPECT_EQ(Told(course + " pass 20000"), expected) << course;
        EXPECT_FALSE(filter.Due()) << course;
    }
}

} // namespace
