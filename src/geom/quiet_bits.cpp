// SPDX-License-Identifier: MIT
#include "geom/quiet_bits.hpp"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "geom/wide_reduce.hpp"
#include "line/measure.hpp"

namespace vexo {
namespace {

// 1 where the point may be stepped over whatever its distance (a line
// end), and where it never may (processed), as 0 or 1 without a branch.
uint64_t end_bit(const GeomPoint &p) {
    return p.flags & VEXO_POINT_END;
}
uint64_t live_bit(const GeomPoint &p) {
    return ((p.flags / VEXO_POINT_PROCESSED) & 1u) ^ 1u;
}

template <bool WithZ> uint64_t quiet_bit(const GeomPoint *p, uint32_t j, double surely_above) {
    const uint64_t far = squared_distance<WithZ>(p[j - 1], p[j]) > surely_above ? 1u : 0u;
    return (far | end_bit(p[j])) & live_bit(p[j]);
}

// Far bits of points 1 and 2 of p[0..2], two lanes at a time with the
// operations of squared_distance in its order.
template <bool WithZ> uint64_t far_pair(const GeomPoint *p, double surely_above) {
#ifdef __SSE2__
    const __m128d xy0 = _mm_loadu_pd(&p[0].x);
    const __m128d xy1 = _mm_loadu_pd(&p[1].x);
    const __m128d xy2 = _mm_loadu_pd(&p[2].x);
    const __m128d d01 = _mm_sub_pd(xy0, xy1);
    const __m128d d12 = _mm_sub_pd(xy1, xy2);
    const __m128d sq01 = _mm_mul_pd(d01, d01);
    const __m128d sq12 = _mm_mul_pd(d12, d12);
    __m128d squared = _mm_add_pd(_mm_unpacklo_pd(sq01, sq12), _mm_unpackhi_pd(sq01, sq12));
    if constexpr (WithZ) {
        const __m128d z01 = _mm_loadh_pd(_mm_load_sd(&p[0].z), &p[1].z);
        const __m128d z12 = _mm_loadh_pd(_mm_load_sd(&p[1].z), &p[2].z);
        const __m128d dz = _mm_sub_pd(z01, z12);
        squared = _mm_add_pd(squared, _mm_mul_pd(dz, dz));
    }
    return static_cast<uint64_t>(_mm_movemask_pd(_mm_cmpgt_pd(squared, _mm_set1_pd(surely_above))));
#else
    return (squared_distance<WithZ>(p[0], p[1]) > surely_above ? 1u : 0u) |
           (squared_distance<WithZ>(p[1], p[2]) > surely_above ? 2u : 0u);
#endif
}

template <bool WithZ>
uint64_t narrow_quiet_bits(const GeomPoint *p, uint32_t base, uint32_t first, uint32_t end,
                           double surely_above) {
    uint64_t bits = 0;
    uint32_t j = first;
    for (; j + 1 < end; j += 2) {
        const uint64_t far = far_pair<WithZ>(p + j - 1, surely_above);
        const uint64_t ends = end_bit(p[j]) | end_bit(p[j + 1]) << 1;
        const uint64_t live = live_bit(p[j]) | live_bit(p[j + 1]) << 1;
        bits |= ((far | ends) & live) << (j - base);
    }
    if (j < end) bits |= quiet_bit<WithZ>(p, j, surely_above) << (j - base);
    return bits;
}

#ifdef VEXO_WIDE_REDUCE

#define VEXO_WIDE_TARGET VEXO_WIDE_REDUCE_TARGET

// (x, y, z, 0) of a record: the flags lane is cleared before any
// arithmetic, so no flag pattern is ever computed with as a double.
VEXO_WIDE_TARGET inline __m256d coordinates(__m256d record) {
    return _mm256_and_pd(record, _mm256_castsi256_pd(_mm256_setr_epi64x(-1, -1, -1, 0)));
}

VEXO_WIDE_TARGET inline __m256d squared_step(__m256d from, __m256d to) {
    const __m256d d = _mm256_sub_pd(from, to);
    return _mm256_mul_pd(d, d);
}

// Quiet bits of points 1 to 4 of p[0..4], one record per register.
// Spelled out rather than looped over arrays, which GCC keeps on the stack.
template <bool WithZ>
VEXO_WIDE_TARGET inline uint64_t wide_quiet_four(const GeomPoint *p, __m256d surely_above) {
    const __m256d r0 = _mm256_loadu_pd(&p[0].x);
    const __m256d r1 = _mm256_loadu_pd(&p[1].x);
    const __m256d r2 = _mm256_loadu_pd(&p[2].x);
    const __m256d r3 = _mm256_loadu_pd(&p[3].x);
    const __m256d r4 = _mm256_loadu_pd(&p[4].x);
    const __m256d c0 = coordinates(r0), c1 = coordinates(r1), c2 = coordinates(r2);
    const __m256d c3 = coordinates(r3), c4 = coordinates(r4);
    // hadd pairs x with y and z with the cleared lane: (x+y, x'+y', z+0, z'+0).
    const __m256d h12 = _mm256_hadd_pd(squared_step(c0, c1), squared_step(c1, c2));
    const __m256d h34 = _mm256_hadd_pd(squared_step(c2, c3), squared_step(c3, c4));
    __m256d squared = _mm256_permute2f128_pd(h12, h34, 0x20);
    if constexpr (WithZ) squared = _mm256_add_pd(squared, _mm256_permute2f128_pd(h12, h34, 0x31));
    const __m256i far = _mm256_castpd_si256(_mm256_cmp_pd(squared, surely_above, _CMP_GT_OQ));
    // Flags and reserved word of points 1 to 4, one per 64-bit lane.
    const __m256d f12 = _mm256_unpackhi_pd(r1, r2);
    const __m256d f34 = _mm256_unpackhi_pd(r3, r4);
    const __m256i flags = _mm256_and_si256(
        _mm256_castpd_si256(_mm256_permute2f128_pd(f12, f34, 0x31)), _mm256_set1_epi64x(3));
    const __m256i plain = _mm256_cmpeq_epi64(flags, _mm256_setzero_si256());
    const __m256i end_only = _mm256_cmpeq_epi64(flags, _mm256_set1_epi64x(VEXO_POINT_END));
    const __m256i quiet = _mm256_or_si256(_mm256_and_si256(plain, far), end_only);
    return static_cast<uint64_t>(_mm256_movemask_pd(_mm256_castsi256_pd(quiet)));
}

template <bool WithZ>
VEXO_WIDE_TARGET uint64_t wide_quiet_bits(const GeomPoint *p, uint32_t base, uint32_t first,
                                          uint32_t end, double surely_above) {
    const __m256d limit = _mm256_set1_pd(surely_above);
    uint64_t bits = 0;
    uint32_t j = first;
    for (; j + 3 < end; j += 4) bits |= wide_quiet_four<WithZ>(p + j - 1, limit) << (j - base);
    for (; j < end; ++j) bits |= quiet_bit<WithZ>(p, j, surely_above) << (j - base);
    return bits;
}

#endif

} // namespace

template <bool WithZ>
uint64_t quiet_bits(const GeomPoint *points, uint32_t base, uint32_t first, uint32_t end,
                    double surely_above) noexcept {
#ifdef VEXO_WIDE_REDUCE
    if (wide_reduce_available())
        return wide_quiet_bits<WithZ>(points, base, first, end, surely_above);
#endif
    return narrow_quiet_bits<WithZ>(points, base, first, end, surely_above);
}

template uint64_t quiet_bits<true>(const GeomPoint *, uint32_t, uint32_t, uint32_t,
                                   double) noexcept;
template uint64_t quiet_bits<false>(const GeomPoint *, uint32_t, uint32_t, uint32_t,
                                    double) noexcept;

} // namespace vexo
