// SPDX-License-Identifier: MIT
// A 2D tree over fixed points from which points can be taken away, answering
// "nearest point still present" in about log n for spread-out points.
#pragma once

#include <cstdint>
#include <vector>

namespace vexo {

class NearestEnds {
public:
    // Points (x[i], y[i]); their indices are what queries return.
    NearestEnds(const std::vector<double> &x, const std::vector<double> &y);

    // The present point nearest to (qx, qy) (squared 2D distance, ties to the
    // lowest index), or UINT32_MAX when none is left.
    uint32_t nearest(double qx, double qy) const;
    void remove(uint32_t index);

private:
    struct Node {
        double x0, x1, y0, y1; // bounds of the subtree's points
        uint32_t lo, hi;       // subtree = order_[lo, hi), its own point at (lo + hi) / 2
        uint32_t parent;
        uint32_t present; // points of the subtree still present
        bool by_x;        // split direction at the own point
    };
    uint32_t build(uint32_t lo, uint32_t hi, uint32_t parent);
    void search(uint32_t node, double qx, double qy, double *best_d2, uint32_t *best) const;
    uint32_t node_at(uint32_t position) const { return node_of_position_[position]; }

    const std::vector<double> &x_, &y_;
    std::vector<uint32_t> order_;            // point indices in tree order
    std::vector<uint32_t> node_of_position_; // tree node whose own point sits there
    std::vector<uint32_t> position_of_;      // position in order_ of each point
    std::vector<char> present_;
    std::vector<Node> nodes_;
};

} // namespace vexo
