#pragma once

#include "post/posting/Connection.h"

#include <chrono>
#include <optional>
#include <string>

namespace kqu::post {

/// Questions to the others on a bus, asked one after the other. All answers together may take the
/// patience that is left until the deadline; whatever goes wrong is no answer.
class Questions {
  public:
    using Moment = std::chrono::steady_clock::time_point;

    Questions(sd_bus& bus, Moment deadline) : bus_(bus), deadline_(deadline) {}

    /// Somebody's object and what of it is meant.
    struct Object {
        const char* owner;
        std::string path;
        const char* interface;
    };

    /// Calls a method with arguments of sd-bus's types. Nil where it fails.
    template <class... Arguments>
    [[nodiscard]] MessagePointer Call(const Object& object, const char* member, const char* types,
                                      Arguments... arguments) {
        if (!MayAsk())
            return nullptr;
        sd_bus_message* reply = nullptr;
        const int result =
            sd_bus_call_method(&bus_, object.owner, object.path.c_str(), object.interface, member,
                               nullptr, &reply, types, arguments...);
        MessagePointer owned(reply);
        return result < 0 ? nullptr : std::move(owned);
    }

    /// Reads a property of a signature into places of sd-bus's types. Texts are copied by `take`,
    /// which is called while they are there.
    template <class Take>
    bool Read(const Object& object, const char* property, const char* signature, Take take) {
        const MessagePointer reply =
            Call({object.owner, object.path, "org.freedesktop.DBus.Properties"}, "Get", "ss",
                 object.interface, property);
        return reply && sd_bus_message_enter_container(reply.get(), 'v', signature) > 0 &&
               take(*reply);
    }

    /// Whether a name has an owner at present; nobody is started for the question.
    [[nodiscard]] bool HasOwner(const char* name);

  private:
    [[nodiscard]] bool MayAsk();

    sd_bus& bus_;
    Moment deadline_;
};

} // namespace kqu::post
