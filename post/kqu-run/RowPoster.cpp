#include "post/kqu-run/RowPoster.h"

#include "post/posting/StartMessenger.h"
#include "post/posting/UserCommand.h"

#include <condition_variable>
#include <cstdio>
#include <exception>
#include <map>
#include <mutex>
#include <thread>

namespace kqu::run {

namespace {
using Clock = std::chrono::steady_clock;

/// How long a bus that did not take a post is left alone.
constexpr std::chrono::milliseconds pause{1500};
constexpr std::chrono::minutes untilGivenUp{1};
} // namespace

struct RowPoster::Shared {
    post::Bus bus;
    bool startsMessenger;
    bool isVerbose;

    std::mutex lock;
    std::condition_variable changed;
    std::optional<post::Notification> newest;
    bool isPosting = false;

    // The thread's own.
    std::optional<post::Connection> connection;
    Clock::time_point pauseEnds{}, nextStart{};
    /// Since when the messenger is started for a session at the seat; long ago once it listened.
    std::map<std::string, Clock::time_point> starts;

    post::Notification Take() {
        std::unique_lock held(lock);
        isPosting = false;
        changed.notify_all();
        changed.wait(held, [this] { return newest.has_value(); });
        isPosting = true;
        post::Notification taken = std::move(*newest);
        newest.reset();
        return taken;
    }

    /// Once in each session, since a panel that was closed stays closed. A session that has just
    /// begun may not have a display yet, and is asked again for a while.
    void StartIfNeeded() {
        const auto now = Clock::now();
        if (!startsMessenger || now < nextStart)
            return;
        nextStart = now + pause;
        const auto session = post::SessionAtSeat();
        auto& first = starts.try_emplace(session ? session->name : "", now).first->second;
        const bool mayTry = now - first < untilGivenUp;
        if (mayTry && (post::StartMessenger(*connection) || !session))
            first = now - untilGivenUp;
    }

    void Post(const post::Notification& notification) {
        if (Clock::now() < pauseEnds)
            return;
        try {
            if (!connection) {
                connection = post::Connect(bus);
                starts.clear();
            }
            StartIfNeeded();
            post::Send(*connection, notification);
        } catch (const std::exception& error) {
            connection.reset();
            pauseEnds = Clock::now() + pause;
            if (std::exchange(isVerbose, false))
                std::fprintf(stderr, "kqu-run: %s\n", error.what());
        }
    }
};

RowPoster::RowPoster(post::Bus bus, bool startsMessenger, bool isVerbose)
    : shared_(std::make_shared<Shared>()) {
    shared_->bus = bus;
    shared_->startsMessenger = startsMessenger;
    shared_->isVerbose = isVerbose;
    std::thread([shared = shared_] { Work(shared); }).detach();
}

void RowPoster::Work(const std::shared_ptr<Shared>& shared) {
    while (true)
        shared->Post(shared->Take());
}

void RowPoster::Post(post::Notification notification) {
    const std::lock_guard held(shared_->lock);
    shared_->newest = std::move(notification);
    shared_->changed.notify_all();
}

void RowPoster::Finish(std::chrono::milliseconds patience) {
    std::unique_lock held(shared_->lock);
    shared_->changed.wait_for(held, patience,
                              [this] { return !shared_->isPosting && !shared_->newest; });
}

} // namespace kqu::run
