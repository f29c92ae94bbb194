#include "framework/values/Text.h"
#include "globals/Module1.h"
#include "panel/Window1.h"

namespace kqu {

bool Window1::IsPIDProcessRunning(std::int32_t wantPID) {
    const std::string out = Module1.GetShell("/bin/ps -ax -o 'pid'", true);
    const std::string number = Str(wantPID);
    // An id that fills its column stands directly behind the line before; a shorter one has blanks
    // in front. Both patterns match whole numbers only.
    return Contains(out, "\r" + number + "\r") || Contains(out, " " + number + "\r");
}

} // namespace kqu
