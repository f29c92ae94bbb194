#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace kqu::oracle {

/// What one case is made of.
class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}

    /// A whole number, both limits included.
    int Between(int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(engine_);
    }
    double Real(double least, double most) {
        return least + (most - least) * Between(0, 1 << 30) / (1 << 30);
    }
    bool OneIn(int count) { return Between(1, count) == 1; }
    template <class T>
    const T& Of(const std::vector<T>& choices) {
        return choices[static_cast<std::size_t>(Between(0, static_cast<int>(choices.size()) - 1))];
    }
    std::string Text(const std::vector<std::string>& pieces, int most) {
        std::string text;
        for (int left = Between(0, most); left > 0; --left)
            text += Of(pieces);
        return text;
    }

  private:
    std::mt19937 engine_;
};

/// Runs so many cases, to the first that fails. One that fails is found again by the seed and the
/// number it tells; KQU_SEED in the environment asks for others.
inline void ForCases(unsigned count, const std::function<void(Random&)>& run) {
    const char* asked = std::getenv("KQU_SEED");
    const unsigned seed = asked == nullptr ? 1 : static_cast<unsigned>(std::atoi(asked));
    for (unsigned number = 0; number < count && !testing::Test::HasFailure(); ++number) {
        SCOPED_TRACE(testing::Message() << "KQU_SEED=" << seed << ", case " << number);
        Random random(seed * 1000003U + number);
        run(random);
    }
}

/// Pieces of odd texts: other scripts, bytes that are no text, markers, line ends.
inline const std::vector<std::string> oddPieces = {
    "a",      "A",      "Bc",        "\u00C4",     "\u00E4",     "\u0394", "\u03B4", "\u042F",
    "\u044F", "\u00DF", "日",        "\xFF",       " ",          "//",     "/",      ":",
    "\r",     "\n",     "<integer>", "</INTEGER>", ".app",       "-",      "12",     "<key>",
    "&",      "%",      "the",       "left",       "Brackwater", "0"};

} // namespace kqu::oracle
