// What the sanitizers must know of libraries that are not built with them. Linked into every test program of a
// sanitizer build; weak, so that a program with needs of its own says them itself.

extern "C" {

// Thread-local storage of loaded modules is found by guessing at what stands before it on the heap, and the leak
// check ends in a crash where the guess is wrong.
[[gnu::weak]] const char* __asan_default_options() { return "intercept_tls_get_addr=0"; }

// The database client keeps what it allocates once for the process.
[[gnu::weak]] const char* __lsan_default_suppressions() { return "leak:libfbclient\n"; }

// The engine orders its own locks, which the detector sees only in part, and fails over their number.
[[gnu::weak]] const char* __tsan_default_options() { return "detect_deadlocks=0"; }

[[gnu::weak]] const char* __tsan_default_suppressions() { return "race:libEngine12\nrace:libfbclient\n"; }

} // extern "C"
