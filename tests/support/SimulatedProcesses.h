#pragma once

#include "platform/interfaces/FunctionTable.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kqu::simulation {

/// The processes of the machine and the commands that the program runs in the shell.
class SimulatedProcesses {
  public:
    /// Enters the five functions of streams on commands.
    void Register(platform::FunctionTable& table);

    /// What `ps` prints: the living, right-aligned in a column as wide as the widest id.
    [[nodiscard]] std::string List() const;

    std::set<std::int32_t> living{1, 2};
    /// Answers in place of the built-in ones, by command.
    std::map<std::string, std::function<std::string()>> commands;
    std::vector<std::string> started;
    int openStreams = 0;

  private:
    struct Stream {
        std::string output;
        std::size_t position = 0;
        bool ended = false;
    };
    [[nodiscard]] std::string Answer(const std::string& command) const;
    std::size_t Read(Stream& stream, void* block, std::size_t size);

    std::map<std::int32_t, Stream> streams_;
    std::int32_t nextStream_ = 1;
};

} // namespace kqu::simulation
