#include "tests/fuzz/Expect.h"
#include "tests/oracle/Rules.h"
#include "tests/support/SimulatedMachine.h"

#include <fuzzer/FuzzedDataProvider.h>

// The suite's preference file as the shell prints it: any text, or one around any location.

using namespace kqu;
using fuzz::Expect;

namespace {

class Suite {
  public:
    Suite() {
        const std::string file = "BrackwaterPrefs.plist";
        machine_.WriteFile("/Library/Application Support/Brackwater Utilities Support/" + file, "");
        machine_.processes.commands[R"(/bin/cat /Library/Application\ Support/)"
                                    R"(Brackwater\ Utilities\ Support/)" +
                                    file] = [this] { return printed_; };
    }
    bool IsMarlstone(std::string printed) {
        printed_ = std::move(printed);
        machine_.processes.started.clear();
        Module1.ParentIsMarlstone = true;
        machine_.app->GetParentApp();
        Expect(machine_.processes.started.size() == 1 && machine_.processes.openStreams == 0);
        return Module1.ParentIsMarlstone;
    }

  private:
    simulation::SimulatedMachine machine_;
    std::string printed_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Suite suite;
    FuzzedDataProvider input(data, size);
    std::string before, behind;
    if (input.ConsumeBool()) {
        const std::string lineEnd = input.PickValueInArray({"\n", "\r"});
        before = "<dict>" + lineEnd + "\t<key>ParentLocation</key>" + lineEnd + "\t<string>";
        behind = "</string>" + lineEnd + "</dict>" + lineEnd;
    }
    const std::string text = before + input.ConsumeRemainingBytesAsString() + behind;
    const bool isMarlstone = suite.IsMarlstone(text);
    // The rules know the case of a few letters beside these.
    Expect(!fuzz::IsAscii(text) || isMarlstone == oracle::IsSibling(text));
    return 0;
}
