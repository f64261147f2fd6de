// SPDX-License-Identifier: MIT
// Heights of input vertices by grid position, for carrying z through a 2D
// clipping.  Header-only: the lookups run once per result point and must
// inline into the loops that call them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <polyclipping/clipper.hpp>

namespace vexo {

// Open addressing with linear probing in one flat array, since one lookup
// per result point must stay cheap next to the clipping itself (a
// node-based map costs a third on top).
class HeightTable {
public:
    using cInt = ClipperLib::cInt;
    using IntPoint = ClipperLib::IntPoint;

    // Only vertices inside Clipper's range reach the table (it throws on any
    // other before a result exists), so the lowest int64 marks a free slot.
    explicit HeightTable(size_t vertices) : slots_(vertices + vertices / 2 + 16) {}

    // The first vertex at a position keeps it.
    void add_path(const ClipperLib::Path &path, const std::vector<cInt> &z) {
        for (size_t i = 0; i < path.size(); ++i) add(path[i], z[i]);
    }

    // 0 for a position no input vertex had.
    void find_path(const ClipperLib::Path &path, std::vector<cInt> *z) const {
        z->resize(path.size());
        for (size_t i = 0; i < path.size(); ++i) (*z)[i] = find(path[i]);
    }

private:
    static constexpr cInt kFree = INT64_MIN;
    struct Slot {
        cInt x = kFree, y = 0, z = 0;
    };

    void add(const IntPoint &v, cInt z) {
        size_t i = home(v);
        while (slots_[i].x != kFree) {
            if (slots_[i].x == v.X && slots_[i].y == v.Y) return;
            i = next(i);
        }
        slots_[i] = Slot{v.X, v.Y, z};
    }

    cInt find(const IntPoint &v) const {
        for (size_t i = home(v); slots_[i].x != kFree; i = next(i))
            if (slots_[i].x == v.X && slots_[i].y == v.Y) return slots_[i].z;
        return 0;
    }

    size_t home(const IntPoint &v) const {
        // Neighbouring grid points differ in few low bits: mix thoroughly.
        const uint64_t h = mix(mix(static_cast<uint64_t>(v.X)) ^ static_cast<uint64_t>(v.Y));
        // Scaled onto the table by a multiply instead of a division.
        const uint64_t size = slots_.size();
        if (size <= UINT32_MAX) return static_cast<size_t>(((h >> 32) * size) >> 32);
        return static_cast<size_t>(h % size);
    }

    static uint64_t mix(uint64_t x) {
        x ^= x >> 30;
        x *= 0xBF58476D1CE4E5B9ull;
        x ^= x >> 27;
        x *= 0x94D049BB133111EBull;
        return x ^ (x >> 31);
    }

    size_t next(size_t i) const { return i + 1 == slots_.size() ? 0 : i + 1; }

    std::vector<Slot> slots_;
};

} // namespace vexo
