#include "platform/files/SmallFiles.h"

#include "platform/CDeleter.h"

#include <glib.h>
#include <system_error>

namespace kqu::platform {

std::optional<std::string> ValueOfFile(const std::filesystem::path& path) {
    char* contents = nullptr;
    gsize length = 0;
    if (g_file_get_contents(path.c_str(), &contents, &length, nullptr) == 0)
        return std::nullopt;
    const CPointer<char, g_free> owned(contents);
    std::string value(contents, length);
    value.erase(value.find_last_not_of('\n') + 1);
    return value;
}

std::vector<std::filesystem::path> EntriesOf(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> entries;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        entries.push_back(entry->path());
    return entries;
}

} // namespace kqu::platform
