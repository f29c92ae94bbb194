#include "framework/values/Exceptions.h"
#include "monitor/DefragVolume.h"
#include "tests/fuzz/Expect.h"
#include "tests/oracle/Differences.h"
#include "tests/support/Artwork.h"
#include "tests/support/MachineWithVolumes.h"

#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>

// Any look-up file, preferences, place of the panel and bar, compared with what the rules make of
// them.

using namespace kqu;
using fuzz::Expect;
using simulation::Grey;

namespace {

constexpr const char* lookUpFile = "Application Support/Brackwater Utilties Support/BSDLookup";
constexpr const char* placeFile = "home/.config/com.brackwater.KQU_Messenger.plist";
const std::string preferences =
    "Library/Application Support/Brackwater Utilities Support/BrackwaterPrefs.plist";
const std::string catCommand =
    R"(/bin/cat /Library/Application\ Support/Brackwater\ Utilities\ Support/BrackwaterPrefs.plist)";
constexpr std::uint32_t filesOnVolume = 77;
constexpr int barHeight = 4;
constexpr Colour fill = RGB(0, 0, 250), track = RGB(0, 250, 0), tick = RGB(40, 40, 40);

/// Letters outside of ASCII whose case the rules know, and a byte that is no text, in place of
/// others.
std::string Known(const std::string& bytes) {
    constexpr const char* pieces[] = {"\u00C4", "\u00E4", "\u0394", "\u03B4",
                                      "\u042F", "\u044F", "日",     "\xFF"};
    std::string text;
    for (const char byte : bytes)
        text += byte < 0 ? pieces[byte & 7] : std::string(1, byte);
    return text;
}

class Stage {
  public:
    Stage() {
        machine_.functions.Set<functions::FSGetVolumeInfo>(
            [](auto, auto, auto, auto, std::byte* info, auto, auto) {
                std::memcpy(info + 32, &filesOnVolume, sizeof filesOnVolume);
                return 0;
            });
        machine_.tree.Write(preferences, "");
        artwork_.Set(171, 47, barHeight, [](int x, int) {
            return x < 30 ? fill : x < 45 ? track : tick;
        });
        artwork_.Set(172, 47, barHeight, [](int, int) { return Grey(0); });
    }

    void LookUp(FuzzedDataProvider& input) {
        const auto place = input.ConsumeIntegralInRange<std::size_t>(0, 200);
        std::string disk = Known(input.ConsumeRandomLengthString(20));
        const std::string text = Known(input.ConsumeRemainingBytesAsString());
        // Mostly a disk of the file: the one of the line that this place is in or before.
        if (place == 0)
            disk = "SDB1";
        else if (place < text.size())
            disk = oracle::Field(text.substr(text.rfind('\r', place) + 1), ":", 1);
        machine_.tree.Write(lookUpFile, text);
        oracle::Row should;
        oracle::FindVolume(
            should, disk,
            {text, {{"sda1", "/", filesOnVolume}, {"sdb1", "Photos", filesOnVolume}}});
        Dictionary row;
        ResolveVolume(row, disk);
        Expect(oracle::Difference(row, should).empty());
    }

    /// The suite's preferences as the shell prints them: any text, or one around any location.
    void Prefer(FuzzedDataProvider& input) {
        const bool isRaw = input.ConsumeBool();
        const std::string lineEnd = input.PickValueInArray({"\n", "\r"});
        std::string text = Known(input.ConsumeRemainingBytesAsString());
        if (!isRaw)
            text = "<dict>" + lineEnd + "\t<key>ParentLocation</key>" + lineEnd + "\t<string>" +
                   text + "</string>" + lineEnd + "</dict>" + lineEnd;
        machine_.processes.commands[catCommand] = [text] { return text; };
        machine_.processes.started.clear();
        machine_.app->GetParentApp();
        Expect(machine_.processes.started.size() == 1 && machine_.processes.openStreams == 0);
        Expect(Module1.ParentIsMarlstone == oracle::IsSibling(text));
    }

