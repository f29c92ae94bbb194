#include "post/posting/Text.h"

#include <algorithm>

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

std::vector<std::string_view> Words(std::string_view text) {
    std::vector<std::string_view> words;
    for (std::size_t at = text.find_first_not_of(' '); at != std::string_view::npos;
         at = text.find_first_not_of(' ', at)) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end;
    }
    return words;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace kqu::post
