// SPDX-License-Identifier: MIT
#include "geom/nearest_ends.hpp"

#include <algorithm>

namespace vexo {
namespace {
constexpr uint32_t kNoNode = UINT32_MAX;
} // namespace

NearestEnds::NearestEnds(const std::vector<double> &x, const std::vector<double> &y)
    : x_(x), y_(y), order_(x.size()), node_of_position_(x.size()), position_of_(x.size()),
      present_(x.size(), 1) {
    for (uint32_t i = 0; i < order_.size(); ++i) order_[i] = i;
    nodes_.reserve(x.size());
    if (!order_.empty()) build(0, static_cast<uint32_t>(order_.size()), kNoNode);
    for (uint32_t p = 0; p < order_.size(); ++p) position_of_[order_[p]] = p;
}

// Splits at the median of the wider side; ties in the split coordinate are
// broken by index, so the tree (and every answer) depends on the input only.
uint32_t NearestEnds::build(uint32_t lo, uint32_t hi, uint32_t parent) {
    const uint32_t id = static_cast<uint32_t>(nodes_.size());
    nodes_.push_back({0, 0, 0, 0, lo, hi, parent, hi - lo, true});
    double x0 = x_[order_[lo]], x1 = x0, y0 = y_[order_[lo]], y1 = y0;
    for (uint32_t i = lo; i < hi; ++i) {
        x0 = std::min(x0, x_[order_[i]]);
        x1 = std::max(x1, x_[order_[i]]);
        y0 = std::min(y0, y_[order_[i]]);
        y1 = std::max(y1, y_[order_[i]]);
    }
    nodes_[id].x0 = x0;
    nodes_[id].x1 = x1;
    nodes_[id].y0 = y0;
    nodes_[id].y1 = y1;
    const uint32_t mid = lo + (hi - lo) / 2;
    const bool by_x = (x1 - x0) >= (y1 - y0);
    nodes_[id].by_x = by_x;
    const std::vector<double> &key = by_x ? x_ : y_;
    std::nth_element(
        order_.begin() + lo, order_.begin() + mid, order_.begin() + hi,
        [&key](uint32_t a, uint32_t b) { return key[a] < key[b] || (key[a] == key[b] && a < b); });
    node_of_position_[mid] = id;
    if (lo < mid) build(lo, mid, id);
    if (mid + 1 < hi) build(mid + 1, hi, id);
    return id;
}

void NearestEnds::remove(uint32_t index) {
    if (!present_[index]) return;
    present_[index] = 0;
    for (uint32_t n = node_at(position_of_[index]); n != kNoNode; n = nodes_[n].parent)
        --nodes_[n].present;
}

uint32_t NearestEnds::nearest(double qx, double qy) const {
    double best_d2 = 0.0;
    uint32_t best = UINT32_MAX;
    if (!nodes_.empty()) search(0, qx, qy, &best_d2, &best);
    return best;
}

void NearestEnds::search(uint32_t node, double qx, double qy, double *best_d2,
                         uint32_t *best) const {
    const Node &n = nodes_[node];
    if (n.present == 0) return;
    const double bx = qx < n.x0 ? n.x0 - qx : (qx > n.x1 ? qx - n.x1 : 0.0);
    const double by = qy < n.y0 ? n.y0 - qy : (qy > n.y1 ? qy - n.y1 : 0.0);
    // Equal distances are not pruned: a lower index may still win the tie.
    if (*best != UINT32_MAX && bx * bx + by * by > *best_d2) return;
    const uint32_t mid = n.lo + (n.hi - n.lo) / 2;
    const uint32_t own = order_[mid];
    if (present_[own]) {
        const double dx = x_[own] - qx, dy = y_[own] - qy;
        const double d2 = dx * dx + dy * dy;
        if (*best == UINT32_MAX || d2 < *best_d2 || (d2 == *best_d2 && own < *best)) {
            *best_d2 = d2;
            *best = own;
        }
    }
    // Children: the left one is the next node built; the right one follows
    // the left subtree.
    const uint32_t left = n.lo < mid ? node + 1 : kNoNode;
    const uint32_t right = mid + 1 < n.hi ? node + 1 + (mid - n.lo) : kNoNode;
    const bool query_left = n.by_x ? qx <= x_[own] : qy <= y_[own];
    const bool left_first = right == kNoNode || (left != kNoNode && query_left);
    const uint32_t first = left_first ? left : right, second = left_first ? right : left;
    if (first != kNoNode) search(first, qx, qy, best_d2, best);
    if (second != kNoNode) search(second, qx, qy, best_d2, best);
}

} // namespace vexo
