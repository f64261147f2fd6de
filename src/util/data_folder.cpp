// SPDX-License-Identifier: MIT
// Per-user data folder lookup for runtime data.
#include "util/data_folder.hpp"

#ifdef _WIN32
#include <direct.h>
#include <shlobj.h>
#include <windows.h>
#else
#include <pwd.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>
#endif

namespace vexo {

#ifdef _WIN32

namespace {

// The roaming application-data folder.  The wide path is narrowed by
// keeping the low byte of each code unit, and only its first 65 units are
// used: that narrowed path is where the runtime-data files are found, so
// every reader and writer of the folder must form it the same way.
std::string application_data_folder() {
    wchar_t wide[MAX_PATH] = {0};
    HRESULT hr = SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, wide);
    if (hr == E_FAIL) SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_DEFAULT, wide);
    std::string narrow;
    for (int i = 0; i < 65 && wide[i] != 0; ++i)
        narrow.push_back(static_cast<char>(wide[i] & 0xFF));
    return narrow;
}

} // namespace

std::string runtime_data_folder(bool create) {
    std::string folder = application_data_folder() + "\\.vexo_rtdata\\";
    if (create) _mkdir(folder.c_str()); // an existing folder is fine
    return folder;
}

#else

namespace {

constexpr mode_t kPrivateFolder = 0700;

std::string home_folder() {
    const char *home = std::getenv("HOME");
    if (home != nullptr && home[0] != '\0') return home;
    // No HOME (daemons, sanitised environments): ask the user database.
    long size = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size > 0 ? static_cast<size_t>(size) : 16384);
    struct passwd entry;
    struct passwd *found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr)
        return found->pw_dir;
    return std::string();
}

// $XDG_DATA_HOME, or $HOME/.local/share when it is unset, empty or not an
// absolute path (relative values are to be ignored).
std::string user_data_folder() {
    const char *xdg = std::getenv("XDG_DATA_HOME");
    if (xdg != nullptr && xdg[0] == '/') return xdg;
    const std::string home = home_folder();
    if (home.empty()) return std::string();
    return home + "/.local/share";
}

// mkdir -p: every missing component, each private to the user.
void make_folders(const std::string &path) {
    for (size_t at = 1; at <= path.size(); ++at) {
        if (at < path.size() && path[at] != '/') continue;
        const std::string prefix = path.substr(0, at);
        if (mkdir(prefix.c_str(), kPrivateFolder) != 0 && errno != EEXIST) return;
    }
}

} // namespace

std::string runtime_data_folder(bool create) {
    const std::string base = user_data_folder();
    if (base.empty()) return std::string();
    std::string folder = base;
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    if (folder != "/") folder += '/';
    folder += ".vexo_rtdata";
    if (create) make_folders(folder);
    return folder + '/';
}

#endif

} // namespace vexo
