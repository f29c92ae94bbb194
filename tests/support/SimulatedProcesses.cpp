#include "tests/support/SimulatedProcesses.h"

#include "platform/functions/Functions.h"

#include <algorithm>
#include <cstring>

namespace kqu::simulation {

void SimulatedProcesses::Register(platform::FunctionTable& table) {
    table.Set<functions::popen>([this](const std::string& command, const char*) {
        started.push_back(command);
        streams_[nextStream_] = {Answer(command), 0, false};
        ++openStreams;
        return nextStream_++;
    });
    table.Set<functions::feof>([this](std::int32_t stream) {
        const auto found = streams_.find(stream);
        return found == streams_.end() || found->second.ended ? 1 : 0;
    });
    table.Set<functions::fread>(
        [this](void* block, std::size_t size, std::size_t, std::int32_t stream) {
            return Read(streams_.at(stream), block, size);
        });
    table.Set<functions::ferror>([](std::int32_t) { return 0; });
    table.Set<functions::pclose>([this](std::int32_t stream) {
        openStreams -= static_cast<int>(streams_.erase(stream));
        return 0;
    });
}

std::size_t SimulatedProcesses::Read(Stream& stream, void* block, std::size_t size) {
    const std::size_t count = std::min(size, stream.output.size() - stream.position);
    std::memcpy(block, stream.output.data() + stream.position, count);
    stream.position += count;
    stream.ended = count < size;
    // One item of `size` bytes: a short read is none.
    return count == size ? 1 : 0;
}

std::string SimulatedProcesses::Answer(const std::string& command) const {
    if (const auto made = commands.find(command); made != commands.end())
        return made->second();
    return command.starts_with("/bin/ps") ? List() : std::string();
}

std::string SimulatedProcesses::List() const {
    std::size_t width = 3;
    for (const std::int32_t id : living)
        width = std::max(width, std::to_string(id).size());
    const auto line = [width](const std::string& text) {
        return std::string(width - text.size(), ' ') + text + '\n';
    };
    std::string list = line("PID");
    for (const std::int32_t id : living)
        list += line(std::to_string(id));
    return list;
}

} // namespace kqu::simulation
