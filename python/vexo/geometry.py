# SPDX-License-Identifier: MIT
"""Figures, marking geometry and 4x4 matrices on numpy arrays.

Polylines go in and come out as lists of (n, 3) float arrays (an (n, 2)
array gets z 0); a one-point polyline is a dot.  Every array the library
returns is copied into numpy and freed before the function returns.
"""
import ctypes

import numpy as np

from . import _records as r
from ._lib import ERROR_NO_RESULT, OK, VexoError, check, lib
from ._points import (PointBuffer, as_xyz, pointer, polylines_from_records,
                      records_from_polylines, single_point)

HATCH_BIDIRECTIONAL = 0x01
HATCH_CONNECT = 0x02
HATCH_CONTOUR_BEFORE = 0x04
HATCH_CONTOUR_AFTER = 0x08
MERGE_ORDER = 0x01
ORDER_ROTATE_CLOSED = 0x02
ORDER_KEEP_DIRECTION = 0x04
CLOSE_SNAP = 0x01
CLOSE_DROP_DEGENERATE = 0x02
SLICE_LEFT = 0x01
SLICE_RIGHT = 0x02
PART_OUTSIDE = 0x01
BAND_X = 0
BAND_Y = 1
PATTERN_2D = 0x01
PATTERN_FIT = 0x02
PATTERN_RING = 0x04
DOT_REVERSE = 0x01
DOT_OUTWARD = 0x02


def _xyz_of(buffer):
    records = buffer.records()
    return np.column_stack([records["x"], records["y"], records["z"]])


def circle(radius, centre=(0.0, 0.0, 0.0), start=0.0, end=360.0, steps=64):
    """Points of an arc around centre, angles in degrees from +Y towards +X.

    A full circle ends with a copy of its first point.  Returns (n, 3).
    """
    count = ctypes.c_uint32(0)
    result = lib.vexo_geom_create_circle(float(radius), ctypes.byref(single_point(centre)),
                                         float(start), float(end), int(steps),
                                         ctypes.byref(count))
    with PointBuffer.returned(result, count.value) as buffer:
        if not buffer.address:
            raise VexoError(ERROR_NO_RESULT, "circle gives no point")
        return _xyz_of(buffer)


def spiral(inner, outer, pitch, centre=(0.0, 0.0, 0.0), start=0.0, steps=64,
           reverse=False, outward=False):
    """Points of a spiral from outer to inner radius (outward: the other way).

    Runs clockwise unless reverse.  Returns (n, 3).
    """
    count = ctypes.c_uint32(0)
    result = lib.vexo_geom_create_spiral(float(inner), float(outer),
                                         ctypes.byref(single_point(centre)), float(start),
                                         float(pitch), int(steps), 1 if reverse else 0,
                                         1 if outward else 0, ctypes.byref(count))
    with PointBuffer.returned(result, count.value) as buffer:
        if not buffer.address:
            raise VexoError(ERROR_NO_RESULT, "spiral gives no point")
        return _xyz_of(buffer)


def _new_polylines(call, *args):
    """Run a call of the form f(..., uint32 *out_count, uint32 *status)."""
    count = ctypes.c_uint32(0)
    status = ctypes.c_uint32(OK)
    result = call(*args, ctypes.byref(count), ctypes.byref(status))
    with PointBuffer.returned(result, count.value) as buffer:
        if status.value == ERROR_NO_RESULT:
            return []
        check(status.value)
        return polylines_from_records(buffer.records())


