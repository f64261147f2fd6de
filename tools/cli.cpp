// SPDX-License-Identifier: MIT
#include "cli.hpp"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cli {

Global &global() {
    static Global g;
    return g;
}

void say(const char *format, ...) {
    if (global().quiet) return;
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
}

std::string status_text(uint32_t status) {
    return std::string(vexo_util_status_text(status)) + " (" + vexo_util_status_name(status) +
           ", " + std::to_string(status) + ")";
}

double number_in(const std::string &text, double lo, double hi, const char *what) {
    errno = 0;
    char *end = nullptr;
    const double v = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0')
        throw Usage(std::string(what) + ": '" + text + "' is not a number");
    if (!(v >= lo && v <= hi)) {
        char range[96];
        std::snprintf(range, sizeof range, "%g .. %g", lo, hi);
        throw Usage(std::string(what) + ": " + text + " is outside " + range);
    }
    return v;
}

namespace {

std::string errno_text() {
    return std::strerror(errno);
}

std::string size_text(size_t bytes) {
    char text[64];
    if (bytes >= (size_t{1} << 20))
        std::snprintf(text, sizeof text, "%.1f MiB", bytes / 1048576.0);
    else
        std::snprintf(text, sizeof text, "%zu bytes", bytes);
    return text;
}

// Opens without blocking (a FIFO without writer would block an ordinary
// open), then insists on a regular file.
int open_regular(const std::string &path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) throw Failure(path + ": cannot open: " + errno_text());
    struct stat st;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        throw Failure(path + ": not a regular file");
    }
    return fd;
}

std::vector<uint8_t> read_fd(int fd, const std::string &name, size_t limit) {
    std::vector<uint8_t> bytes;
    uint8_t block[65536];
    for (;;) {
        const ssize_t n = ::read(fd, block, sizeof block);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) throw Failure(name + ": read error: " + errno_text());
        if (n == 0) break;
        if (bytes.size() + size_t(n) > limit)
            throw Failure(name + ": larger than the limit of " + size_text(limit));
        bytes.insert(bytes.end(), block, block + n);
    }
    return bytes;
}

struct Fd {
    int fd;
    ~Fd() {
        if (fd >= 0) ::close(fd);
    }
};

std::string folder_of(const std::string &path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// A new empty file beside `target` with the permissions a plain create
// would give it.
std::string make_temporary(const std::string &target) {
    const std::string folder = folder_of(target);
    struct stat st;
    if (::stat(folder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode))
        throw Failure(target + ": cannot write: folder '" + folder + "' does not exist");
    const size_t slash = target.rfind('/');
    const std::string base = slash == std::string::npos ? target : target.substr(slash + 1);
    const std::string name = folder + "/.vexo-" + base + ".XXXXXX";
    std::vector<char> buffer(name.begin(), name.end());
    buffer.push_back('\0');
    const int fd = ::mkstemp(buffer.data());
    if (fd < 0)
        throw Failure(target + ": cannot create a file in '" + folder + "': " + errno_text());
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd, 0666 & ~mask);
    ::close(fd);
    return buffer.data();
}

void copy_to_stdout(const std::string &tmp) {
    Fd in{::open(tmp.c_str(), O_RDONLY | O_CLOEXEC)};
    if (in.fd < 0) throw Failure("cannot read back the output: " + errno_text());
    const std::vector<uint8_t> bytes = read_fd(in.fd, "output", SIZE_MAX);
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() ||
        std::fflush(stdout) != 0)
        throw Failure("cannot write to standard output: " + errno_text());
}

} // namespace

void require_regular_file(const std::string &path) {
    Fd fd{open_regular(path)};
}

std::vector<uint8_t> read_input(const std::string &path, size_t limit) {
    if (path == "-") return read_fd(STDIN_FILENO, "standard input", limit);
    Fd fd{open_regular(path)};
    struct stat st;
    if (::fstat(fd.fd, &st) == 0 && size_t(st.st_size) > limit)
        throw Failure(path + ": " + size_text(size_t(st.st_size)) +
                      " is larger than the limit of " + size_text(limit));
    return read_fd(fd.fd, path, limit);
}

void write_output(const std::string &path,
                  const std::function<void(const std::string &tmp)> &writer) {
    if (path != "-" && !global().force && ::access(path.c_str(), F_OK) == 0)
        throw Failure(path + ": exists (use --force to overwrite)");
    std::string tmp;
    if (path == "-") {
        const char *dir = std::getenv("TMPDIR");
        tmp = make_temporary(std::string(dir && *dir ? dir : "/tmp") + "/stdout");
    } else {
        tmp = make_temporary(path);
    }
    try {
        writer(tmp);
        if (path == "-") {
            copy_to_stdout(tmp);
            ::unlink(tmp.c_str());
        } else if (::rename(tmp.c_str(), path.c_str()) != 0) {
            throw Failure(path + ": cannot replace: " + errno_text());
        }
    } catch (...) {
        ::unlink(tmp.c_str());
        throw;
    }
}

std::string final_extension(const std::string &path) {
    const size_t slash = path.rfind('/');
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string ext = path.substr(dot + 1);
    for (char &c : ext) c = char(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

} // namespace cli
