#pragma once

namespace kqu::platform {

/// Holds the screen back while a change is under way. Holds nest: the outermost release lets the
/// windows show what they have by then.
class ScreenUpdates {
  public:
    void Disable() { ++depth_; }
    /// A release without a hold is ignored.
    void Enable() {
        if (depth_ > 0)
            --depth_;
    }
    [[nodiscard]] bool AreHeld() const { return depth_ > 0; }

  private:
    int depth_ = 0;
};

} // namespace kqu::platform
