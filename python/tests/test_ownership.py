# SPDX-License-Identifier: MIT
"""Arrays the library hands back are freed exactly once, whatever fails.

Run under the ASan build (see python/README.md) a double free aborts the
run; here the package's releases are counted, and the C heap in use is
measured around many calls to catch leaks.
"""
import ctypes

import numpy as np
import pytest

import vexo
import vexo.geometry
from vexo._points import PointBuffer, records_from_polylines

SQUARE = np.array([(0.0, 0.0), (10.0, 0.0), (10.0, 10.0), (0.0, 10.0)])
OPEN_RING = np.array([(0.0, 0.0), (10.0, 0.0), (10.0, 10.0), (0.0, 0.01)])
TWO_POINTS = np.array([(0.0, 0.0), (1.0, 0.0)])


class _MallInfo2(ctypes.Structure):
    _fields_ = [(name, ctypes.c_size_t) for name in
                ("arena", "ordblks", "smblks", "hblks", "hblkhd", "usmblks", "fsmblks",
                 "uordblks", "fordblks", "keepcost")]


def heap_in_use():
    """Bytes malloc has handed out and not had back (glibc), or None."""
    libc = ctypes.CDLL(None)
    try:
        mallinfo2 = libc.mallinfo2
    except AttributeError:
        return None
    mallinfo2.restype = _MallInfo2
    info = mallinfo2()
    return info.uordblks + info.hblkhd or None


def test_buffer_released_once_however_often_asked(release_log):
    buffer = PointBuffer.copy_of(records_from_polylines([SQUARE]))
    address = buffer.address
    buffer.release()
    buffer.release()
    del buffer
    assert release_log == [address]


@pytest.mark.parametrize("call", [lambda: vexo.circle(3.0, steps=16),
                                  lambda: vexo.close_polygons([OPEN_RING], 0.1)],
                         ids=["circle", "close_polygons"])
def test_returned_array_released_once(release_log, call):
    call()
    assert len(release_log) == 1, release_log


def test_returned_array_released_when_conversion_fails(release_log, monkeypatch):
    def failing(records):
        raise RuntimeError("conversion failed")

    monkeypatch.setattr(vexo.geometry, "polylines_from_records", failing)
    with pytest.raises(RuntimeError):
        vexo.hatch([SQUARE], 1.0)
    assert len(release_log) == 1, release_log


def test_failed_call_returning_null_releases_nothing(release_log):
    with pytest.raises(vexo.VexoError):
        vexo.hatch([SQUARE], -1.0)
    assert release_log == []


def test_close_polygons_freed_input_is_not_released_again(release_log):
    # Every polyline is degenerate: the library frees the array it was
    # given and returns NULL; the package must not free it a second time.
    result = vexo.close_polygons([TWO_POINTS, TWO_POINTS + 5.0], 0.1, drop_degenerate=True)
    assert (result, release_log) == ([], [])


def test_close_polygons_refused_input_is_released_once(release_log):
    # A refused argument gives the array back untouched: it is still the
    # package's to free, once.
    with pytest.raises(vexo.VexoError) as error:
        vexo.close_polygons([OPEN_RING], float("nan"))
    assert (error.value.status, len(release_log)) == (16, 1)


def _repeat_heap_growth(call, times=300):
    call()  # first call: lazily made library state is not a leak
    before = heap_in_use()
    if before is None:
        pytest.skip("no mallinfo2 (not glibc, or a sanitizer's allocator)")
    for _ in range(times):
        call()
    return heap_in_use() - before


def _quietly(call):
    def run():
        try:
            call()
        except vexo.VexoError:
            pass
    return run


@pytest.mark.parametrize("name,call", [
    ("close_freed", lambda: vexo.close_polygons([TWO_POINTS], 0.1, drop_degenerate=True)),
    ("close_ok", lambda: vexo.close_polygons([OPEN_RING], 0.1)),
    ("close_bad", _quietly(lambda: vexo.close_polygons([OPEN_RING], float("nan")))),
    ("hatch", lambda: vexo.hatch([SQUARE], 0.5)),
    ("union", lambda: vexo.union([SQUARE], [SQUARE + 5.0])),
    ("union_bad", _quietly(lambda: vexo.union([SQUARE], [SQUARE * 1e300]))),
    ("outline_bad", _quietly(lambda: vexo.outline([SQUARE], float("nan")))),
    ("load_bad", _quietly(lambda: vexo.CorrTable.load("/nonexistent/x.kxo"))),
])
def test_repeated_calls_do_not_grow_the_heap(name, call):
    # 300 leaked arrays of even 4 points would hold 38 KiB.
    growth = _repeat_heap_growth(call)
    assert growth < 16 * 1024, f"{name}: heap grew by {growth} bytes"


def test_ctb_trailer_of_a_load_is_released(corpus):
    path = corpus / "corr_ucf/ctb"
    growth = _repeat_heap_growth(lambda: vexo.CorrTable.load(path, "ctb"))
    assert growth < 16 * 1024, f"heap grew by {growth} bytes"
