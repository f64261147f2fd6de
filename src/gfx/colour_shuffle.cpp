// SPDX-License-Identifier: MIT
// The table walk 96 bytes at a time with 16-byte table shuffles on 256-bit
// registers, for processors without 512-bit byte permutes.
//
// A shuffle looks up 16 table bytes by the low four bits of each index
// byte and gives 0 where the index byte has its top bit set.  Subtracting
// 16 from the index before each of eight shuffles makes shuffle k hit
// exactly the bytes whose high nibble is at least k (below 128), so with
// sub-table k holding entries 16k.. XOR entries 16(k-1).. the XOR of the
// hits is the entry itself; the upper 128 entries work the same way, and
// the index's top bit picks the half.  That costs 16 shuffles per register
// and channel, so the bytes are first sorted by channel (32 bytes of one
// channel per register) and put back in pixel order afterwards.  Every
// output byte is still the table's byte for its input byte and channel.
#include "gfx/colour.hpp"

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#include <immintrin.h>
#define VEXO_COLOUR_SHUFFLE 1
#endif

namespace vexo {

#ifdef VEXO_COLOUR_SHUFFLE

namespace {

#define VEXO_SHUFFLE_TARGET __attribute__((target("avx2")))

// A block is two 48-byte groups, one per 128-bit half of each register:
// three registers hold 16 pixels, and a group's byte j has channel j % 3
// counted from the block's first byte.
constexpr size_t kGroupBytes = 48;
constexpr size_t kBlockBytes = 2 * kGroupBytes;
constexpr size_t kStoreBytes = 32;

// Shuffle k of a half sees index - 16k (k = 0..7 below 128; the upper half
// reuses those indices for k = 1..8, where index - 16k - 128 is the same
// byte but for the top bit).  Below 128, shuffle k hits the bytes whose
// high nibble h is at least k, so sub-table k holds rows k XOR k - 1 and
// the XOR of the hits is row h.  From 128 on, shuffle k hits h - 7 <= k,
// so sub-table k holds rows k + 7 XOR k + 8 (row 15 alone for k = 8) and
// the XOR of the hits is again row h.  A row is 16 entries.
struct SubTables {
    __m256i low[8];  // shuffles k = 0..7
    __m256i high[8]; // shuffles k = 1..8
};

VEXO_SHUFFLE_TARGET inline __m256i row_register(const uint8_t *table, int row, int other_row) {
    alignas(16) uint8_t bytes[16];
    for (int i = 0; i < 16; ++i)
        bytes[i] = static_cast<uint8_t>(table[16 * row + i] ^
                                        (other_row < 0 ? 0 : table[16 * other_row + i]));
    return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<__m128i *>(bytes)));
}

VEXO_SHUFFLE_TARGET void fill_sub_tables(const uint8_t *table, SubTables &sub) {
    for (int k = 0; k < 8; ++k) {
        sub.low[k] = row_register(table, k, k - 1);
        sub.high[k] = row_register(table, k + 8, k == 7 ? -1 : k + 9);
    }
}

// Each byte of `index` looked up in the 256-entry table given by `sub`.
VEXO_SHUFFLE_TARGET inline __m256i lookup(const SubTables &sub, __m256i index) {
    const __m256i step = _mm256_set1_epi8(16);
    __m256i shifted = index;
    __m256i low = _mm256_shuffle_epi8(sub.low[0], shifted);
    __m256i high = _mm256_setzero_si256();
#pragma GCC unroll 8
    for (int k = 1; k <= 8; ++k) {
        shifted = _mm256_sub_epi8(shifted, step);
        high = _mm256_xor_si256(high, _mm256_shuffle_epi8(sub.high[k - 1], shifted));
        if (k < 8) low = _mm256_xor_si256(low, _mm256_shuffle_epi8(sub.low[k], shifted));
    }
    return _mm256_blendv_epi8(low, high, index);
}

// Masks for sorting a 48-byte group by channel.  Register r of a group
// holds bytes 16r..16r+15, so its byte p has channel (r + p) % 3 (16 is 1
// more than a multiple of 3): the three registers never hold one channel
// at the same p, one blend per channel gathers its 16 bytes and one
// shuffle puts them in order.  Putting back reverses both steps.
struct GroupMasks {
    uint8_t gather_from[kColourChannels][2]
                       [16];              // 0x80 where channel ch's byte p is in register 1, 2
    uint8_t order[kColourChannels][16];   // position p of channel ch's byte m
    uint8_t unorder[kColourChannels][16]; // channel byte m of position p
    uint8_t scatter_from[3][2][16];       // 0x80 where register r's byte p has channel 1, 2
};

constexpr GroupMasks group_masks() {
    GroupMasks m{};
    for (int ch = 0; ch < kColourChannels; ++ch)
        for (int p = 0; p < 16; ++p) {
            const int reg = (ch - p % 3 + 3) % 3; // (reg + p) % 3 == ch
            const int m_index = (16 * reg + p) / 3;
            if (reg > 0) m.gather_from[ch][reg - 1][p] = 0x80;
            m.order[ch][m_index] = static_cast<uint8_t>(p);
            m.unorder[ch][p] = static_cast<uint8_t>(m_index);
            if (ch > 0) m.scatter_from[reg][ch - 1][p] = 0x80;
        }
    return m;
}

constexpr GroupMasks kGroupMasks = group_masks();

