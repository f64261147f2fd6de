// SPDX-License-Identifier: MIT
// Faults a test can put in the way of file access: a disk that fills up
// after a given number of bytes, and a watchdog for calls that must not
// block.
#pragma once

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace vexo_test {

// Files may grow to `bytes` at most while this lives: a write past it
// fails as on a full disk (EFBIG; SIGXFSZ is ignored meanwhile).
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &saved_);
        old_handler_ = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limited = saved_;
        limited.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &saved_);
        std::signal(SIGXFSZ, old_handler_);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit saved_{};
    void (*old_handler_)(int) = nullptr;
};

// Ends the process (the test fails) if it is still alive after `seconds`:
// a call that blocks for ever would otherwise hang the suite.
class Watchdog {
public:
    explicit Watchdog(unsigned seconds) { alarm(seconds); }
    ~Watchdog() { alarm(0); }
    Watchdog(const Watchdog &) = delete;
    Watchdog &operator=(const Watchdog &) = delete;
};

inline std::vector<char> file_bytes(const std::filesystem::path &path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<char>((std::istreambuf_iterator<char>(in)),
                             std::istreambuf_iterator<char>());
}

// Names in a folder, to show that nothing was left behind.
inline std::set<std::string> folder_names(const std::filesystem::path &folder) {
    std::set<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

} // namespace vexo_test
