#pragma once
// A file in memory with a path that fopen takes, so that the importers read
// each fuzz input as they read a file on disk, without a disk write per run.
#include <string>

#include <sys/mman.h>
#include <unistd.h>

class MemoryFile {
public:
    MemoryFile() : fd(memfd_create("fuzz-input", 0)), path("/proc/self/fd/" + std::to_string(fd)) {}
    ~MemoryFile() { close(fd); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    // Replaces the contents; returns the path to open.
    const std::string& hold(const void* data, size_t size)
    {
        if (ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
            __builtin_trap(); // the harness itself is broken
        return path;
    }

private:
    const int fd;
    const std::string path;
};
