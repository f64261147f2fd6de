// SPDX-License-Identifier: MIT
// Text correction loaders and grid interpolation against the plain C calls
// they are built on: parsing an XML file versus a bare strtol walk over the
// same text, a ".txt" file versus strtod over its lines, and interpolating
// a 15 x 15 grid versus filling a neutral table.  Ratios (library / plain)
// are printed after the table.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "bench_ratio.hpp"
#include "corr/loaders.hpp"
#include "vexo.h"

namespace {

std::string xml_text() {
    std::string s = "<Data>";
    for (const char *tag : {"<x-axis>", "<y-axis>", "<z-axis>"}) {
        s += tag;
        for (int k = 0; k < 4225; ++k) s += std::to_string(k % 611 - 300) + ",";
    }
    return s;
}

std::string txt_text() {
    std::string s = "SIZE: 100\n";
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j)
            s += std::to_string(i * 5 + j) + "\n" + std::to_string(i * 25.0 - 50) + "\n" +
                 std::to_string(j * 25.0 - 50) + "\n" + std::to_string(i * 25.37 - 50) + "\n" +
                 std::to_string(j * 24.81 - 50) + "\n";
    return s;
}

vexo::ByteSpan span(const std::string &s) {
    return {reinterpret_cast<const uint8_t *>(s.data()), s.size()};
}

void BM_XmlParse(benchmark::State &state) {
    const std::string text = xml_text();
    CorrTable table;
    for (auto _ : state) {
        vexo_corr_set_neutral(&table);
        benchmark::DoNotOptimize(vexo::parse_xml(span(text), table));
    }
}

void BM_XmlStrtol(benchmark::State &state) {
    const std::string text = xml_text();
    for (auto _ : state) {
        long sum = 0;
        const char *p = text.c_str();
        while (*p) {
            char *end = nullptr;
            sum += std::strtol(p, &end, 10);
            p = end == p ? p + 1 : end;
        }
        benchmark::DoNotOptimize(sum);
    }
}

void BM_TxtParse(benchmark::State &state) {
    const std::string text = txt_text();
    CorrTable table;
    for (auto _ : state) {
        vexo_corr_set_neutral(&table);
        benchmark::DoNotOptimize(vexo::parse_txt(span(text), table));
    }
}

void BM_TxtStrtod(benchmark::State &state) {
    const std::string text = txt_text();
    CorrTable table;
    for (auto _ : state) {
        vexo_corr_set_neutral(&table);
        double sum = 0;
        const char *p = text.c_str();
        while (*p) {
            char *end = nullptr;
            sum += std::strtod(p, &end);
            p = end == p ? p + 1 : end;
        }
        benchmark::DoNotOptimize(sum);
    }
}

std::vector<GeomPoint> grid15(double wobble) {
    std::vector<GeomPoint> g(225);
    for (int a = 0; a < 15; ++a)
        for (int b = 0; b < 15; ++b) {
            g[a * 15 + b].x = a * 7.0 - 49 + wobble * b;
            g[a * 15 + b].y = b * 7.0 - 49 - wobble * a;
        }
    return g;
}

void BM_Interpolate15(benchmark::State &state) {
    const auto nominal = grid15(0), measured = grid15(0.03);
    CorrTable table;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            vexo_corr_interpolate(15, measured.data(), nominal.data(), 100, &table));
}

void BM_SetNeutral(benchmark::State &state) {
    CorrTable table;
    for (auto _ : state) {
        vexo_corr_set_neutral(&table);
        benchmark::DoNotOptimize(table.cell[4224].x);
    }
}

BENCHMARK(BM_XmlParse);
BENCHMARK(BM_XmlStrtol);
BENCHMARK(BM_TxtParse);
BENCHMARK(BM_TxtStrtod);
BENCHMARK(BM_Interpolate15);
BENCHMARK(BM_SetNeutral);

} // namespace

int main(int argc, char **argv) {
    return vexo_bench::run_with_ratios(argc, argv,
                                       {{"BM_XmlParse", "BM_XmlStrtol"},
                                        {"BM_TxtParse", "BM_TxtStrtod"},
                                        {"BM_Interpolate15", "BM_SetNeutral"}},
                                       "library / plain C");
}