    /// The panel opens on any file, is moved anywhere, and opens again on what it saved.
    void Place(FuzzedDataProvider& input) {
        platform::Rect& screen = machine_.windows.screens.front();
        screen.width = input.ConsumeIntegralInRange(1, 10000);
        screen.height = input.ConsumeIntegralInRange(1, 10000);
        std::string text = Known(input.ConsumeRandomLengthString(1000));
        if (input.ConsumeBool())
            for (int field = 0; field < 3; ++field)
                text += "<integer>" + Known(input.ConsumeRandomLengthString(12)) + "</integer>";
        Window1& panel = Open(text);
        const oracle::PanelPlace moved{
            input.ConsumeIntegral<std::int32_t>(), input.ConsumeIntegralInRange(-100, 20000),
            panel.Width() + input.ConsumeIntegralInRange<std::int32_t>(1, 500)};
        panel.SetLeft(moved.left);
        panel.SetTop(moved.top);
        panel.SetWidth(moved.width);
        panel.Timer2_Action();
        Expect(machine_.ReadFile(std::string("/") + placeFile) == oracle::PlaceFile(moved));
        // Nothing has changed since, so nothing is written.
        machine_.tree.Write(placeFile, "");
        panel.Timer2_Action();
        Expect(machine_.ReadFile(std::string("/") + placeFile).empty());
        Open(oracle::PlaceFile(moved));
    }

    void Bar(FuzzedDataProvider& input) {
        const auto width = input.ConsumeBool() ? input.ConsumeIntegralInRange<std::int32_t>(-2, 500)
                                               : input.ConsumeIntegral<std::int32_t>();
        const double value = input.ConsumeBool() ? input.ConsumeIntegralInRange(-20, 1100) / 10.0
                                                 : input.ConsumeFloatingPoint<double>();
        const double maximum = input.ConsumeBool() ? 100.0 : input.ConsumeFloatingPoint<double>();
        Dictionary record;
        try {
            machine_.Panel().MyWindowEventList->ListProgress(width, value, maximum, record);
        } catch (const RuntimeException&) {
            return Expect(width < 1);
        }
        const auto bar = record.Value("progresspict").ObjectAs<Picture>();
        const Ref<Picture> mask = bar->Mask(MaskCreation::IfThere);
        Expect(bar->Width() == width && bar->Height() == barHeight);
        Expect(mask && mask->Width() == width && mask->Height() == barHeight);
        const oracle::Bar should{width, value, maximum};
        // Some pixels at each end are enough of a line.
        for (std::int32_t x = 0; x < width; x = x == 300 ? std::max(x + 1, width - 300) : x + 1) {
            const char letter = should.Colour(x);
            Expect(mask->Graphics().Pixel(x, 0) == Grey(should.Mask(x) == ' ' ? 255 : 0));
            Expect(bar->Graphics().Pixel(x, barHeight - 1) == (letter == ' '   ? Grey(255)
                                                               : letter == 'f' ? fill
                                                               : letter == '1' || letter == '2'
                                                                   ? tick
                                                                   : track));
        }
    }

  private:
    Window1& Open(const std::string& file) {
        machine_.tree.Write(placeFile, file);
        Window1::Release();
        machine_.windows.calls.clear();
        Window1& panel = machine_.Panel();
        const platform::Rect& screen = machine_.windows.screens.front();
        const oracle::PanelPlace place = oracle::SavedPlace(file, screen.width, screen.height)
                                             .value_or(oracle::DefaultPlace(screen.width, 340));
        oracle::Panel should;
        should.left = place.left;
        should.top = place.top;
        should.Resize(place.width, should.height, false, true, 0);
        Expect(oracle::Difference(machine_, should, 0, Module1.ParentIsMarlstone).empty());
        Expect(oracle::PanelPlace{panel.LastLeft, panel.LastTop, panel.mywidth} == place);
        return panel;
    }

    simulation::Artwork artwork_;
    simulation::MachineWithVolumes machine_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Stage stage;
    FuzzedDataProvider input(data, size);
    const int what = input.ConsumeIntegralInRange(0, 3);
    if (what == 0)
        stage.LookUp(input);
    else if (what == 1)
        stage.Prefer(input);
    else if (what == 2)
        stage.Place(input);
    while (what == 3 && input.remaining_bytes() > 0)
        stage.Bar(input);
    return 0;
}
