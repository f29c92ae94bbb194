#include "tests/lives/Shrinker.h"

#include <algorithm>

namespace kqu::lives {

namespace {
class Shrinker {
  public:
    Shrinker(Life life, const Trial& trial)
        : life_(std::move(life)), trial_(trial), what_(WhatIsWrong(life_)) {}

    Life Run() {
        for (Life before; before != life_;) {
            before = life_;
            for (std::size_t size = std::max<std::size_t>(1, life_.size() / 2); size > 0; size /= 2)
                LeaveOut(size);
            for (std::size_t i = 0; i < life_.size(); ++i)
                Simplify(i);
        }
        return life_;
    }

  private:
    [[nodiscard]] std::string WhatIsWrong(const Life& life) const {
        const std::string complaint = trial_(life);
        return complaint.substr(0, complaint.find(':'));
    }
    bool Take(Life smaller) {
        if (smaller == life_ || WhatIsWrong(smaller) != what_)
            return false;
        life_ = std::move(smaller);
        return true;
    }
    void LeaveOut(std::size_t size) {
        for (std::size_t at = 0; at < life_.size();) {
            Life smaller = life_;
            const auto first = smaller.begin() + static_cast<std::ptrdiff_t>(at);
            smaller.erase(first,
                          first + static_cast<std::ptrdiff_t>(std::min(size, smaller.size() - at)));
            if (!Take(std::move(smaller)))
                at += size;
        }
    }
    void Simplify(std::size_t at) {
        const auto change = [&](const std::function<void(Event&)>& how) {
            Life plainer = life_;
            how(plainer[at]);
            return Take(std::move(plainer));
        };
        change([](Event& event) { event.nested = false; });
        for (std::size_t i = 0; i < life_[at].values.size(); ++i)
            if (!change([i](Event& event) { event.values[i] = 0; }))
                for (int bit = 0; bit < 24; ++bit)
                    change([=](Event& event) { event.values[i] &= ~(1 << bit); });
    }

    Life life_;
    const Trial& trial_;
    std::string what_;
};
} // namespace

Life Shrink(Life life, const Trial& trial) {
    return Shrinker(std::move(life), trial).Run();
}

} // namespace kqu::lives
