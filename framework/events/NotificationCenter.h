#pragma once

#include "framework/corefoundation/CFValues.h"
#include "framework/ui/Control.h"
#include "framework/values/Object.h"
#include "platform/interfaces/DistributedNotifications.h"
#include "platform/interfaces/Registration.h"

#include <cstdint>
#include <functional>
#include <string>

namespace kqu {

/// A listener on the machine's distributed notification centre. Receives nothing until the first
/// `Add`.
class NotificationCenter : public InvisibleControl {
  public:
    /// Do not hold notifications back while the application is in the background.
    static constexpr std::int32_t deliverImmediately = 4;

    explicit NotificationCenter(Window& owner) : InvisibleControl{owner} {}

    /// Registers for notifications; an empty name stands for every name. The stream is narrowed by
    /// the centre's own interface alone: however many registrations there are, each notification
    /// is received once, whatever its object, which the receiver judges.
    void Add(const std::string& name, const std::string& object, std::int32_t flags);

    /// The `Received` event; what was not sent, or can't be what its place wants, is nil.
    std::function<void(const Ref<CFString>& name, const Ref<CFObject>& object,
                       const Ref<CFDictionary>& userInfo)>
        Received;

  private:
    void Deliver(const platform::PostedNotification& posted);

    platform::Registration listening_;
};

} // namespace kqu
