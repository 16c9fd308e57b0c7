// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "osapi-unix"

#include "core/xception.h"
#include "osapi/osapi.h"

namespace OSAPI {

// ---- Profiler --------------------------------------------------------------------------------

int Profiler::indent = 0;

static void print_indent() {
    for (int i = 0; i < Profiler::indent; i++)
        putchar('\t');
}

Profiler::Profiler(const char* name) : name(name), start(), end() {
    print_indent();
    printf("PROFILE: %s\n", name);
    indent++;
    gettimeofday(&start, nullptr);
}

Profiler::~Profiler() {
    // The difference in microseconds, exact in a double for centuries.
    gettimeofday(&end, nullptr);
    const double elapsed =
        double(end.tv_usec - start.tv_usec) + double(end.tv_sec - start.tv_sec) * 1000000;
    indent--;
    print_indent();
    printf("%s = %.4f ms\n", name, elapsed * 0.001);
}

// ---- Statistics ------------------------------------------------------------------------------

namespace {

// The first fields of /proc/self/stat, named as in its manual page, each number reduced to 32 bits.
// Newer systems add more fields after these.
struct ProcessLine {
    s32 pid;
    char comm[4096]; // as much as was read
    char state;
    s32 ppid, pgrp, session, tty_nr, tpgid;
    u32 flags, minflt, cminflt, majflt, cmajflt;
    s32 utime, stime, cutime, cstime, priority, nice;
    u32 num_threads, itrealvalue;
    s32 starttime;
    u32 vsize; // bytes
    u32 rss;   // pages
    u32 rsslim, startcode, endcode, startstack, kstkesp, kstkeip;
    s32 signal, blocked, sigignore, sigcatch;
    u32 wchan;
};

} // namespace

static const int process_fields = 35;

// Returns how many fields were converted.
static int parse(const char* text, ProcessLine& p) {
    return sscanf(text,
                  "%d %s %c %d %d %d %d %d %u %u %u %u %u %d %d %d %d %d %d %u %u %d %u %u %u %u "
                  "%u %u %u %u %d %d %d %d %u\n",
                  &p.pid, p.comm, &p.state, &p.ppid, &p.pgrp, &p.session, &p.tty_nr, &p.tpgid,
                  &p.flags, &p.minflt, &p.cminflt, &p.majflt, &p.cmajflt, &p.utime, &p.stime,
                  &p.cutime, &p.cstime, &p.priority, &p.nice, &p.num_threads, &p.itrealvalue,
                  &p.starttime, &p.vsize, &p.rss, &p.rsslim, &p.startcode, &p.endcode,
                  &p.startstack, &p.kstkesp, &p.kstkeip, &p.signal, &p.blocked, &p.sigignore,
                  &p.sigcatch, &p.wchan);
}

void print_statistics() {
    // Read once; the line is shorter than the buffer on every system so far.
    const FileDescriptor file(open("/proc/self/stat", OPEN_READ));
    char text[sizeof(ProcessLine::comm)] = "";
    read_short(file.fd, text, sizeof text);
    text[sizeof text - 1] = 0;
    ProcessLine process;
    if (parse(text, process) < process_fields)
        XTHROW("error reading /proc/self/stat");

    const double megabyte = 1048576;
    printf("Memory:\nVM size:\t%4.2f MB\nresident:\t%4.2f MB\n", process.vsize / megabyte,
           double(process.rss) * get_page_size() / megabyte);
}

// ---- stdio -----------------------------------------------------------------------------------

ScopedFILE::ScopedFILE(fd_t fd, const char* name, const char* mode) : file(fdopen(fd, mode)) {
    if (!file)
        XTHROW("fdopen(\"%s\", \"%s\")", name, mode);
}

ScopedFILE::~ScopedFILE() {
    fclose(file);
}

} // namespace OSAPI
