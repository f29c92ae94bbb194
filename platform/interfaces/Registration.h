#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace kqu::platform {

/// An owned registration: dropping it takes the registration back. Movable, empty when moved from.
/// A handler may drop its own registration while it runs.
class [[nodiscard]] Registration {
  public:
    Registration() = default;
    explicit Registration(std::function<void()> undo)
        : undo_(new std::function<void()>(std::move(undo))) {}

    void Drop() { undo_.reset(); }
    [[nodiscard]] bool IsActive() const { return undo_ != nullptr; }

  private:
    struct Run {
        void operator()(std::function<void()>* undo) const {
            const std::unique_ptr<std::function<void()>> owned(undo);
            (*undo)();
        }
    };
    std::unique_ptr<std::function<void()>, Run> undo_;
};

} // namespace kqu::platform
