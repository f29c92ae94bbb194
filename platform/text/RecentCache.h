#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace kqu::platform {

/// Keeps what was made of texts for as long as it is in use: what nobody asked for during
/// `lifetime` goes at the next entry. So it is as large as what is on show, and texts that change
/// leave nothing behind. Beyond `limit` bytes, one entry or growth more or less, nothing is entered
/// in place of what is still in use: a list that doesn't fit as a whole keeps the part that does,
/// instead of driving each text out just before it is wanted again.
template <class Value>
class RecentCache {
  public:
    using Moment = std::chrono::steady_clock::time_point;

    RecentCache(std::chrono::milliseconds lifetime, std::size_t limit)
        : lifetime_(lifetime), limit_(limit) {}

    /// The value of a key, or nil. It stays where it is until the next entry.
    [[nodiscard]] Value* Find(std::string_view key, Moment now) {
        const auto found = places_.find(key);
        if (found == places_.end())
            return nullptr;
        entries_.splice(entries_.begin(), entries_, found->second);
        found->second->lastUse = now;
        return &found->second->value;
    }

    /// Enters a value for a key that is not there. `bytes` is what the value takes besides itself.
    /// What finds no room is good until the next entry.
    Value& Enter(std::string key, Value value, std::size_t bytes, Moment now) {
        while (!entries_.empty() && now - entries_.back().lastUse > lifetime_)
            DropOldest();
        if (bytes_ >= limit_)
            return homeless_.emplace(std::move(value));
        entries_.push_front({std::move(key), std::move(value), bytes, now});
        Entry& entry = entries_.front();
        places_.emplace(entry.key, entries_.begin());
        bytes_ += CostOf(entry);
        return entry.value;
    }

    /// The value of a key that is there has grown by so many bytes.
    void Grow(std::string_view key, std::size_t bytes) {
        const auto found = places_.find(key);
        if (found == places_.end())
            return;
        found->second->bytes += bytes;
        bytes_ += bytes;
    }

  private:
    struct Entry {
        std::string key;
        Value value;
        std::size_t bytes;
        Moment lastUse;
    };
    using Entries = std::list<Entry>;

    static std::size_t CostOf(const Entry& entry) {
        return sizeof(Entry) + entry.key.size() + entry.bytes;
    }

    void DropOldest() {
        bytes_ -= CostOf(entries_.back());
        places_.erase(entries_.back().key);
        entries_.pop_back();
    }

    std::chrono::milliseconds lifetime_;
    std::size_t limit_;
    std::size_t bytes_ = 0;
    std::optional<Value> homeless_;
    /// The latest used first.
    Entries entries_;
    std::unordered_map<std::string_view, typename Entries::iterator> places_;
};

} // namespace kqu::platform
