#include "tests/lives/Player.h"
#include "tests/lives/Shrinker.h"

#include <charconv>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

// Random whole lives of the program on the simulated machine:
//
//   kqu_lives [--seed N] [--lives N] [--seconds N] [--play FILE]
//
// plays the lives of the seeds from N on, or from a random one, until as many lives or seconds
// have passed as are wanted (one life if nothing is said). The first life with a fault is
// told, shrunk and written to a file that --play plays. Exit status 1 then, 2 for a wrong use.

namespace kqu::lives {
namespace {

/// Seconds of real time after which a life counts as hanging.
constexpr unsigned patience = 120;

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
    if (status != 0)
        report->Complain(WIFSIGNALED(status)
                             ? "died: of signal " + std::to_string(WTERMSIG(status))
                             : "died: with status " + std::to_string(WEXITSTATUS(status)));
    return *report;
}

std::string TryOut(const Life& life, bool quietly) {
    return Watched([&](Report& report) {
               // What a sanitizer tells is worth reading once.
               if (quietly && std::freopen("/dev/null", "w", stderr) == nullptr)
                   std::exit(1);
               alarm(patience);
               Play(life, report);
           })
        .complaint;
}

int PlayFile(const std::string& name) {
    std::ifstream file(name);
    if (!file)
        throw std::runtime_error("cannot be read: " + name);
    const std::string complaint = TryOut(FromText(file), false);
    std::cout << (complaint.empty() ? "no fault" : complaint) << '\n';
    return complaint.empty() ? 0 : 1;
}

void ShrinkAndTell(std::uint64_t seed, const std::string& complaint) {
    const std::string name = "life-" + std::to_string(seed) + ".txt";
    std::cout << "the life of seed " << seed << " has a fault: " << complaint
              << "\nagain: kqu_lives --seed " << seed << "\nshrinking it ..." << std::endl;
    const Life life =
        Shrink(MakeLife(seed), [](const Life& smaller) { return TryOut(smaller, true); });
    std::ofstream(name) << ToText(life);
    std::cout << TryOut(life, true) << "\nwith these " << life.size() << " events, in " << name
              << " for kqu_lives --play " << name << ":\n"
              << ToText(life);
}

using Wanted = std::map<std::string, std::uint64_t>;

int PlaySeeds(const Wanted& wanted) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const auto passed = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
    const std::uint64_t first = wanted.at("--seed"), seconds = wanted.at("--seconds");
    const Report report = Watched([&](Report& told) {
        for (told.seed = first;; ++told.seed) {
            alarm(patience);
            Play(MakeLife(told.seed), told);
            if (!told.IsGood() || told.lives == wanted.at("--lives") ||
                (seconds > 0 && passed() >= static_cast<double>(seconds)))
                return;
        }
    });
    std::cout << "seeds " << first << " to " << report.seed << ": " << report.lives << " lives, "
              << report.events << " events, " << report.looks << " looks, " << report.seconds / 3600
              << " hours lived in " << passed() << " s" << std::endl;
    if (!report.IsGood())
        ShrinkAndTell(report.seed, report.complaint);
    return report.IsGood() ? 0 : 1;
}

int Run(int count, char** arguments) {
    Wanted wanted{{"--seed", std::random_device()()}, {"--lives", 0}, {"--seconds", 0}};
    for (int i = 1; i < count; i += 2) {
        const std::string option = arguments[i];
        const std::string value = i + 1 < count ? arguments[i + 1] : "";
        const char* const end = value.data() + value.size();
        if (option == "--play" && !value.empty())
            return PlayFile(value);
        if (!wanted.contains(option) || value.empty() ||
            std::from_chars(value.data(), end, wanted[option]).ptr != end)
            throw std::runtime_error("not understood: " + option + " " + value);
    }
    if (wanted["--lives"] + wanted["--seconds"] == 0)
        wanted["--lives"] = 1;
    return PlaySeeds(wanted);
}

} // namespace
} // namespace kqu::lives

int main(int count, char** arguments) {
    try {
        return kqu::lives::Run(count, arguments);
    } catch (const std::exception& error) {
        std::cerr << "kqu_lives: " << error.what() << '\n';
        return 2;
    }
}
