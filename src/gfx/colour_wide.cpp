// SPDX-License-Identifier: MIT
// The table walk 64 bytes at a time with byte permutes on 512-bit
// registers.  A permute looks up 128 table bytes by the low seven bits of
// each index byte, so one channel's 256-byte table is two permutes and a
// blend on the index's top bit.  Lanes of one register belong to all three
// channels, so each register is looked up in all three tables and the
// channels are blended by lane.  Every output byte is still the table's byte
// for its input byte and channel: the same bytes as the portable walk.
#include "gfx/colour.hpp"

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#include <immintrin.h>
#define VEXO_COLOUR_WIDE 1
#endif

namespace vexo {

#ifdef VEXO_COLOUR_WIDE

namespace {

constexpr size_t kVectorBytes = 64;

#define VEXO_WIDE_TARGET __attribute__((target("avx512f,avx512bw,avx512vbmi")))

struct WideTables {
    __m512i part[kColourChannels][4]; // each channel's table, 64 bytes a part
};

VEXO_WIDE_TARGET inline __m512i lookup(const __m512i (&table)[4], __m512i index) {
    const __m512i low = _mm512_permutex2var_epi8(table[0], index, table[1]);
    const __m512i high = _mm512_permutex2var_epi8(table[2], index, table[3]);
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(index), low, high);
}

// Lanes of channel `channel` in a register whose lane 0 has channel `first`.
constexpr uint64_t channel_lanes(int first, int channel) {
    uint64_t lanes = 0;
    for (int lane = 0; lane < 64; ++lane)
        if ((first + lane) % kColourChannels == channel) lanes |= uint64_t{1} << lane;
    return lanes;
}

// Per first channel: the lanes that take table 1 and table 2.
constexpr __mmask64 kLanes[kColourChannels][2] = {
    {channel_lanes(0, 1), channel_lanes(0, 2)},
    {channel_lanes(1, 1), channel_lanes(1, 2)},
    {channel_lanes(2, 1), channel_lanes(2, 2)},
};

VEXO_WIDE_TARGET inline __m512i map_vector(const WideTables &t, __m512i bytes, int first) {
    const __m512i c0 = lookup(t.part[0], bytes);
    const __m512i c1 = lookup(t.part[1], bytes);
    const __m512i c2 = lookup(t.part[2], bytes);
    const __m512i c01 = _mm512_mask_blend_epi8(kLanes[first][0], c0, c1);
    return _mm512_mask_blend_epi8(kLanes[first][1], c01, c2);
}

// Registers from `at` on, `first` being the channel of the byte at `at`; dst
// + at is 64-byte aligned when Streaming.  Each register is loaded before
// it is stored, so dst == src is safe.
template <bool Streaming>
VEXO_WIDE_TARGET size_t map_vectors(uint8_t *dst, const uint8_t *src, size_t at, size_t bytes,
                                    const WideTables &t) {
    int first = static_cast<int>(at % kColourChannels);
    for (; at + kVectorBytes <= bytes; at += kVectorBytes) {
        const __m512i in = _mm512_loadu_si512(src + at);
        const __m512i out = map_vector(t, in, first);
        if (Streaming)
            _mm512_stream_si512(reinterpret_cast<__m512i *>(dst + at), out);
        else
            _mm512_storeu_si512(dst + at, out);
        // 64 bytes are one channel more than whole pixels.
        first = first == 2 ? 0 : first + 1;
    }
    if (Streaming) _mm_sfence();
    return at;
}

VEXO_WIDE_TARGET void map_bytes_avx512(uint8_t *dst, const uint8_t *src, size_t bytes,
                                       const ChannelTables &tables) {
    WideTables t;
    for (int ch = 0; ch < kColourChannels; ++ch)
        for (int k = 0; k < 4; ++k) t.part[ch][k] = _mm512_loadu_si512(tables[ch] + 64 * k);
    size_t at = 0;
    if (bytes >= kStreamingBytes) {
        // Streaming stores need an aligned destination: the bytes before
        // the first 64-byte boundary go the portable way.
        const auto misalign = reinterpret_cast<uintptr_t>(dst) % kVectorBytes;
        at = misalign == 0 ? 0 : kVectorBytes - misalign;
        map_bytes_portable(dst, src, at, 0, tables);
        at = map_vectors<true>(dst, src, at, bytes, t);
    } else {
        at = map_vectors<false>(dst, src, at, bytes, t);
    }
    map_bytes_portable(dst + at, src + at, bytes - at, static_cast<int>(at % kColourChannels),
                       tables);
}

} // namespace

bool wide_walk_available() {
    static const bool available = __builtin_cpu_supports("avx512f") &&
                                  __builtin_cpu_supports("avx512bw") &&
                                  __builtin_cpu_supports("avx512vbmi");
    return available;
}

void map_bytes_wide(uint8_t *dst, const uint8_t *src, size_t bytes, const ChannelTables &tables) {
    map_bytes_avx512(dst, src, bytes, tables);
}

#else

bool wide_walk_available() {
    return false;
}

void map_bytes_wide(uint8_t *dst, const uint8_t *src, size_t bytes, const ChannelTables &tables) {
    map_bytes_portable(dst, src, bytes, 0, tables);
}

#endif

} // namespace vexo
