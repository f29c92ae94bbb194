#pragma once

#include "tests/lives/Life.h"

namespace kqu::lives {

/// How lives went, in plain bytes that processes can share.
struct Report {
    std::uint64_t seed, lives;
    /// Events that happened, and times that the whole program was compared with what it must be.
    std::uint64_t events, looks;
    /// How long the program lived, in its own time.
    double seconds;
    /// What was wrong first, as "what: how, when"; empty for lives without fault.
    char complaint[1000];

    [[nodiscard]] bool IsGood() const { return complaint[0] == '\0'; }
    void Complain(const std::string& what) {
        if (IsGood())
            what.copy(complaint, sizeof complaint - 1);
    }
};

/// Lets the events of a life happen to the program on a machine of its own and looks at it after
/// each, and wherever handlers nest. A life that does not end by itself is ended. Adds to the
/// report, which has no complaint yet.
void Play(const Life& life, Report& report);

} // namespace kqu::lives
