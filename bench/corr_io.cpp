// SPDX-License-Identifier: MIT
// Correction file I/O against the raw file calls it is built on: loading
// each binary format versus an fopen + fread of the same file into a
// buffer, and saving a kxo table versus an fopen + fwrite of 50,712 bytes.
// The ratios (library / raw) are printed after the table.  Where the time
// of a load goes is timed too: open + close alone, the library's read of
// the file into memory, and the conversion of bytes already in memory.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <algorithm>
#include <string>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

#include "bench_ratio.hpp"
#include "corr/dispatch.hpp"
#include "corr/file_io.hpp"
#include "corr/writers.hpp"
#include "vexo.h"

namespace {

struct Sample {
    const char *name;
    uint32_t format;
    size_t size;
};

// Sizes of a complete file of each binary format.
const Sample kSamples[] = {
    {"ucf", VEXO_CORR_FORMAT_UCF, 4 + 3 * 8450},    {"ctb", VEXO_CORR_FORMAT_CTB, 2 * 8450},
    {"ct5", VEXO_CORR_FORMAT_CT5, 64 + 2 * 264196}, {"gcd", VEXO_CORR_FORMAT_GCD, 4225 * 6},
    {"kxo", VEXO_CORR_FORMAT_KXO, 50712},           {"crt", VEXO_CORR_FORMAT_CRT, 2048 + 4225 * 16},
    {"cor", VEXO_CORR_FORMAT_COR, 56 + 4225 * 16},  {"fcr", VEXO_CORR_FORMAT_FCR, 65536},
};

std::string sample_path(const char *name) {
    return "/tmp/vexo_bench_corr_" + std::to_string(::getpid()) + "." + name;
}

// Plausible content: a real kxo table, and for the others small values that
// keep every converted number finite (as in real files).
void write_samples() {
    CorrTable table;
    vexo_corr_set_neutral(&table);
    for (const Sample &s : kSamples) {
        std::vector<uint8_t> bytes(s.size);
        if (s.format == VEXO_CORR_FORMAT_KXO) {
            vexo::encode_kxo(table, CorrHead{}, bytes.data());
        } else {
            for (size_t i = 0; i < bytes.size(); ++i)
                bytes[i] = uint8_t(i % 8 == 7 ? 0x3F : i * 13);
            if (s.format == VEXO_CORR_FORMAT_COR) std::copy_n("JCZ_COR_3", 9, bytes.begin());
        }
        std::FILE *f = std::fopen(sample_path(s.name).c_str(), "wb");
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
}

void remove_samples() {
    for (const Sample &s : kSamples) std::remove(sample_path(s.name).c_str());
    std::remove(sample_path("out").c_str());
}

void BM_RawRead(benchmark::State &state, const Sample &s) {
    const std::string path = sample_path(s.name);
    for (auto _ : state) {
        auto *buffer = static_cast<uint8_t *>(std::malloc(s.size));
        std::FILE *f = std::fopen(path.c_str(), "rb");
        benchmark::DoNotOptimize(std::fread(buffer, 1, s.size, f));
        std::fclose(f);
        benchmark::DoNotOptimize(buffer);
        std::free(buffer);
    }
}

void BM_OpenClose(benchmark::State &state, const Sample &s) {
    const std::string path = sample_path(s.name);
    for (auto _ : state) ::close(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

void BM_ReadOnly(benchmark::State &state, const Sample &s) {
    const std::string path = sample_path(s.name);
    for (auto _ : state) {
        vexo::FileBytes bytes;
        if (vexo::read_whole_file(path.c_str(), bytes) != VEXO_OK) state.SkipWithError("read");
        benchmark::DoNotOptimize(bytes.span().data);
    }
}

void BM_ParseOnly(benchmark::State &state, const Sample &s) {
    vexo::FileBytes bytes;
    if (vexo::read_whole_file(sample_path(s.name).c_str(), bytes) != VEXO_OK) return;
    CorrTable table;
    CorrHead head{};
    for (auto _ : state) {
        if (vexo::parse_corr_bytes(s.format, bytes.span(), table, head) != VEXO_OK)
            state.SkipWithError("parse failed");
        benchmark::DoNotOptimize(&table);
    }
}

void BM_Load(benchmark::State &state, const Sample &s) {
    const std::string path = sample_path(s.name);
    CorrTable table;
    for (auto _ : state) {
        if (vexo_corr_load_corr65(&table, path.c_str(), s.format) != VEXO_OK)
            state.SkipWithError("load failed");
        benchmark::DoNotOptimize(&table);
    }
}

void BM_RawWrite(benchmark::State &state) {
    const std::string path = sample_path("out");
    std::vector<uint8_t> bytes(VEXO_KXO_FILE_SIZE, 0x5A);
    for (auto _ : state) {
        std::FILE *f = std::fopen(path.c_str(), "wb");
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
}

void BM_SaveKxo(benchmark::State &state) {
    const std::string path = sample_path("out");
    CorrTable table;
    vexo_corr_set_neutral(&table);
    const CorrHead head{};
    for (auto _ : state)
        if (vexo_corr_save_kxo(&table, path.c_str(), &head) != VEXO_OK)
            state.SkipWithError("save failed");
}

} // namespace

int main(int argc, char **argv) {
    write_samples();
    for (const Sample &s : kSamples) {
        benchmark::RegisterBenchmark((std::string("raw_read_") + s.name).c_str(), BM_RawRead, s);
        benchmark::RegisterBenchmark((std::string("load_") + s.name).c_str(), BM_Load, s);
        benchmark::RegisterBenchmark((std::string("open_close_") + s.name).c_str(), BM_OpenClose,
                                     s);
        benchmark::RegisterBenchmark((std::string("read_only_") + s.name).c_str(), BM_ReadOnly, s);
        benchmark::RegisterBenchmark((std::string("parse_only_") + s.name).c_str(), BM_ParseOnly,
                                     s);
    }
    benchmark::RegisterBenchmark("raw_write_kxo", BM_RawWrite);
    benchmark::RegisterBenchmark("save_kxo", BM_SaveKxo);
    vexo_bench::RatioList ratios;
    for (const Sample &s : kSamples)
        ratios.emplace_back(std::string("load_") + s.name, std::string("raw_read_") + s.name);
    ratios.emplace_back("save_kxo", "raw_write_kxo");
    const int status = vexo_bench::run_with_ratios(argc, argv, ratios, "goal <= 1.5");
    remove_samples();
    return status;
}
