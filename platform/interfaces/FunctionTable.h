#pragma once

#include <any>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kqu::platform {

/// The functions that the messenger reaches by name and library while it runs. A function is
/// described by a type with `name`, `library` and `Signature` (see Functions.h), so that a look-up
/// is typed and still made by the two names.
class FunctionTable {
  public:
    template <class F>
    using Entry = std::shared_ptr<const std::function<typename F::Signature>>;

    template <class F>
    void Set(std::function<typename F::Signature> function) {
        entries_[Key<F>()] = Entry<F>(
            std::make_shared<const std::function<typename F::Signature>>(std::move(function)));
    }

    template <class F>
    void Remove() {
        entries_.erase(Key<F>());
    }

    /// The function, or nil if nothing of that name and library is here. The result stays callable
    /// even if the entry is replaced while it runs.
    template <class F>
    [[nodiscard]] Entry<F> Find() const {
        const auto found = entries_.find(Key<F>());
        return found == entries_.end() ? nullptr : std::any_cast<Entry<F>>(found->second);
    }

  private:
    using NameAndLibrary = std::pair<std::string_view, std::string_view>;

    template <class F>
    static constexpr NameAndLibrary Key() {
        return {F::name, F::library};
    }

    std::map<NameAndLibrary, std::any> entries_;
};

} // namespace kqu::platform
