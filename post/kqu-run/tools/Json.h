#pragma once

#include "platform/CDeleter.h"

#include <json-c/json.h>
#include <optional>
#include <string>
#include <string_view>

namespace kqu::run {

/// One line of JSON as a tool prints it (RFC 8259); a line that is none has no values.
class Json {
  public:
    explicit Json(std::string_view line) : object_(json_tokener_parse(std::string(line).c_str())) {}

    [[nodiscard]] std::optional<double> Number(const char* key) const {
        json_object* value = Find(key);
        return json_object_is_type(value, json_type_double) ||
                       json_object_is_type(value, json_type_int)
                   ? std::optional(json_object_get_double(value))
                   : std::nullopt;
    }
    /// The text, or the first one of a list; empty where there is none.
    [[nodiscard]] std::string Text(const char* key) const {
        json_object* value = Find(key);
        if (json_object_is_type(value, json_type_array))
            value = json_object_array_get_idx(value, 0);
        return json_object_is_type(value, json_type_string) ? json_object_get_string(value) : "";
    }

  private:
    [[nodiscard]] json_object* Find(const char* key) const {
        json_object* value = nullptr;
        json_object_object_get_ex(object_.get(), key, &value);
        return value;
    }

    platform::CPointer<json_object, json_object_put> object_;
};

} // namespace kqu::run
