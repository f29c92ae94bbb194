#include "post/posting/Tools.h"

#include "post/posting/Program.h"

#include <algorithm>
#include <array>

namespace kqu::post {

namespace {
constexpr std::array<std::string_view, 7> scannerKeys{"PID",     "Extra", "BSD",     "Progress",
                                                      "VolName", "Item",  "ScanType"};
constexpr std::array<std::string_view, 9> backupKeys{
    "PID", "Extra", "BSD", "Progress", "VolName", "status", "Type", "FolderBackup", "dVolName"};
constexpr std::array<std::string_view, 7> defragmenterKeys{
    "PID", "Extra", "BSD", "status", "FileName", "FileProgress", "NumFilesExamined"};

constexpr std::array<Tool, 3> tools{{{"scanner", "KQMS", scannerKeys},
                                     {"backup", "KQBackup", backupKeys},
                                     {"defragmenter", "KQDefrag", defragmenterKeys}}};
} // namespace

std::span<const Tool> Tools() {
    return tools;
}

const Tool* FindTool(std::string_view name) {
    const auto* found = std::ranges::find(tools, name, &Tool::name);
    return found != tools.end() ? found : nullptr;
}

std::string ToolNames() {
    std::string names;
    for (const Tool& tool : tools)
        names += (names.empty() ? "" : ", ") + std::string(tool.name);
    return names;
}

const Tool* ToolOf(const char* name) {
    if (const Tool* tool = FindTool(name))
        return tool;
    throw UsageError(std::string("unknown tool ") + name + " (there are " + ToolNames() + ")");
}

bool HasKey(const Tool& tool, std::string_view key) {
    return std::find(tool.keys.begin(), tool.keys.end(), key) != tool.keys.end();
}

} // namespace kqu::post
