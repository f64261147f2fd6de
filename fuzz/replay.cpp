// SPDX-License-Identifier: MIT
// Runs a fuzz target's entry point over files and folders given on the
// command line, so saved corpora and crash reproducers run under CTest in
// every build, without libFuzzer.  A path that does not exist, or a run
// that finds no input at all, fails: a renamed folder must not turn the
// replay into a test that passes on nothing.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fs = std::filesystem;

static void replay_file(const fs::path &file) {
    // Named first, so that a crash report says which input it was.
    std::printf("%s\n", file.string().c_str());
    std::fflush(stdout);
    std::ifstream in(file, std::ios::binary);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                               std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

int main(int argc, char **argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FILE_OR_FOLDER...\n", argv[0]);
        return 2;
    }
    size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const fs::path path(argv[i]);
        if (fs::is_directory(path)) {
            for (const auto &entry : fs::recursive_directory_iterator(path))
                if (entry.is_regular_file()) {
                    replay_file(entry.path());
                    ++replayed;
                }
        } else if (fs::is_regular_file(path)) {
            replay_file(path);
            ++replayed;
        } else {
            std::fprintf(stderr, "replay: %s is neither a file nor a folder\n", argv[i]);
            return 1;
        }
    }
    if (replayed == 0) {
        std::fprintf(stderr, "replay: no input found\n");
        return 1;
    }
    std::printf("replayed %zu inputs\n", replayed);
    return 0;
}
