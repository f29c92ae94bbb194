// For the build that counts what runs: a program that ends or is replaced without going through
// exit() leaves its counts behind first. The linker puts these in the place of the calls.

#include <csignal>
#include <sys/types.h>
#include <unistd.h>

extern "C" {
void __gcov_dump();
void __gcov_reset();

[[noreturn]] void __real__exit(int status);
int __real_kill(pid_t process, int signal);
int __real_execvp(const char* file, char* const* arguments);
int __real_execve(const char* path, char* const* arguments, char* const* variables);

[[noreturn]] void __wrap__exit(int status);
int __wrap_kill(pid_t process, int signal);
int __wrap_execvp(const char* file, char* const* arguments);
int __wrap_execve(const char* path, char* const* arguments, char* const* variables);

void __wrap__exit(int status) {
    __gcov_dump();
    __real__exit(status);
}

int __wrap_kill(pid_t process, int signal) {
    if (process == getpid()) {
        __gcov_dump();
        __gcov_reset();
    }
    return __real_kill(process, signal);
}

int __wrap_execvp(const char* file, char* const* arguments) {
    __gcov_dump();
    __gcov_reset();
    return __real_execvp(file, arguments);
}

int __wrap_execve(const char* path, char* const* arguments, char* const* variables) {
    __gcov_dump();
    __gcov_reset();
    return __real_execve(path, arguments, variables);
}
}