VEXO_SHUFFLE_TARGET inline __m256i mask_register(const uint8_t (&bytes)[16]) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)));
}

// Byte p from x[0], or from x[1] or x[2] where the masks' bytes say so.
VEXO_SHUFFLE_TARGET inline __m256i blend3(const __m256i (&x)[3], const uint8_t (&from)[2][16]) {
    const __m256i low = _mm256_blendv_epi8(x[0], x[1], mask_register(from[0]));
    return _mm256_blendv_epi8(low, x[2], mask_register(from[1]));
}

// Loads a block as three registers, each half from one group.
VEXO_SHUFFLE_TARGET inline void load_block(const uint8_t *src, __m256i (&reg)[3]) {
#pragma GCC unroll 3
    for (int r = 0; r < 3; ++r) {
        const auto *low = reinterpret_cast<const __m128i *>(src + 16 * r);
        const auto *high = reinterpret_cast<const __m128i *>(src + kGroupBytes + 16 * r);
        reg[r] = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(low)),
                                         _mm_loadu_si128(high), 1);
    }
}

// Stores three registers laid out as load_block reads them, in memory
// order: 32 contiguous bytes per store.
template <bool Streaming>
VEXO_SHUFFLE_TARGET inline void store_block(uint8_t *dst, const __m256i (&reg)[3]) {
    const __m256i out[3] = {_mm256_permute2x128_si256(reg[0], reg[1], 0x20),
                            _mm256_permute2x128_si256(reg[2], reg[0], 0x30),
                            _mm256_permute2x128_si256(reg[1], reg[2], 0x31)};
#pragma GCC unroll 3
    for (int r = 0; r < 3; ++r) {
        auto *at = reinterpret_cast<__m256i *>(dst + kStoreBytes * r);
        if (Streaming)
            _mm256_stream_si256(at, out[r]);
        else
            _mm256_storeu_si256(at, out[r]);
    }
}

// One block, its bytes sorted by channel, looked up, put back.  Read whole before it is stored, so
// dst == src is safe.
template <bool Streaming>
VEXO_SHUFFLE_TARGET inline void map_block(uint8_t *dst, const uint8_t *src,
                                          const SubTables (&t)[kColourChannels]) {
    const GroupMasks &m = kGroupMasks;
    __m256i reg[3];
    load_block(src, reg);
    __m256i mapped[3];
#pragma GCC unroll 3
    for (int ch = 0; ch < kColourChannels; ++ch) {
        const __m256i sorted =
            _mm256_shuffle_epi8(blend3(reg, m.gather_from[ch]), mask_register(m.order[ch]));
        const __m256i looked_up = lookup(t[ch], sorted);
        mapped[ch] = _mm256_shuffle_epi8(looked_up, mask_register(m.unorder[ch]));
    }
#pragma GCC unroll 3
    for (int r = 0; r < 3; ++r) reg[r] = blend3(mapped, m.scatter_from[r]);
    store_block<Streaming>(dst, reg);
}

// Blocks from `at` to the last whole one; dst + at is 32-byte aligned
// when Streaming.  Returns where they end.
template <bool Streaming>
VEXO_SHUFFLE_TARGET size_t map_blocks(uint8_t *dst, const uint8_t *src, size_t at, size_t bytes,
                                      const SubTables (&t)[kColourChannels]) {
    for (; at + kBlockBytes <= bytes; at += kBlockBytes)
        map_block<Streaming>(dst + at, src + at, t);
    if (Streaming) _mm_sfence();
    return at;
}

VEXO_SHUFFLE_TARGET void map_bytes_avx2(uint8_t *dst, const uint8_t *src, size_t bytes,
                                        const ChannelTables &tables) {
    size_t at = 0;
    if (bytes >= kStreamingBytes) {
        // Streaming stores need an aligned destination: the bytes before
        // the first 32-byte boundary go the portable way.
        const auto misalign = reinterpret_cast<uintptr_t>(dst) % kStoreBytes;
        at = misalign == 0 ? 0 : kStoreBytes - misalign;
        map_bytes_portable(dst, src, at, 0, tables);
    }
    // Blocks are whole pixels, so each starts on the channel of byte `at`:
    // slot ch of the sub-tables serves the channel ch bytes after it.
    const int first = static_cast<int>(at % kColourChannels);
    SubTables t[kColourChannels];
    for (int ch = 0; ch < kColourChannels; ++ch)
        fill_sub_tables(tables[(first + ch) % kColourChannels], t[ch]);
    if (bytes >= kStreamingBytes)
        at = map_blocks<true>(dst, src, at, bytes, t);
    else
        at = map_blocks<false>(dst, src, at, bytes, t);
    map_bytes_portable(dst + at, src + at, bytes - at, static_cast<int>(at % kColourChannels),
                       tables);
}

} // namespace

bool shuffle_walk_available() {
    static const bool available = __builtin_cpu_supports("avx2");
    return available;
}

void map_bytes_shuffle(uint8_t *dst, const uint8_t *src, size_t bytes,
                       const ChannelTables &tables) {
    map_bytes_avx2(dst, src, bytes, tables);
}

#else

bool shuffle_walk_available() {
    return false;
}

void map_bytes_shuffle(uint8_t *dst, const uint8_t *src, size_t bytes,
                       const ChannelTables &tables) {
    map_bytes_portable(dst, src, bytes, 0, tables);
}

#endif

} // namespace vexo
