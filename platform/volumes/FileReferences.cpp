#include "platform/volumes/FileReferences.h"

#include <cstring>
#include <utility>

namespace kqu::platform {

namespace {
/// Tells a reference from any other block, a zero-filled one in particular.
constexpr std::uint64_t referenceMark = 0x4B51'5546'5352'6566;

struct Content {
    std::uint64_t mark = 0;
    std::uint64_t number = 0;
};
static_assert(sizeof(Content) <= FileReferences::blockSize);
} // namespace

void FileReferences::Write(std::string path, std::byte* block) {
    if (paths_.size() == remembered) {
        paths_.pop_front();
        ++first_;
    }
    const Content content{referenceMark, first_ + paths_.size()};
    paths_.push_back(std::move(path));
    std::memset(block, 0, blockSize);
    std::memcpy(block, &content, sizeof content);
}

std::optional<std::string> FileReferences::PathOf(const std::byte* block) const {
    Content content;
    std::memcpy(&content, block, sizeof content);
    if (content.mark != referenceMark || content.number < first_ ||
        content.number - first_ >= paths_.size())
        return std::nullopt;
    return paths_[content.number - first_];
}

} // namespace kqu::platform
