#pragma once

#include <string_view>

namespace kqu::post {

/// Whether a bus would take the text: UTF-8 by RFC 3629. A NUL, which a bus refuses, is not looked
/// for.
[[nodiscard]] bool IsUtf8(std::string_view text);

} // namespace kqu::post
