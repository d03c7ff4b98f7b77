// What the sanitizers see inside the engine, which is not built here: the client library keeps two character-set
// converters for the life of the process, and the engine synchronises by means that are not understood, with more
// locks at a time than can be followed. A summary of what was left out would mix with what the program says.
#ifdef __SANITIZE_ADDRESS__
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
extern "C" const char* __lsan_default_suppressions() { return "leak:libfbclient\n"; }
#endif
#ifdef __SANITIZE_THREAD__
extern "C" const char* __tsan_default_options() { return "detect_deadlocks=0:print_suppressions=0"; }
extern "C" const char* __tsan_default_suppressions() { return "race:libEngine12\nrace:libfbclient\n"; }
#endif