def hatch(rings, spacing, angle=0.0, inset=0.0, passes=1, angle_step=90.0,
          start_trim=0.0, end_trim=0.0, min_length=0.0, origin=(0.0, 0.0),
          bidirectional=False, connect_distance=None, contour_before=False,
          contour_after=False):
    """Fill the even-odd region of rings with hatch lines `spacing` apart.

    connect_distance joins neighbouring lines into one polyline when the
    connector is at most that long (implies bidirectional).  Returns the
    hatch (and contour) polylines; an empty list when nothing is covered.
    """
    records = records_from_polylines(rings)
    options = 0
    if bidirectional or connect_distance is not None:
        options |= HATCH_BIDIRECTIONAL
    if connect_distance is not None:
        options |= HATCH_CONNECT
    if contour_before:
        options |= HATCH_CONTOUR_BEFORE
    if contour_after:
        options |= HATCH_CONTOUR_AFTER
    params = r.VexoHatch(spacing=float(spacing), angle=float(angle), inset=float(inset),
                         start_trim=float(start_trim), end_trim=float(end_trim),
                         min_length=float(min_length), origin_x=float(origin[0]),
                         origin_y=float(origin[1]),
                         connect_distance=float(connect_distance or 0.0),
                         angle_step=float(angle_step), passes=int(passes), options=options)
    return _new_polylines(lib.vexo_geom_cover, pointer(records), len(records),
                          ctypes.byref(params))


def merge_lines(polylines, tolerance, order=False, start=None):
    """Join polylines whose ends lie within tolerance (2D) into longer ones."""
    records = records_from_polylines(polylines)
    begin = ctypes.byref(single_point(start)) if start is not None else None
    return _new_polylines(lib.vexo_geom_merge_lines, pointer(records), len(records),
                          float(tolerance), MERGE_ORDER if order else 0, begin)


def order_lines(polylines, start=None, rotate_closed=False, keep_direction=False):
    """Reorder (and reverse) polylines to shorten the jumps between them."""
    records = records_from_polylines(polylines)
    options = (ORDER_ROTATE_CLOSED if rotate_closed else 0) | \
        (ORDER_KEEP_DIRECTION if keep_direction else 0)
    begin = ctypes.byref(single_point(start)) if start is not None else None
    return _new_polylines(lib.vexo_geom_order_lines, pointer(records), len(records), options,
                          begin)


def slice_line(polylines, a, b, left=True, right=True):
    """Cut polylines at the infinite line a->b, keeping the sides asked for."""
    records = records_from_polylines(polylines)
    line = (ctypes.c_double * 4)(float(a[0]), float(a[1]), float(b[0]), float(b[1]))
    options = (SLICE_LEFT if left else 0) | (SLICE_RIGHT if right else 0)
    return _new_polylines(lib.vexo_geom_slice_line, pointer(records), len(records), line,
                          options)


def inner_part(polylines, rings, outside=False):
    """The parts of polylines inside (or outside) the even-odd region of rings."""
    records = records_from_polylines(polylines)
    ring_records = records_from_polylines(rings)
    return _new_polylines(lib.vexo_geom_inner_part, pointer(records), len(records),
                          pointer(ring_records), len(ring_records),
                          PART_OUTSIDE if outside else 0)


def inner_part_rect(polylines, left, top, right, bottom):
    """The parts of polylines inside a rectangle (bounds inclusive).

    y grows upwards: top is the larger y, bottom the smaller.
    """
    records = records_from_polylines(polylines)
    rect = (ctypes.c_double * 6)(float(left), float(top), 0.0, float(right), float(bottom), 0.0)
    return _new_polylines(lib.vexo_geom_inner_part_rect, pointer(records), len(records), rect)


def slice_band(polylines, band, width, origin=0.0, overlap=0.0, axis="x"):
    """The parts of polylines inside band number `band` along axis "x" or "y".

    Band k covers [origin + k*width - overlap, origin + (k+1)*width + overlap].
    """
    if axis not in ("x", "y"):
        raise ValueError(f"axis must be 'x' or 'y', got {axis!r}")
    records = records_from_polylines(polylines)
    return _new_polylines(lib.vexo_geom_slice_band, pointer(records), len(records),
                          BAND_X if axis == "x" else BAND_Y, float(origin), float(width),
                          float(overlap), int(band))


