#include "platform/logind/LogindPowerMessages.h"

#include "platform/dbus/BusAddress.h"
#include "platform/text/PlainText.h"

#include <algorithm>
#include <utility>

namespace kqu::platform {

namespace {
/// Texts of tools may be of any length and hold any bytes; a D-Bus string may not.
constexpr std::size_t longestReason = 200;

Moment Now() {
    return std::chrono::steady_clock::now();
}

bool IsRestart(std::string_view kind) {
    return kind == "reboot" || kind == "kexec" || kind == "soft-reboot";
}

std::optional<Moment> Earlier(std::optional<Moment> a, std::optional<Moment> b) {
    return a && b ? std::min(*a, *b) : (a ? a : b);
}
} // namespace

LogindPowerMessages::LogindPowerMessages(std::chrono::milliseconds retryAfter)
    : manager_(SystemBusAddress, retryAfter, *this) {}

Registration LogindPowerMessages::Listen(Listener listener, Reason reason) {
    const auto audience =
        std::make_shared<Audience>(Audience{std::move(listener), std::move(reason)});
    audience_ = audience;
    times_.Changed();
    if (isManagerThere_)
        guard_.Begin(Now());
    manager_.Begin();
    return Registration([this, audience] {
        if (audience_ != audience)
            return;
        audience_ = nullptr;
        guard_.End();
    });
}

pollfd LogindPowerMessages::Watch() const {
    return manager_.Source().Watch();
}

std::optional<Moment> LogindPowerMessages::Due() const {
    std::optional<Moment> due = Earlier(manager_.Source().Due(), kindDeadline_);
    if (guard_.IsOnDuty() && !isQuestionPosted_)
        due = Earlier(due, times_.Due());
    return Earlier(due, guard_.Due());
}

bool LogindPowerMessages::Collect(EventQueue& queue) {
    const bool more = manager_.Source().Collect(queue);
    const Moment now = Now();
    if (kindDeadline_ && now >= *kindDeadline_)
        AnnounceShutdown(std::nullopt, queue);
    if (const auto due = guard_.Due(); due && now >= *due)
        guard_.Look(now);
    if (guard_.IsOnDuty() && !isQuestionPosted_ && times_.IsTime(now)) {
        isQuestionPosted_ = true;
        queue.Post([this] { Ask(); });
    }
    return more;
}

void LogindPowerMessages::Ask() {
    isQuestionPosted_ = false;
    times_.Asked(Now(), true);
    const auto audience = audience_;
    if (!audience)
        return;
    const bool objects = Tell(canSystemSleep);
    const PlainText reason(audience->reason());
    const Moment now = Now();
    times_.Asked(now, reason.Length() > 0);
    guard_.Answered(objects, std::string(StartOf(reason.utf8, longestReason)), now);
}

bool LogindPowerMessages::Tell(std::uint32_t message) const {
    const auto audience = audience_;
    return audience && audience->listener(static_cast<std::int32_t>(message));
}

void LogindPowerMessages::ManagerCame() {
    isManagerThere_ = true;
    isShutdownAnnounced_ = false;
    times_.Changed();
    if (audience_)
        guard_.Begin(Now());
}

void LogindPowerMessages::ManagerLeft() {
    isManagerThere_ = false;
    kindDeadline_.reset();
    guard_.End();
}

void LogindPowerMessages::LockGranted(std::uint64_t request, InhibitorLock lock) {
    guard_.Granted(request, std::move(lock));
}

void LogindPowerMessages::LockRefused(std::uint64_t request) {
    guard_.Refused(request);
}

void LogindPowerMessages::Prepares(Announcement announcement, bool begins,
                                   const std::optional<std::string>& kind, EventQueue& queue) {
    if (!begins) {
        Resume(announcement, queue);
    } else if (announcement == Announcement::Sleep) {
        Announce(systemWillSleep, queue);
    } else if (isShutdownAnnounced_) {
        // A manager that tells the kind announces each shutdown in two ways.
        return;
    } else if (kind) {
        AnnounceShutdown(kind, queue);
    } else if (!kindDeadline_) {
        kindDeadline_ = Now() + kindPatience;
        manager_.RequestScheduledKind();
    }
}

void LogindPowerMessages::ScheduledKind(const std::optional<std::string>& kind, EventQueue& queue) {
    if (kindDeadline_)
        AnnounceShutdown(kind, queue);
}

void LogindPowerMessages::AnnounceShutdown(const std::optional<std::string>& kind,
                                           EventQueue& queue) {
    kindDeadline_.reset();
    isShutdownAnnounced_ = true;
    Announce(IsRestart(kind.value_or("")) ? systemWillRestart : systemWillPowerOff, queue);
}

void LogindPowerMessages::Announce(std::uint32_t message, EventQueue& queue) {
    queue.Post([this, message] {
        guard_.PreparationBegan();
        // It can't be refused any more, whatever the answer.
        Tell(message);
        guard_.Acknowledge();
    });
}

void LogindPowerMessages::Resume(Announcement announcement, EventQueue& queue) {
    if (announcement == Announcement::Shutdown) {
        kindDeadline_.reset();
        isShutdownAnnounced_ = false;
    }
    queue.Post([this, announcement] {
        guard_.PreparationEnded(Now());
        times_.Changed();
        if (announcement == Announcement::Sleep)
            Tell(systemHasPoweredOn);
    });
}

} // namespace kqu::platform
