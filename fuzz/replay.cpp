// SPDX-License-Identifier: MIT
// Runs a fuzz target's entry point over files and folders given on the
// command line, so saved corpora and crash reproducers run under CTest in
// every build, without libFuzzer.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fs = std::filesystem;

static void replay_file(const fs::path &file) {
    std::ifstream in(file, std::ios::binary);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                               std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

int main(int argc, char **argv) {
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
        }
    }
    std::printf("replayed %zu inputs\n", replayed);
    return 0;
}
