#pragma once

#include "tests/lives/Life.h"

#include <algorithm>
#include <functional>
#include <string>

namespace kqu::lives {

/// Plays a life and returns its complaint, "what: how"; empty if it went well.
using Trial = std::function<std::string(const Life&)>;

/// A life with fewer and plainer events in which the same is wrong as in the given one: no event
/// of it can be left out.
[[nodiscard]] inline Life Shrink(Life life, const Trial& trial) {
    const auto whatIsWrong = [&](const Life& tried) {
        const std::string complaint = trial(tried);
        return complaint.substr(0, complaint.find(':'));
    };
    const std::string fault = whatIsWrong(life);
    // Keeps a change after which the same is wrong.
    const auto changed = [&](const std::function<void(Life&)>& change) {
        Life plainer = life;
        change(plainer);
        if (plainer == life || whatIsWrong(plainer) != fault)
            return false;
        life = std::move(plainer);
        return true;
    };
    for (Life before; before != life;) {
        before = life;
        for (std::size_t size = std::max<std::size_t>(1, life.size() / 2); size > 0; size /= 2)
            for (std::size_t at = 0; at < life.size();)
                if (!changed([&](Life& shorter) {
                        const auto first = shorter.begin() + static_cast<std::ptrdiff_t>(at);
                        const std::size_t count = std::min(size, shorter.size() - at);
                        shorter.erase(first, first + static_cast<std::ptrdiff_t>(count));
                    }))
                    at += size;
        for (std::size_t at = 0; at < life.size(); ++at) {
            changed([=](Life& plainer) { plainer[at].nested = false; });
            for (std::size_t i = 0; i < life[at].values.size(); ++i)
                if (!changed([=](Life& plainer) { plainer[at].values[i] = 0; }))
                    for (int bit = 0; bit < 24; ++bit)
                        changed([=](Life& plainer) { plainer[at].values[i] &= ~(1 << bit); });
        }
    }
    return life;
}

} // namespace kqu::lives
