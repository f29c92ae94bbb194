#include "post/kqu-run/Arguments.h"

#include <algorithm>

namespace kqu::run {

namespace {
template <class Items>
bool Contains(const Items& items, std::string_view item) {
    return std::find(items.begin(), items.end(), item) != items.end();
}

std::string Next(std::span<const std::string>& rest) {
    if (rest.empty())
        return {};
    std::string next = rest.front();
    rest = rest.subspan(1);
    return next;
}
} // namespace

Arguments::Arguments(std::span<const std::string> arguments, std::string_view options,
                     Listed listed)
    : listed_(Words(options)), listedTakeValue_(listed == Listed::HasValue) {
    while (!arguments.empty()) {
        if (arguments.front() == "--") {
            operands_.insert(operands_.end(), arguments.begin() + 1, arguments.end());
            break;
        }
        Take(arguments);
    }
}

bool Arguments::Take(std::span<const std::string>& rest) {
    const std::string argument = Next(rest);
    const bool isOption = argument.size() > 1 && argument.starts_with("-");
    if (argument.starts_with("--"))
        TakeLong(std::string_view(argument).substr(2), rest);
    else if (isOption)
        TakeCluster(std::string_view(argument).substr(1), rest);
    else
        operands_.push_back(argument);
    return isOption;
}

Arguments::Arguments(const Launch& launch, std::string_view options, Listed listed)
    : Arguments(std::span(launch.arguments).subspan(launch.tool + 1), options, listed) {}

bool Arguments::TakesValue(std::string_view option) const {
    return Contains(listed_, option) == listedTakeValue_;
}

void Arguments::TakeLong(std::string_view argument, std::span<const std::string>& rest) {
    const std::size_t equals = argument.find('=');
    Option option{std::string(argument.substr(0, equals)), {}};
    if (equals != std::string_view::npos)
        option.value = argument.substr(equals + 1);
    else if (TakesValue(option.name))
        option.value = Next(rest);
    options_.push_back(std::move(option));
}

void Arguments::TakeCluster(std::string_view argument, std::span<const std::string>& rest) {
    for (std::size_t i = 0; i < argument.size(); ++i) {
        Option option{std::string(1, argument[i]), {}};
        const bool takesRest = TakesValue(option.name);
        if (takesRest)
            option.value =
                i + 1 < argument.size() ? std::string(argument.substr(i + 1)) : Next(rest);
        options_.push_back(std::move(option));
        if (takesRest)
            break;
    }
}

bool Arguments::Has(std::string_view names) const {
    return Value(names).has_value();
}

std::size_t Arguments::Count(std::string_view names) const {
    const auto wanted = Words(names);
    return static_cast<std::size_t>(
        std::count_if(options_.begin(), options_.end(),
                      [&](const Option& option) { return Contains(wanted, option.name); }));
}

std::optional<std::string> Arguments::Value(std::string_view names) const {
    const auto wanted = Words(names);
    const auto found = std::find_if(options_.rbegin(), options_.rend(), [&](const Option& option) {
        return Contains(wanted, option.name);
    });
    return found != options_.rend() ? std::optional(found->value) : std::nullopt;
}

} // namespace kqu::run
