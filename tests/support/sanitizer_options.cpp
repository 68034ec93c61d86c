// LeakSanitizer's suppressions for every executable: the addresses that a client resolves are kept for the
// life of the process on purpose. Nothing else is suppressed.

// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" const char* __lsan_default_suppressions() {
    return "leak:resolve_address\n";
}

// The summary of suppressions would stand between the lines that tests compare.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" const char* __lsan_default_options() {
    return "print_suppressions=0";
}
