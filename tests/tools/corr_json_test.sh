#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# --json outputs, parsed by a JSON parser and compared with values the test
# computes itself.
source "$(dirname "$0")/tool_lib.sh"

# A kxo file written here, apart from the tool: the neutral grid with node
# (row 10, column 20) moved by (+7.25, -3, +2).
write_moved_kxo() {
    python3 - "$1" <<'PY'
import struct, sys
def enc(w):
    v = (w + 32767.5) * 30000.0
    return int(v + 0.5) if v >= 0 else -int(-v + 0.5)
neutral = lambda i: (i - 32) * 0.015625 * 65535.0
planes = [[], [], []]
for c in range(65):
    for r in range(65):
        x, y, z = neutral(c), neutral(r), 0.0
        if (r, c) == (10, 20):
            x, y, z = x + 7.25, y - 3.0, z + 2.0
        for p, w in zip(planes, (x, y, z)):
            p.append(enc(w))
head = struct.pack(">HHB3xI", 1, 12, 0x5A, 0xCAFE0001)
data = b"".join(struct.pack(">4225i", *p) for p in planes)
open(sys.argv[1], "wb").write(head + data)
PY
}

case_info_json_kxo() {
    write_moved_kxo moved.kxo
    run "$vexo" corr info moved.kxo --json
    expect_rc 0
    json_check '
assert d["format"] == "kxo" and d["format_number"] == 5, d
assert d["header"] == {"version": 1, "header_size": 12, "tag": 0x5A, "value": 0xCAFE0001}, d["header"]
assert abs(d["deviation"]["max_units"] - (7.25**2 + 9) ** 0.5) < 1e-4, d["deviation"]
assert d["deviation"]["worst"] == {"row": 10, "column": 20}, d["deviation"]
assert abs(d["z"]["max"] - 2.0) < 1e-4, d["z"]
assert d["monotonic"] == {"rows": True, "columns": True}, d["monotonic"]'
}

case_info_json_ctb_has_no_z() {
    "$vexo" -q corr neutral n.ctb
    run "$vexo" corr info n.ctb --json
    expect_rc 0
    json_check '
assert d["z"] is None, d["z"]
assert d["format"] == "ctb", d["format"]
assert "header" not in d, d'
}

case_info_json_cor_scale_in_mm() {
    "$vexo" -q corr sample s.cor --field 100
    run "$vexo" corr info s.cor --json
    expect_rc 0
    json_check '
assert abs(d["scale"]["units_per_mm"] - 655.36) < 1e-9, d["scale"]
assert abs(d["deviation"]["max_mm"] - d["deviation"]["max_units"] / 655.36) < 1e-9, d["deviation"]'
}

case_diff_json_worst_node() {
    write_moved_kxo moved.kxo
    "$vexo" -q corr neutral n.kxo
    run "$vexo" corr diff n.kxo moved.kxo --json
    expect_rc 0
    json_check '
w = d["worst"]
assert (w["row"], w["column"]) == (10, 20), w
assert abs(w["dx"] - 7.25) < 1e-4 and abs(w["dy"] + 3) < 1e-4 and abs(w["dz"] - 2) < 1e-4, w
assert d["z_compared"] is True, d
assert abs(d["max_units"] - (7.25**2 + 9 + 4) ** 0.5) < 1e-4, d'
}

case_diff_tolerance_exceeded_exits_1() {
    write_moved_kxo moved.kxo
    "$vexo" -q corr neutral n.kxo
    run "$vexo" corr diff n.kxo moved.kxo --tolerance 8
    expect_rc 1
    expect_err "exceeds the tolerance 8.0000"
    expect_out "at node (row 10, column 20): dx 7.2500, dy -3.0000, dz 2.0000"
}

case_diff_within_tolerance_exits_0() {
    write_moved_kxo moved.kxo
    "$vexo" -q corr neutral n.kxo
    run "$vexo" corr diff n.kxo moved.kxo --tolerance 8.2 --json
    expect_rc 0
    json_check 'assert d["within"] is True and d["tolerance"] == 8.2, d'
}

case_diff_z_ignored_without_z() {
    write_moved_kxo moved.kxo
    "$vexo" -q corr neutral n.ctb
    run "$vexo" corr diff n.ctb moved.kxo --json
    expect_rc 0
    json_check 'assert d["z_compared"] is False and d["worst"]["dz"] == 0, d'
}

case_formats_json_matrix() {
    run "$vexo" corr formats --json
    expect_rc 0
    json_check '
names = [f["name"] for f in d]
assert sorted(names) == sorted(["ucf","ctb","ct5","gcd","kxo","xml","txt","crt","cor","fcr","scor"]), names
assert sorted(f["name"] for f in d if f["write"]) == ["cor", "ctb", "kxo"], d
assert all(f["read"] for f in d), d
assert sorted(f["number"] for f in d) == list(range(1, 12)), d'
}

case_formats_table() {
    run "$vexo" corr formats
    expect_rc 0
    expect_out "^kxo     5  yes  yes"
    expect_out "^xml     6  yes  no"
}

run_case
