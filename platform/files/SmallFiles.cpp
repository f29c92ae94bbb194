#include "platform/files/SmallFiles.h"

#include "platform/CDeleter.h"

#include <array>
#include <cstdio>
#include <system_error>

namespace kqu::platform {

std::optional<std::string> TextOfFile(const std::filesystem::path& path) {
    const CPointer<std::FILE, std::fclose> file(std::fopen(path.c_str(), "re"));
    if (!file)
        return std::nullopt;
    std::string text;
    std::array<char, 4096> piece{};
    while (const std::size_t got = std::fread(piece.data(), 1, piece.size(), file.get()))
        text.append(piece.data(), got);
    if (std::ferror(file.get()) != 0)
        return std::nullopt;
    return text;
}

std::optional<std::string> ValueOfFile(const std::filesystem::path& path) {
    auto value = TextOfFile(path);
    if (value)
        value->erase(value->find_last_not_of('\n') + 1);
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
