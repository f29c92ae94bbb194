#include "tests/support/MadeUpTree.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace kqu::simulation {

MadeUpTree::MadeUpTree() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kqu-tree-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary folder could be made");
    root_ = pattern;
}

MadeUpTree::~MadeUpTree() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

void MadeUpTree::Write(const std::string& path, const std::string& text) const {
    std::filesystem::create_directories((root_ / path).parent_path());
    std::ofstream(root_ / path, std::ios::binary) << text;
}

void MadeUpTree::Link(const std::string& path, const std::string& target) const {
    std::filesystem::create_directories((root_ / path).parent_path());
    std::filesystem::create_symlink(target, root_ / path);
}

} // namespace kqu::simulation
