#include "post/kqu-run/Naming.h"
#include "post/kqu-run/tools/Destination.h"
#include "post/kqu-run/tools/Tool.h"

#include <filesystem>

namespace kqu::run {

namespace {
/// Any command: the backup's row has the fewest words of its own, a place and a line of text. All
/// users can read what is posted, so an argument that may be a password isn't: only names of files
/// are.
class Command : public Tool {
  public:
    explicit Command(std::size_t program) : program_(program) {}

    void Prepare(Launch& launch) override {
        std::error_code failure;
        progress_.file = progress_.text = LastComponent(launch.arguments[program_]);
        for (std::size_t i = program_ + 1; i < launch.arguments.size(); ++i) {
            const std::string& argument = launch.arguments[i];
            if (!argument.starts_with('-') && std::filesystem::exists(argument, failure))
                progress_.file += " " + argument;
        }
        row_.destination = LocalDestination(".");
    }

  private:
    std::size_t program_;
};
} // namespace

std::unique_ptr<Tool> MakeCommand(std::size_t program) {
    return std::make_unique<Command>(program);
}

} // namespace kqu::run
