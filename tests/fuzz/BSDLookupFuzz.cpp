#include "monitor/DefragVolume.h"
#include "platform/functions/Functions.h"
#include "tests/fuzz/Expect.h"
#include "tests/oracle/Differences.h"
#include "tests/support/MachineWithVolumes.h"

#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>

// Any look-up file and any disk, beside two volumes that are mounted.

using namespace kqu;
using fuzz::Expect;

namespace {
constexpr std::uint32_t files = 77;

struct Machine : simulation::MachineWithVolumes {
    Machine() {
        functions.Set<kqu::functions::FSGetVolumeInfo>(
            [](auto, auto, auto, auto, std::byte* info, auto, auto) {
                std::memcpy(info + 32, &files, sizeof files);
                return 0;
            });
    }
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Machine machine;
    FuzzedDataProvider input(data, size);
    const auto place = input.ConsumeIntegralInRange<std::size_t>(0, 200);
    std::string disk = input.ConsumeRandomLengthString(20);
    const std::string text = input.ConsumeRemainingBytesAsString();
    // Mostly a disk of the file: the one of the line that this place is in or before.
    if (place == 0)
        disk = "SDB1";
    else if (place < text.size())
        disk = oracle::Field(text.substr(text.rfind('\r', place) + 1), ":", 1);
    machine.WriteFile("/Application Support/Brackwater Utilties Support/BSDLookup", text);
    Dictionary row;
    ResolveVolume(row, disk);
    Expect(row.Value("BSD").StringValue() == disk);
    oracle::Row expected;
    oracle::FindVolume(expected, disk, {text, {{"sda1", "/", files}, {"sdb1", "Photos", files}}});
    // The rules know the case of a few letters beside these.
    Expect(!fuzz::IsAscii(text + disk) || oracle::Difference(row, expected).empty());
    return 0;
}
