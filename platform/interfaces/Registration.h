#pragma once

#include <functional>
#include <utility>

namespace kqu::platform {

/// An owned registration: dropping it takes the registration back. Movable, empty when moved from.
/// A handler may drop its own registration while it runs.
class [[nodiscard]] Registration {
  public:
    Registration() = default;
    explicit Registration(std::function<void()> undo) : undo_(std::move(undo)) {}
    Registration(Registration&& other) noexcept : undo_(std::exchange(other.undo_, nullptr)) {}
    Registration& operator=(Registration&& other) noexcept {
        if (this != &other) {
            Drop();
            undo_ = std::exchange(other.undo_, nullptr);
        }
        return *this;
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
    ~Registration() { Drop(); }

    void Drop() {
        if (auto undo = std::exchange(undo_, nullptr))
            undo();
    }
    [[nodiscard]] bool IsActive() const { return static_cast<bool>(undo_); }

  private:
    std::function<void()> undo_;
};

} // namespace kqu::platform
