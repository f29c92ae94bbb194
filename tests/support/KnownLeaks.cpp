// What the address sanitizer is not to report at the end of the tests: fontconfig itself forgets a
// pattern of its configuration, once in a process.

extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_options() {
    return "print_suppressions=0";
}

extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}
