// SPDX-License-Identifier: MIT
// Colour pipeline: gamma, contrast, brightness and per-channel offsets on
// packed 3-byte pixels.
//
// Every output byte depends only on its input byte and its channel, so a
// call reduces to three 256-entry byte tables (one per channel) that the
// image is then run through.  The tables are filled with the exact f32
// per-byte formula, so results are bit-identical to evaluating it per byte.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexo {

constexpr int kColourChannels = 3;

using GammaTable = float[256];
using ChannelTables = uint8_t[kColourChannels][256];

struct ColourLevels {
    int32_t brightness = 0;
    int32_t contrast = 0;
    int32_t offsets[kColourChannels] = {0, 0, 0};
};

// Exponent for a gamma percentage: -100 gives 0.2, 0 gives 1, +100 gives 5.
float gamma_exponent(int32_t gamma);

// Fills `table` for exponent g (pure; no shared state).
void build_gamma_table(float g, GammaTable &table);

// The process-wide table: built from the gamma of the first call only, then
// reused whatever later callers pass.
const GammaTable &shared_gamma_table(int32_t gamma);

// One output byte from the gamma-table value of its input byte.
uint8_t colour_level(float gamma_value, float contrast_factor, int32_t brightness, int32_t offset);

// (contrast + 100) / 100 squared, in f32.
float contrast_factor(int32_t contrast);

void build_channel_tables(const GammaTable &gamma, const ColourLevels &levels,
                          ChannelTables &tables);

// Maps `pixels` 3-byte pixels from src to dst through the tables.  dst may
// equal src; other overlaps are not supported.  Takes the walk that
// colour_walk() names; all give the same bytes.
void map_pixels(uint8_t *dst, const uint8_t *src, size_t pixels, const ChannelTables &tables);

// The portable walk: `bytes` bytes whose first one belongs to channel
// `first_channel` (0..2).
void map_bytes_portable(uint8_t *dst, const uint8_t *src, size_t bytes, int first_channel,
                        const ChannelTables &tables);

// True when this processor runs the 64-byte walk (byte permutes on 512-bit
// registers), checked once at run time.
bool wide_walk_available();

// The 64-byte walk, which must only run where wide_walk_available().
// Outputs of at least kStreamingBytes bypass the cache on the way out.
void map_bytes_wide(uint8_t *dst, const uint8_t *src, size_t bytes, const ChannelTables &tables);

// True when this processor runs the 96-byte walk (16-byte table shuffles
// on 256-bit registers), checked once at run time.
bool shuffle_walk_available();

// The 96-byte walk, which must only run where shuffle_walk_available().
// Outputs of at least kStreamingBytes bypass the cache on the way out.
void map_bytes_shuffle(uint8_t *dst, const uint8_t *src, size_t bytes, const ChannelTables &tables);

enum class ColourWalk { Portable, Shuffle, Wide };

// The walk map_pixels takes: the fastest this processor runs, or a slower
// one after limit_colour_walk, so that tests and benchmarks can run each
// walk through the public call.
ColourWalk colour_walk();
void limit_colour_walk(ColourWalk fastest);

// An image this large does not stay in the cache together with its source,
// so storing it through the cache only evicts data the host may still use.
constexpr size_t kStreamingBytes = size_t{8} << 20;

} // namespace vexo
