// SPDX-License-Identifier: MIT
// The header from C++: plain arrays stand in for matrices and tables, and
// NULL still reaches the C functions.
#include "vexo.h"

#include "record_layouts.h" // the record layouts as C++ sees them

#include <cstdio>

static GeomPoint table[4225];

int main() {
    double m[16];
    vexo_matrix_unify(m);
    vexo_matrix_translate(m, 1.0, 2.0, 3.0);
    double x = 0, y = 0;
    vexo_matrix_multiply_2Dcoord(m, 1.0, 1.0, &x, &y);
    vexo_matrix_unify(nullptr);
    if (vexo_corr_set_neutral(table) != VEXO_OK || table[64].x != 32767.5 || x != 2.0 || y != 3.0) {
        std::fprintf(stderr, "header_cxx: unexpected result\n");
        return 1;
    }
    return 0;
}
