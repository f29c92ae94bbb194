#include "post/kqu-run/tools/Tool.h"

#include <filesystem>

namespace kqu::run {

namespace {
/// Any command: the backup's row has the fewest words of its own, a place and a line of text.
class Command : public Tool {
  public:
    void Prepare(Launch& launch) override {
        for (const std::string& argument : launch.arguments)
            progress_.text += (progress_.text.empty() ? "" : " ") + argument;
        std::error_code failure;
        row_.destination = std::filesystem::current_path(failure).string();
    }
};
} // namespace

std::unique_ptr<Tool> MakeCommand() {
    return std::make_unique<Command>();
}

} // namespace kqu::run
