#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The parser: help, exit codes (0 success, 1 failure, 2 usage), option
# values checked before any work, "--", unknown words named.
source "$(dirname "$0")/tool_lib.sh"

case_group_help_exits_0() {
    run "$vexo" corr --help
    expect_rc 0
    expect_out "Usage: vexo corr"
    expect_out "convert"
    expect_out "formats"
}

case_command_help_shows_units_and_defaults() {
    run "$vexo" corr sample --help
    expect_rc 0
    expect_out "field size in mm"
    expect_out "=110"
}

case_help_after_arguments_exits_0() {
    run "$vexo" corr info whatever.kxo -h
    expect_rc 0
    expect_out "Usage: vexo corr info"
}

case_no_command_is_usage() {
    run "$vexo" corr
    expect_rc 2
    expect_err "a command is needed"
}

case_unknown_command_named() {
    run "$vexo" corr frobnicate
    expect_rc 2
    expect_err "unknown command 'frobnicate'"
}

case_unknown_option_named_not_missing_file() {
    run "$vexo" corr info --bogus x.kxo
    expect_rc 2
    expect_err "\-\-bogus"
    grep -q "missing" err && fail "reported as missing: $(cat err)"
    true
}

case_scale_nan_refused() {
    "$vexo" -q corr sample s.kxo
    run "$vexo" corr convert s.kxo o.kxo --scale nan
    expect_rc 2
    expect_err "\-\-scale: nan is outside 0.01 .. 10"
    [ ! -e o.kxo ] || fail "o.kxo written"
}

case_scale_negative_refused() {
    "$vexo" -q corr sample s.kxo
    run "$vexo" corr convert s.kxo o.kxo --scale -1
    expect_rc 2
    expect_err "\-\-scale: -1 is outside"
}

case_scale_huge_refused() {
    "$vexo" -q corr sample s.kxo
    run "$vexo" corr convert s.kxo o.kxo --scale 1e300
    expect_rc 2
    expect_err "\-\-scale: 1e300 is outside"
}

case_focal_negative_refused() {
    "$vexo" -q corr sample s.kxo
    run "$vexo" corr convert s.kxo o.kxo --focal -5 110 110
    expect_rc 2
    expect_err "\-\-focal FOCAL: -5 is outside"
}

case_field_negative_refused() {
    "$vexo" -q corr sample s.kxo
    run "$vexo" corr convert s.kxo o.cor --field -110
    expect_rc 2
    expect_err "\-\-field: -110 is outside 0.1 .. 10000"
}

case_sample_pincushion_refused() {
    run "$vexo" corr sample p.kxo --pincushion 5
    expect_rc 2
    expect_err "\-\-pincushion: 5 is outside"
    [ ! -e p.kxo ] || fail "p.kxo written"
}

case_format_by_name_or_number() {
    "$vexo" -q corr neutral n.ctb
    run "$vexo" corr info n.ctb --format ctb
    expect_rc 0
    run "$vexo" corr info n.ctb --format 2
    expect_rc 0
    expect_out "format:     ctb (2), as given by --format"
}

case_unknown_format_lists_names() {
    "$vexo" -q corr neutral n.kxo
    run "$vexo" corr info n.kxo --format 12
    expect_rc 2
    expect_err "unknown format '12' (one of ucf, ctb"
}

case_double_dash_ends_options() {
    "$vexo" -q corr neutral ./-h.kxo
    run "$vexo" corr info -- -h.kxo
    expect_rc 0
    expect_out "file:       -h.kxo"
}

case_missing_file_is_failure() {
    run "$vexo" corr info nothere.kxo
    expect_rc 1
    expect_err "nothere.kxo: cannot open: No such file"
}

case_adjustments_apply_in_order() {
    "$vexo" -q corr neutral n.kxo
    # Scaling then adjusting differs from adjusting then scaling.
    "$vexo" -q corr convert n.kxo a.kxo --scale 0.9 --adjust 100,100,2000,2500,4,3
    "$vexo" -q corr convert n.kxo b.kxo --adjust 100,100,2000,2500,4,3 --scale 0.9
    run "$vexo" corr diff a.kxo b.kxo --tolerance 1
    expect_rc 1
}

case_three_value_adjustment_runs() {
    "$vexo" -q corr sample s.kxo
    run "$vexo" corr convert s.kxo f.kxo --scale 0.98 --focal 163 110 110
    expect_rc 0
    run "$vexo" corr diff s.kxo f.kxo --tolerance 1
    expect_rc 1
}

case_two_value_adjustments_repeat_in_order() {
    "$vexo" -q corr neutral n.kxo
    # Each --spatial occurrence is one adjustment of its own two values.
    "$vexo" -q corr convert n.kxo a.kxo --spatial 0 1.2 --spatial 1 0.8
    "$vexo" -q corr convert n.kxo b.kxo --spatial 1 0.8 --spatial 0 1.2
    "$vexo" -q corr convert n.kxo c.kxo --spatial 0 1.2
    run "$vexo" corr diff a.kxo c.kxo --tolerance 1
    expect_rc 1
    run "$vexo" corr diff a.kxo b.kxo --tolerance 1
    expect_rc 1
}

case_version() {
    run "$vexo" --version
    expect_rc 0
    expect_out "^vexo [0-9]"
}

run_case
