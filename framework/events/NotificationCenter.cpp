#include "framework/events/NotificationCenter.h"

#include "framework/Runtime.h"
#include "framework/corefoundation/CFValues.h"

#include <memory>
#include <utility>
#include <variant>
#include <vector>

namespace kqu {

namespace {
struct ToObject {
    Ref<CFObject> operator()(const std::string& text) const { return CFString::Make(text); }
    Ref<CFObject> operator()(bool value) const { return CFBoolean::Make(value); }
    Ref<CFObject> operator()(double value) const { return CFNumber::Make(value); }
    Ref<CFObject> operator()(platform::OtherWireValue) const { return CFOther::Make(); }
};

Ref<CFDictionary> ToDictionary(const platform::WireDictionary& wire) {
    std::vector<std::pair<std::string, Ref<CFObject>>> entries;
    entries.reserve(wire.size());
    for (const auto& [key, value] : wire)
        entries.emplace_back(key, std::visit(ToObject{}, value));
    return CFDictionary::Make(std::move(entries));
}
} // namespace

void NotificationCenter::Add(const std::string& /*name*/, const std::string& /*object*/,
                             std::int32_t /*flags*/) {
    if (!listening_.IsActive())
        listening_ = Runtime::Current().Machine().notifications.Listen(
            [this](const platform::PostedNotification& posted) { Deliver(posted); });
}

void NotificationCenter::Deliver(const platform::PostedNotification& posted) {
    if (!Received)
        return;
    const Ref<CFString> name = posted.name ? CFString::Make(*posted.name) : nullptr;
    const Ref<CFObject> object = posted.object ? std::visit(ToObject{}, *posted.object) : nullptr;
    const Ref<CFDictionary> userInfo = posted.userInfo ? ToDictionary(*posted.userInfo) : nullptr;
    Received(name, object, userInfo);
}

} // namespace kqu