def _thousandths(value, what):
    scaled = round(float(value) * 1000.0)
    if not 0 <= scaled <= 0xFFFFFFFF:
        raise ValueError(f"{what} {value} is out of range")
    return scaled


def dot_shape(radius, steps=24, spiral=False, inner_radius=0.0, pitch=0.0, reverse=False,
              outward=False):
    """How a dot is drawn: a circle, or a spiral from radius to inner_radius.

    Sizes are in coordinate units (kept to thousandths); steps are points
    per revolution.
    """
    options = (DOT_REVERSE if reverse else 0) | (DOT_OUTWARD if outward else 0)
    return r.GeomDotShape(kind=1 if spiral else 0, options=options, steps=int(steps),
                          radius=_thousandths(radius, "radius"),
                          inner_radius=_thousandths(inner_radius, "inner_radius"),
                          pitch=_thousandths(pitch, "pitch"))


def _pattern_options(fit, ring, flat):
    return (PATTERN_FIT if fit else 0) | (PATTERN_RING if ring else 0) | \
        (PATTERN_2D if flat else 0)


def dots(polylines, pitch, phase=0.0, fit=False, ring=False, flat=False, shape=None):
    """Dots every `pitch` along each polyline, the first at arc length `phase`.

    Each dot is a one-point polyline, or the figure of `shape` (dot_shape)
    drawn there.  fit stretches the pitch to whole periods per polyline;
    ring gives a closed polyline one dot at its seam; flat measures in x
    and y only.
    """
    records = records_from_polylines(polylines)
    figure = ctypes.byref(shape) if shape is not None else None
    return _new_polylines(lib.vexo_line_to_pattern, pointer(records), len(records),
                          float(pitch), float(phase), _pattern_options(fit, ring, flat),
                          shape is not None, figure)


def dashes(polylines, lengths, offset=0.0, fit=False, ring=False, flat=False):
    """Dashes along each polyline: lengths on, off, on, ... (an odd count repeats).

    Every "on" stretch becomes a polyline; a zero "on" entry is a dot.
    """
    values = [float(v) for v in lengths]
    if not 1 <= len(values) <= r.DASH_MAX:
        raise ValueError(f"a dash pattern has 1..{r.DASH_MAX} entries, got {len(values)}")
    dash = r.VexoDash(count=len(values), options=_pattern_options(fit, ring, flat),
                      offset=float(offset))
    dash.lengths[:len(values)] = values
    records = records_from_polylines(polylines)
    return _new_polylines(lib.vexo_line_to_pattern3, pointer(records), len(records),
                          ctypes.byref(dash))


def _in_place(records, call):
    """Run a call that works on the records in place and may shrink them."""
    count = ctypes.c_uint32(len(records))
    call(pointer(records), ctypes.byref(count))
    return polylines_from_records(records[:count.value])


def reduce(polylines, min_dist, flat=False):
    """Drop points closer than min_dist to their predecessor (line ends stay)."""
    records = records_from_polylines(polylines)
    function = lib.vexo_geom_reduce_2d if flat else lib.vexo_geom_reduce
    return _in_place(records, lambda p, n: function(p, n, float(min_dist)))


def smoothen(polylines, max_dist, flat=False):
    """Average inner points with neighbours closer than max_dist (one pass)."""
    records = records_from_polylines(polylines)
    function = lib.vexo_geom_smoothen_2d if flat else lib.vexo_geom_smoothen
    status = ctypes.c_uint32(OK)
    function(pointer(records), len(records), float(max_dist), ctypes.byref(status))
    check(status.value)
    return polylines_from_records(records)


