// SPDX-License-Identifier: MIT
// Colour pipeline core: the gamma table, the per-byte formula and the
// table-driven pixel loop.
#include "gfx/colour.hpp"

#include <math.h>

#include <atomic>
#include <cstring>
#include <mutex>

namespace vexo {

float gamma_exponent(int32_t gamma) {
    // The percentage is divided in double and rounded to f32 before the
    // rest is done in double; hosts' colour settings were tuned on exactly
    // these values.
    if (gamma < 0) {
        const float fraction = static_cast<float>(-static_cast<double>(gamma) / 100.0);
        return static_cast<float>(1.0 - static_cast<double>(fraction) * 0.8);
    }
    const float fraction = static_cast<float>(static_cast<double>(gamma) / 100.0);
    return static_cast<float>(static_cast<double>(fraction) * 4.0 + 1.0);
}

void build_gamma_table(float g, GammaTable &table) {
    for (int k = 0; k < 256; ++k) {
        // Entry k is taken at (k + 1)/256: entry 255 is exactly 1 and entry
        // 0 is not 0.  Hosts compare corrected images byte for byte, so the
        // curve is exactly this one.
        const float base = static_cast<float>(k + 1) * 0.00390625f;
        float level = ::powf(base, g) * 65535.0f + 0.5f;
        if (!(level > 0.0f)) level = 0.0f;
        if (level > 65535.0f) level = 65535.0f;
        // The curve is held as 16-bit levels; the +0.5 above rounds to them.
        const auto quantised = static_cast<uint16_t>(level);
        table[k] = static_cast<float>(quantised) / 65535.0f;
    }
}

namespace {
GammaTable g_gamma_table;
std::once_flag g_gamma_once;
} // namespace

const GammaTable &shared_gamma_table(int32_t gamma) {
    std::call_once(g_gamma_once,
                   [gamma] { build_gamma_table(gamma_exponent(gamma), g_gamma_table); });
    return g_gamma_table;
}

float contrast_factor(int32_t contrast) {
    // Widened so that contrast near INT32_MAX does not overflow.
    const float c = static_cast<float>(static_cast<int64_t>(contrast) + 100) / 100.0f;
    return c * c;
}

uint8_t colour_level(float gamma_value, float contrast_factor, int32_t brightness, int32_t offset) {
    float r = ((gamma_value - 0.5f) * contrast_factor + 0.5f) * 255.0f;
    r = r + static_cast<float>(brightness);
    r = r + static_cast<float>(offset);
    if (!(r > 0.0f)) return 0;
    if (r > 255.0f) return 255;
    return static_cast<uint8_t>(r);
}

void build_channel_tables(const GammaTable &gamma, const ColourLevels &levels,
                          ChannelTables &tables) {
    const float factor = contrast_factor(levels.contrast);
    for (int ch = 0; ch < kColourChannels; ++ch)
        for (int v = 0; v < 256; ++v)
            tables[ch][v] = colour_level(gamma[v], factor, levels.brightness, levels.offsets[ch]);
}

namespace {

// Eight pixels are 24 bytes, three 64-bit words whose byte i always has
// channel i % 3.  The block is read whole before it is stored, which keeps
// dst == src safe, and the loop does one store per eight bytes instead of
// one per byte.
constexpr size_t kBlockPixels = 8;
constexpr size_t kBlockBytes = kBlockPixels * kColourChannels;

// Maps eight bytes whose channels run a, b, c, a, b, c, a, b into one word.
// The bytes are read straight from memory (a load each, no shifting to
// extract them); all eight are read before the word is stored.
inline uint64_t map_word(const uint8_t *s, const uint8_t *a, const uint8_t *b, const uint8_t *c) {
    return uint64_t{a[s[0]]} | uint64_t{b[s[1]]} << 8 | uint64_t{c[s[2]]} << 16 |
           uint64_t{a[s[3]]} << 24 | uint64_t{b[s[4]]} << 32 | uint64_t{c[s[5]]} << 40 |
           uint64_t{a[s[6]]} << 48 | uint64_t{b[s[7]]} << 56;
}

inline void store_word(uint8_t *p, uint64_t w) {
    std::memcpy(p, &w, sizeof w);
}

bool little_endian_host() {
    const uint16_t probe = 1;
    uint8_t first;
    std::memcpy(&first, &probe, 1);
    return first == 1;
}

} // namespace

void map_bytes_portable(uint8_t *dst, const uint8_t *src, size_t bytes, int first_channel,
                        const ChannelTables &tables) {
    // t[k] is the table of the channel k bytes after the first, so every
    // later byte picks its table by its distance from the start.
    const uint8_t *order[kColourChannels + 2] = {tables[0], tables[1], tables[2], tables[0],
                                                 tables[1]};
    const uint8_t *const *t = order + first_channel;
    size_t i = 0;
    if (little_endian_host()) {
        // Word 0 starts on the first channel, word 1 two channels on (byte
        // 8), word 2 one channel on (byte 16).
        for (; i + kBlockBytes <= bytes; i += kBlockBytes) {
            const uint64_t w0 = map_word(src + i, t[0], t[1], t[2]);
            const uint64_t w1 = map_word(src + i + 8, t[2], t[0], t[1]);
            const uint64_t w2 = map_word(src + i + 16, t[1], t[2], t[0]);
            store_word(dst + i, w0);
            store_word(dst + i + 8, w1);
            store_word(dst + i + 16, w2);
        }
    }
    for (int channel = 0; i < bytes; ++i, channel = channel == 2 ? 0 : channel + 1)
        dst[i] = t[channel][src[i]];
}

namespace {
std::atomic<ColourWalk> g_walk_limit{ColourWalk::Wide};
} // namespace

ColourWalk colour_walk() {
    const ColourWalk limit = g_walk_limit.load(std::memory_order_relaxed);
    if (limit == ColourWalk::Wide && wide_walk_available()) return ColourWalk::Wide;
    if (limit != ColourWalk::Portable && shuffle_walk_available()) return ColourWalk::Shuffle;
    return ColourWalk::Portable;
}

void limit_colour_walk(ColourWalk fastest) {
    g_walk_limit.store(fastest, std::memory_order_relaxed);
}

void map_pixels(uint8_t *dst, const uint8_t *src, size_t pixels, const ChannelTables &tables) {
    const size_t bytes = pixels * kColourChannels;
    switch (colour_walk()) {
    case ColourWalk::Wide:
        map_bytes_wide(dst, src, bytes, tables);
        break;
    case ColourWalk::Shuffle:
        map_bytes_shuffle(dst, src, bytes, tables);
        break;
    case ColourWalk::Portable:
        map_bytes_portable(dst, src, bytes, 0, tables);
        break;
    }
}

} // namespace vexo
