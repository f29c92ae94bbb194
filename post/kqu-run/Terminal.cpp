#include "post/kqu-run/Terminal.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>

namespace kqu::run {

namespace {
constexpr int pipeSize = 1 << 20;
}

Stream OpenTerminalLike(int real) {
    Stream stream;
    stream.ours = Descriptor(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    std::array<char, 128> name{};
    if (!stream.ours || grantpt(stream.ours.Number()) != 0 || unlockpt(stream.ours.Number()) != 0 ||
        ptsname_r(stream.ours.Number(), name.data(), name.size()) != 0)
        return {};
    stream.tools = Descriptor(open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!stream.tools)
        return {};
    termios settings{};
    if (tcgetattr(real, &settings) == 0) {
        settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
        settings.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
        tcsetattr(stream.tools.Number(), TCSANOW, &settings);
    }
    CopySize(real, stream.ours.Number());
    return stream;
}

Stream OpenPipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        return {};
    Stream stream{Descriptor(ends[0]), Descriptor(ends[1])};
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    fcntl(ends[0], F_SETPIPE_SZ, pipeSize);
    return stream;
}

void CopySize(int real, int standIn) {
    winsize size{};
    if (ioctl(real, TIOCGWINSZ, &size) == 0)
        ioctl(standIn, TIOCSWINSZ, &size);
}

} // namespace kqu::run
