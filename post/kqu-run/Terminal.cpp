#include "post/kqu-run/Terminal.h"

#include <array>
#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>

namespace kqu::run {

Stream OpenTerminalLike(int real) {
    termios settings{};
    const bool isKnown = tcgetattr(real, &settings) == 0;
    settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
    int ours = -1, tools = -1;
    if (openpty(&ours, &tools, nullptr, isKnown ? &settings : nullptr, nullptr) != 0)
        return {};
    Stream stream{Descriptor(ours), Descriptor(tools)};
    fcntl(ours, F_SETFD, FD_CLOEXEC);
    fcntl(tools, F_SETFD, FD_CLOEXEC);
    fcntl(ours, F_SETFL, O_NONBLOCK);
    CopySize(real, stream.ours.Number());
    return stream;
}

Stream OpenPipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        return {};
    Stream stream{Descriptor(ends[0]), Descriptor(ends[1])};
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    fcntl(ends[0], F_SETPIPE_SZ, 1 << 20);
    return stream;
}

void CopySize(int real, int standIn) {
    winsize size{};
    if (ioctl(real, TIOCGWINSZ, &size) == 0)
        ioctl(standIn, TIOCSWINSZ, &size);
}

} // namespace kqu::run
