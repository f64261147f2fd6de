# SPDX-License-Identifier: MIT
# Shared by the vexo tool's test scripts: each script defines functions
# case_NAME, and CTest runs one case per test as
#   bash SCRIPT VEXO CASE
# in a scratch folder of its own.  A case fails on the first check that does
# not hold, printing what was expected and what came.
set -u
vexo=$1
case_name=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

fail() {
    echo "FAIL ($case_name): $*"
    exit 1
}
skip() {
    echo "SKIP ($case_name): $*"
    exit 77
}

# run CMD...: runs it with stdout in ./out and stderr in ./err; $rc holds
# the exit status.
run() {
    "$@" >out 2>err
    rc=$?
}
expect_rc() {
    [ "$rc" -eq "$1" ] || fail "exit status $rc, expected $1; stderr: $(cat err); stdout: $(head -c 400 out)"
}
expect_err() {
    grep -q -- "$1" err || fail "stderr lacks '$1': $(cat err)"
}
expect_out() {
    grep -q -- "$1" out || fail "stdout lacks '$1': $(head -c 2000 out)"
}
expect_no_err() {
    [ ! -s err ] || fail "stderr not empty: $(cat err)"
}
# json_check PYTHON: runs PYTHON with `d` the JSON document on stdout;
# the code asserts (assert x == y, (x, y)).
json_check() {
    python3 - "$1" <<'PY' || fail "JSON check failed: $1; stdout: $(head -c 2000 out)"
import json, sys
d = json.load(open("out"))
exec(sys.argv[1])
PY
}
same_file() {
    cmp -s "$1" "$2" || fail "$1 and $2 differ"
}

run_case() {
    declare -F "case_$case_name" >/dev/null || fail "no such case"
    "case_$case_name"
    echo "PASS ($case_name)"
}
