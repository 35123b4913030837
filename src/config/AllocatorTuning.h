#pragma once

// The working copy of a large organisation is a few hundred thousand small
// records, all made within a second of loading. With the C library's default
// allocator settings most of that second goes to growing the heap a page at
// a time; asking it to grow in 16 MB steps backed by transparent huge pages
// halves the load (larger steps gain little and cost small searches memory). The settings are read
// only when a process starts, so prepare() starts the program again with them when they are not in
// effect yet. Elsewhere (other C libraries, sanitizer builds, a GLIBC_TUNABLES the user set) it
// does nothing.
class AllocatorTuning final
{
public:
    // Call first thing in main(); returns only when the program goes on in
    // this process.
    static void prepare(char *argv[]);
};
