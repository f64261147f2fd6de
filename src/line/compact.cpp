// SPDX-License-Identifier: MIT
#include "line/compact.hpp"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "core/point_flags.hpp"

namespace vexo {

uint32_t remove_processed(GeomPoint *points, uint32_t count) noexcept {
    // Points before the first removed one stay where they are.
    uint32_t read = 0;
    while (read < count && !is_processed(points[read])) ++read;
    return read + move_unprocessed(points + read, points + read, count - read);
}

uint32_t move_unprocessed(GeomPoint *dest, const GeomPoint *src, uint32_t n) noexcept {
    // Every record is copied and the write position advances only past
    // kept ones: no branch on the flags, so scattered removals cost one
    // streaming pass.  Copying forward keeps dest <= src safe.
    // The record moves as two 16-byte halves where SSE2 has them, rather
    // than field by field (four loads and four stores).
    uint32_t write = 0;
    for (uint32_t read = 0; read < n; ++read) {
#ifdef __SSE2__
        const auto *from = reinterpret_cast<const __m128i *>(&src[read]);
        auto *to = reinterpret_cast<__m128i *>(&dest[write]);
        const __m128i low = _mm_loadu_si128(from);
        const __m128i high = _mm_loadu_si128(from + 1);
        _mm_storeu_si128(to, low);
        _mm_storeu_si128(to + 1, high);
#else
        dest[write] = src[read];
#endif
        write += is_processed(src[read]) ? 0u : 1u;
    }
    return write;
}

} // namespace vexo
