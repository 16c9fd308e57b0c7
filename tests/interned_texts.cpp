// SPDX-License-Identifier: BSD-3-Clause

// For programs that intern texts: tells the leak sanitizer what the intern table keeps by design. The texts are not freed when the process ends, and the list nodes of texts made
// permanent not when the table is cleaned up.

extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:^new_record\n"
           "leak:^TempInString::make_permanent\n";
}

// Suppressed leaks are not reported: standard error belongs to the program.
extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_options() {
    return "print_suppressions=0";
}