def close_polygons(polylines, tolerance, snap=False, drop_degenerate=False):
    """Close polylines whose last point lies within tolerance of their first.

    The library may move or free the array it is given; the package hands
    it a copy of its own and owns whatever comes back.
    """
    records = records_from_polylines(polylines)
    options = (CLOSE_SNAP if snap else 0) | (CLOSE_DROP_DEGENERATE if drop_degenerate else 0)
    with PointBuffer.copy_of(records) as buffer:
        count = ctypes.c_uint32(buffer.count)
        status = ctypes.c_uint32(OK)
        result = lib.vexo_geom_close_polygons(buffer.give(), ctypes.byref(count),
                                              float(tolerance), options, ctypes.byref(status))
        buffer.adopt(result, count.value)
        if status.value == ERROR_NO_RESULT:
            return []
        check(status.value)
        return polylines_from_records(buffer.records())


def point_in_polygon(point, polygon):
    """True when point lies inside polygon (crossing number, closed implicitly)."""
    ring = records_from_polylines([as_xyz(polygon, "polygon")])
    return lib.vexo_geom_point_in_polygon(ctypes.byref(single_point(point)), pointer(ring),
                                          len(ring)) == 1


# --- matrices -------------------------------------------------------------

def _matrix(m):
    array = np.asarray(m, dtype=np.float64)
    if array.shape != (4, 4):
        raise ValueError(f"a matrix has shape (4, 4), got {array.shape}")
    record = r.GeomMatrix()
    record.m[:] = array.ravel().tolist()
    return record


def _array(record):
    return np.array(record.m[:], dtype=np.float64).reshape(4, 4)


def identity():
    """The 4x4 identity (row-major, points are column vectors)."""
    record = r.GeomMatrix()
    lib.vexo_matrix_unify(ctypes.byref(record))
    return _array(record)


def translate(m, dx, dy, dz=0.0):
    """m followed by a translation (a new array)."""
    record = _matrix(m)
    lib.vexo_matrix_translate(ctypes.byref(record), float(dx), float(dy), float(dz))
    return _array(record)


def scale(m, sx, sy, sz=1.0):
    """m followed by a scaling about the origin."""
    record = _matrix(m)
    lib.vexo_matrix_scale(ctypes.byref(record), float(sx), float(sy), float(sz))
    return _array(record)


def rotate(m, ax=0.0, ay=0.0, az=0.0, centre=None):
    """m followed by rotations (degrees) about X, Y, Z through centre.

    A positive angle turns clockwise looking down the axis.
    """
    record = _matrix(m)
    about = None if centre is None else (ctypes.c_double * 3)(*as_xyz([centre])[0])
    lib.vexo_matrix_rotate(ctypes.byref(record), about, float(ax), float(ay), float(az))
    return _array(record)


def rotate_axis(m, axis, angle):
    """m followed by a rotation of `angle` degrees about `axis`."""
    record = _matrix(m)
    vector = (ctypes.c_double * 3)(*as_xyz([axis])[0])
    check(lib.vexo_matrix_rotate_vector3d(ctypes.byref(record), vector, float(angle)))
    return _array(record)


def multiply(a, b):
    """The product a @ b as the library computes it."""
    left, right = _matrix(a), _matrix(b)
    lib.vexo_matrix_multiply_matrix(ctypes.byref(left), ctypes.byref(right))
    return _array(right)


def invert(m):
    """The inverse of m; a singular matrix comes back unchanged."""
    record = _matrix(m)
    lib.vexo_matrix_invert(ctypes.byref(record))
    return _array(record)


def transform(m, points):
    """Points (n, 2) or (n, 3) through m, as the library multiplies them."""
    record = _matrix(m)
    xyz = as_xyz(points)
    out = np.empty_like(xyz)
    src, dst = r.GeomPoint(), r.GeomPoint()
    for index, (x, y, z) in enumerate(xyz):
        src.x, src.y, src.z = x, y, z
        lib.vexo_matrix_multiply_point(ctypes.byref(record), ctypes.byref(src),
                                       ctypes.byref(dst))
        out[index] = (dst.x, dst.y, dst.z)
    return out
