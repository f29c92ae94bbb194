#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kqu::run {

/// Numbers as tools print them, whatever marks the locale has.

/// The last percentage in the text, from 0 to 1: "  12.5%", "12,5 %".
[[nodiscard]] std::optional<double> LastPercentage(std::string_view text);

/// The digits of the text as one number, whatever stands between them: "8,700,000".
[[nodiscard]] double Count(std::string_view text);

/// An amount such as "56.267 MiB" or "1,2 GB" at the beginning of the text, in bytes.
[[nodiscard]] std::optional<double> Amount(std::string_view text);

/// A size as dd takes it: "4096", "64k", "1M", "2x512", "10MB", "7B".
[[nodiscard]] std::optional<std::uint64_t> DdSize(std::string_view text);

/// part / whole; nothing if there is no whole.
[[nodiscard]] std::optional<double> Share(double part, double whole);

} // namespace kqu::run
