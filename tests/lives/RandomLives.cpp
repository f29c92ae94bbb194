#include "tests/lives/Player.h"
#include "tests/lives/Shrinker.h"

#include <charconv>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

// Random whole lives of the program on the simulated machine:
//
//   kqu_lives [--seed N] [--lives N] [--seconds N] [--events N] [--play FILE]
//
// plays the lives of the seeds from N on, or from a random one, until as many lives, seconds or
// events have passed as are wanted (one life if nothing is said). The first life with a fault is
// told, shrunk and written to a file that --play plays. Exit status 1 then, 2 for a wrong use.

namespace kqu::lives {
namespace {

/// Seconds of real time after which a life counts as hanging.
constexpr unsigned patience = 120;

/// What a process that plays lives tells the one that watches it, even if it dies.
struct Report {
    std::uint64_t seed;
    std::uint64_t lives;
    std::uint64_t events;
    std::uint64_t looks;
    double seconds;
    char complaint[1000];
};

void Add(Report& report, const Outcome& outcome) {
    ++report.lives;
    report.events += outcome.events;
    report.looks += outcome.looks;
    report.seconds += outcome.seconds;
    outcome.complaint.copy(report.complaint, sizeof report.complaint - 1);
}

/// Runs `work` in a process of its own, with a report that starts empty; its death is a complaint.
Report Watched(const std::function<void(Report&)>& work) {
    static auto* const report = static_cast<Report*>(
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    *report = {};
    std::cout.flush();
    const pid_t child = fork();
    if (child == 0) {
        work(*report);
        std::exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    Report told = *report;
    if (status != 0) {
        const std::string how = WIFSIGNALED(status)
                                    ? "died: of signal " + std::to_string(WTERMSIG(status))
                                    : "died: with status " + std::to_string(WEXITSTATUS(status));
        how.copy(told.complaint, sizeof told.complaint - 1);
    }
    return told;
}

std::string Trial(const Life& life, bool quietly) {
    return Watched([&](Report& report) {
               // What a sanitizer tells is worth reading once.
               if (quietly && std::freopen("/dev/null", "w", stderr) == nullptr)
                   std::exit(1);
               alarm(patience);
               Add(report, Play(life));
           })
        .complaint;
}

struct Wanted {
    std::uint64_t seed = std::random_device()();
    std::uint64_t lives = 0;
    std::uint64_t events = 0;
    std::uint64_t seconds = 0;
    std::string file;
};

int PlayFile(const std::string& name) {
    std::ifstream file(name);
    if (!file)
        throw std::runtime_error("cannot be read: " + name);
    const std::string complaint = Trial(FromText(file), false);
    std::cout << (complaint.empty() ? "no fault" : complaint) << '\n';
    return complaint.empty() ? 0 : 1;
}

void ShrinkAndTell(std::uint64_t seed, const std::string& complaint) {
    const std::string name = "life-" + std::to_string(seed) + ".txt";
    std::cout << "the life of seed " << seed << " has a fault: " << complaint
              << "\nagain: kqu_lives --seed " << seed << "\nshrinking it ..." << std::endl;
    const Life life =
        Shrink(MakeLife(seed), [](const Life& smaller) { return Trial(smaller, true); });
    std::ofstream(name) << ToText(life);
    std::cout << Trial(life, true) << "\nwith these " << life.size() << " events, in " << name
              << " for kqu_lives --play " << name << ":\n"
              << ToText(life);
}

int PlaySeeds(const Wanted& wanted) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const auto passed = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
    const auto isEnough = [&](const Report& report) {
        return report.complaint[0] != '\0' || (wanted.lives > 0 && report.lives >= wanted.lives) ||
               (wanted.events > 0 && report.events >= wanted.events) ||
               (wanted.seconds > 0 && passed() >= static_cast<double>(wanted.seconds));
    };
    const Report report = Watched([&](Report& told) {
        for (told.seed = wanted.seed;; ++told.seed) {
            alarm(patience);
            Add(told, Play(MakeLife(told.seed)));
            if (isEnough(told))
                return;
        }
    });
    std::cout << "seeds " << wanted.seed << " to " << report.seed << ": " << report.lives
              << " lives, " << report.events << " events, " << report.looks << " looks, "
              << report.seconds / 3600 << " hours lived in " << passed() << " s" << std::endl;
    if (report.complaint[0] == '\0')
        return 0;
    ShrinkAndTell(report.seed, report.complaint);
    return 1;
}

Wanted Read(int count, char** arguments) {
    Wanted wanted;
    for (int i = 1; i < count; i += 2) {
        const std::string option = arguments[i];
        const std::string value = i + 1 < count ? arguments[i + 1] : "";
        std::uint64_t* number = option == "--seed"      ? &wanted.seed
                                : option == "--lives"   ? &wanted.lives
                                : option == "--events"  ? &wanted.events
                                : option == "--seconds" ? &wanted.seconds
                                                        : nullptr;
        const char* const end = value.data() + value.size();
        if (option == "--play" && !value.empty())
            wanted.file = value;
        else if (number == nullptr || value.empty() ||
                 std::from_chars(value.data(), end, *number).ptr != end)
            throw std::runtime_error("not understood: " + option + " " + value);
    }
    if (wanted.lives + wanted.seconds + wanted.events == 0)
        wanted.lives = 1;
    return wanted;
}

} // namespace
} // namespace kqu::lives

int main(int count, char** arguments) {
    using namespace kqu::lives;
    try {
        const Wanted wanted = Read(count, arguments);
        return wanted.file.empty() ? PlaySeeds(wanted) : PlayFile(wanted.file);
    } catch (const std::exception& error) {
        std::cerr << "kqu_lives: " << error.what() << '\n';
        return 2;
    }
}
