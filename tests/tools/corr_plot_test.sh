#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The plot, decoded: its size, the axes' frame, different pixels for a
# distorted and a neutral table, a colour bar only when z varies, SVG.
source "$(dirname "$0")/tool_lib.sh"

case_png_size_and_frame() {
    "$vexo" -q corr sample s.kxo
    run "$vexo" corr plot s.kxo s.png --size 400
    expect_rc 0
    # The frame: at least two long dark columns and two long dark rows.
    png_check s.png '
assert (w, h) == (400, 400), (w, h)
cols = [x for x in range(w) if sum(dark(x, y) for y in range(h)) > h // 2]
rows = [y for y in range(h) if sum(dark(x, y) for x in range(w)) > w // 2]
assert len(cols) >= 2 and cols[-1] - cols[0] > w // 2, cols
assert len(rows) >= 2 and rows[-1] - rows[0] > h // 2, rows'
}

case_distorted_and_neutral_differ() {
    "$vexo" -q corr sample s.kxo
    "$vexo" -q corr neutral n.kxo
    "$vexo" -q corr plot s.kxo s.png --size 300 --exaggerate 1
    "$vexo" -q corr plot n.kxo n.png --size 300 --exaggerate 1
    python3 - <<'PY' || fail "plots of distorted and neutral tables are alike"
import zlib, struct
def idat(p):
    d = open(p, "rb").read()
    return d
a, b = idat("s.png"), idat("n.png")
assert a != b
PY
    # The neutral picture has no red arrows; the distorted one has many.
    png_check n.png 'assert sum(px(x, y)[0] > 150 and px(x, y)[1] < 80 for x in range(w) for y in range(h)) == 0'
    png_check s.png 'assert sum(px(x, y)[0] > 150 and px(x, y)[1] < 80 for x in range(w) for y in range(h)) > 100'
}

case_colour_bar_only_when_z_varies() {
    "$vexo" -q corr sample s.kxo
    "$vexo" -q corr neutral n.kxo
    "$vexo" -q corr plot s.kxo s.png --size 300
    "$vexo" -q corr plot n.kxo n.png --size 300
    # The colour bar stands in the rightmost sixth of the picture and is the
    # only place with the ramp's yellow end beside the z dots.
    png_check s.png 'assert sum(yellow(x, y) for x in range(5 * w // 6, w) for y in range(h)) > 100'
    png_check n.png 'assert sum(yellow(x, y) for x in range(w) for y in range(h)) == 0'
}

case_near_neutral_not_exaggerated() {
    "$vexo" -q corr neutral n.ctb
    run "$vexo" corr plot n.ctb n.png --size 300
    expect_rc 0
    expect_out "x1)"
}

case_exaggeration_capped() {
    "$vexo" -q corr neutral n.kxo
    "$vexo" -q corr convert n.kxo small.kxo --adjust 0,0,40,0,2,3
    run "$vexo" corr plot small.kxo small.png --size 300
    expect_rc 0
    expect_out "x100)"
}

case_heat_map_png() {
    "$vexo" -q corr sample s.cor
    run "$vexo" corr plot s.cor heat.png --style heat --size 300
    expect_rc 0
    png_check heat.png 'assert sum(coloured(x, y) for x in range(w) for y in range(h)) > w * h // 4'
}

case_svg_is_xml_of_the_size() {
    "$vexo" -q corr sample s.kxo
    run "$vexo" corr plot s.kxo s.svg --size 500
    expect_rc 0
    python3 - <<'PY' || fail "not an SVG of 500 x 500"
import xml.etree.ElementTree as ET
root = ET.parse("s.svg").getroot()
assert root.tag.endswith("svg"), root.tag
assert root.get("width").startswith("500") and root.get("height").startswith("500"), root.attrib
PY
}

case_picture_name_checked() {
    "$vexo" -q corr neutral n.kxo
    run "$vexo" corr plot n.kxo n.jpg
    expect_rc 2
    expect_err "n.jpg: the picture must be named .png or .svg"
}

case_plot_to_missing_folder() {
    "$vexo" -q corr neutral n.kxo
    run "$vexo" corr plot n.kxo nowhere/n.png
    expect_rc 1
    expect_err "folder 'nowhere' does not exist"
}

run_case
