#include "post/posting/Pattern.h"

namespace kqu::post {

std::vector<std::string_view> Pattern::In(std::string_view text) const {
    std::vector<regmatch_t> places(compiled_.re_nsub + 1);
    places[0].rm_eo = static_cast<regoff_t>(text.size());
    std::vector<std::string_view> found;
    if (regexec(&compiled_, text.data(), places.size(), places.data(), REG_STARTEND) != 0)
        return found;
    for (const regmatch_t& place : places)
        found.push_back(place.rm_so < 0
                            ? std::string_view()
                            : text.substr(static_cast<std::size_t>(place.rm_so),
                                          static_cast<std::size_t>(place.rm_eo - place.rm_so)));
    return found;
}

bool IsUtf8(std::string_view text) {
    static const Pattern utf8("^([\x01-\x7F]|[\xC2-\xDF][\x80-\xBF]|\xE0[\xA0-\xBF][\x80-\xBF]|"
                              "[\xE1-\xEC\xEE\xEF][\x80-\xBF]{2}|\xED[\x80-\x9F][\x80-\xBF]|"
                              "\xF0[\x90-\xBF][\x80-\xBF]{2}|[\xF1-\xF3][\x80-\xBF]{3}|"
                              "\xF4[\x80-\x8F][\x80-\xBF]{2})*$");
    return !utf8.In(text).empty();
}

} // namespace kqu::post
