#include "tests/fuzz/Expect.h"
#include "tests/support/SimulatedMachine.h"

#include <fuzzer/FuzzedDataProvider.h>

// The suite's preference file as the shell prints it: any text, or one around any location.

using namespace kqu;
using fuzz::Expect;
using fuzz::LowerAscii;

namespace {

const std::string folder = "/Library/Application\\ Support/Brackwater\\ Utilities\\ Support/";
const std::string command = "/bin/cat " + folder + "BrackwaterPrefs.plist";
const std::string key = "<key>ParentLocation</key>";

class Suite {
  public:
    Suite() {
        machine_.WriteFile("/Library/Application Support/Brackwater Utilities Support/"
                           "BrackwaterPrefs.plist",
                           "");
        machine_.processes.commands[command] = [this] { return printed_; };
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

/// For plain letters: whether the last component, without ".app", is a name of another family.
bool NamesAnotherFamily(const std::string& location) {
    std::string name = LowerAscii(location.substr(location.rfind('/') + 1));
    for (std::size_t at = 0; (at = name.find(".app", at)) != std::string::npos;)
        name.erase(at, 4), name.insert(at, 1, '\1'), ++at;
    std::erase(name, '\1');
    return !name.empty() && name.find("brackwater") == std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Suite suite;
    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool()) {
        const std::string text = input.ConsumeRemainingBytesAsString();
        const bool marlstone = suite.IsMarlstone(text);
        const std::string lower = LowerAscii(text);
        if (fuzz::IsAscii(text) && (lower.find(LowerAscii(key)) == std::string::npos ||
                                    lower.find("<string>") == std::string::npos))
            Expect(!marlstone);
        // No key, no parent, whatever else is said.
        if (fuzz::IsAscii(text) && lower.find("</key>") == std::string::npos)
            Expect(!suite.IsMarlstone(text + "<string>/A/Marlstone.app</string>"));
        return 0;
    }
    const std::string lineEnd = input.PickValueInArray({"\n", "\r"});
    std::string location = input.ConsumeRemainingBytesAsString();
    // Letters that end the value, or the whole text, belong to the other half.
    std::erase_if(location, [](char c) { return c <= 0 || c == '<' || c == '\1' || c == '\n'; });
    const std::string file = "<dict>" + lineEnd + "\t" + key + lineEnd + "\t<string>" + location +
                             "</string>" + lineEnd + "</dict>" + lineEnd;
    Expect(suite.IsMarlstone(file) == NamesAnotherFamily(location));
    return 0;
}
