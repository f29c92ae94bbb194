#pragma once

#include "post/kqu-run/Launch.h"
#include "post/posting/Text.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kqu::run {

using post::Words;

/// What a tool would make of its arguments by the conventions of getopt_long: options may stand in
/// clusters, have their value attached or behind them, and stand among the operands.
class Arguments {
  public:
    enum class Listed { HasValue, HasNoValue };
    /// `options` names those that take a value, such as "C o exclude", and all others take none; or
    /// the other way round.
    Arguments(std::span<const std::string> arguments, std::string_view options,
              Listed listed = Listed::HasValue);
    /// The arguments behind the tool's name.
    Arguments(const Launch& launch, std::string_view options, Listed listed = Listed::HasValue);

    /// Takes the next argument off, with its value where it is an option; returns whether it is
    /// one.
    bool Take(std::span<const std::string>& rest);

    /// Whether any of the options, such as "q quiet", was given.
    [[nodiscard]] bool Has(std::string_view names) const;
    /// The value of the last of these options that was given.
    [[nodiscard]] std::optional<std::string> Value(std::string_view names) const;
    /// How often these options were given.
    [[nodiscard]] std::size_t Count(std::string_view names) const;
    [[nodiscard]] const std::vector<std::string>& Operands() const { return operands_; }

  private:
    struct Option {
        std::string name;
        std::string value;
    };
    void TakeLong(std::string_view argument, std::span<const std::string>& rest);
    void TakeCluster(std::string_view argument, std::span<const std::string>& rest);

    [[nodiscard]] bool TakesValue(std::string_view option) const;

    std::vector<std::string_view> listed_;
    bool listedTakeValue_;
    std::vector<Option> options_;
    std::vector<std::string> operands_;
};

} // namespace kqu::run
