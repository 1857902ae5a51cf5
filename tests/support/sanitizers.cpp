// What ThreadSanitizer is told.

// glibc guards its zone data by a lock of its own, which ThreadSanitizer cannot see; and a forked child leaves its parent's
// other threads behind.
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_options() { return "report_thread_leaks=0"; }
extern "C" const char* __tsan_default_suppressions() { return "race:tzset_internal\n"; }
