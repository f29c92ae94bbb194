#include "framework/values/Numbers.h"
#include "framework/values/Text.h"
#include "monitor/DefragVolume.h"
#include "platform/functions/Functions.h"
#include "tests/fuzz/Expect.h"
#include "tests/support/SimulatedMachine.h"

#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <optional>

// Any look-up file and any disk, compared with a plain splitting of the file's bytes.

using namespace kqu;
using fuzz::Expect;

namespace {

struct Found {
    std::string volume;
    std::int32_t files;
};

std::string Field(const std::string& line, int number) {
    std::size_t start = 0;
    for (; number > 1; --number) {
        const std::size_t colon = line.find(':', start);
        if (colon == std::string::npos)
            return {};
        start = colon + 1;
    }
    return line.substr(start, line.find(':', start) - start);
}

std::optional<Found> InFile(const std::string& text, const std::string& disk) {
    for (std::size_t start = 0; start <= text.size() && !text.empty();) {
        const std::size_t end = std::min(text.find('\r', start), text.size());
        const std::string line = text.substr(start, end - start);
        if (EqualsIgnoringCase(Field(line, 1), disk))
            return Found{Field(line, 2), ToInt32(Val(Field(line, 3)))};
        start = end + 1;
    }
    return std::nullopt;
}

/// A machine with one volume, mounted from "sdb1" and with this many files.
class MachineWithVolume : public simulation::SimulatedMachine {
  public:
    static constexpr std::uint32_t files = 77;

    MachineWithVolume() {
        functions.Set<kqu::functions::MountedVolumes>([] {
            return std::vector<platform::MountedVolume>{{7, "Photos", "/media/Photos"}};
        });
        functions.Set<kqu::functions::FSCopyDiskIDForVolume>(
            [](std::int32_t volume, kqu::functions::StringHandle* diskID) {
                *diskID = volume + 1;
                return 0;
            });
        functions.Set<kqu::functions::CFStringGetCStringOfCarbon>(
            [](std::int32_t string, char* buffer, std::int32_t, std::uint32_t) {
                std::strcpy(buffer, "sdb1");
                return string == 8;
            });
        functions.Set<kqu::functions::FSGetVolumeInfo>(
            [](std::int32_t, std::uint32_t, std::int32_t*, std::uint32_t, std::byte* info,
               std::u16string*, std::byte*) {
                std::memcpy(info + 32, &files, sizeof files);
                return 0;
            });
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static MachineWithVolume machine;
    FuzzedDataProvider input(data, size);
    const auto place = input.ConsumeIntegralInRange<std::size_t>(0, 200);
    std::string disk = input.ConsumeRandomLengthString(20);
    const std::string text = input.ConsumeRemainingBytesAsString();
    // Mostly a disk of the file: the one of the line that this place is in or before.
    if (place == 0)
        disk = "SDB1";
    else if (place < text.size())
        disk = Field(text.substr(text.rfind('\r', place) + 1), 1);
    machine.WriteFile("/Application Support/Brackwater Utilties Support/BSDLookup", text);
    Dictionary row;
    ResolveVolume(row, disk);
    Expect(row.Value("BSD").StringValue() == disk);
    const std::string volume = row.Value("volume").StringValue();
    if (const auto found = InFile(text, disk)) {
        Expect(volume == found->volume);
        Expect(row.Value("TotalFiles").Int32Value() == found->files);
    } else if (EqualsIgnoringCase(disk, "sdb1")) {
        Expect(volume == "Photos" && row.Value("TotalFiles").UInt32Value() == machine.files);
    } else {
        Expect(volume == disk && !row.HasKey("TotalFiles"));
    }
    return 0;
}
