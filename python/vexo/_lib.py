# SPDX-License-Identifier: MIT
"""Finding libvexo, the prototypes of its exports, and the error type."""
import ctypes
import ctypes.util
import os
from pathlib import Path

from . import _records as r
from ._records import c_double, c_int32, c_uint8, c_uint32

P = ctypes.POINTER
c_bool = ctypes.c_bool
c_char_p = ctypes.c_char_p
c_void_p = ctypes.c_void_p

OK = 1
ERROR_NO_RESULT = 5
ERROR_INVALID_PARAMETER = 16
ERROR_NO_MEMORY = 11

LIBRARY_VARIABLE = "VEXO_LIBRARY"


class VexoError(Exception):
    """A libvexo call failed: `status` is its code, `name` the macro name."""

    def __init__(self, status, message=None):
        self.status = int(status)
        self.name = status_name(self.status)
        self.text = status_text(self.status)
        detail = f"{self.name} ({self.status}): {self.text}"
        super().__init__(f"{message}: {detail}" if message else detail)


def _candidates():
    """Where the library is looked for, in order."""
    named = os.environ.get(LIBRARY_VARIABLE)
    if named:
        # An explicit choice is final: falling back silently would test or
        # run against another build than the one asked for.
        return [named]
    here = Path(__file__).resolve().parent
    found = [str(p) for name in ("libvexo.so", "libvexo.so.0", "libvexo.dylib", "vexo.dll")
             for p in [here / name] if p.exists()]
    system = ctypes.util.find_library("vexo")
    if system:
        found.append(system)
    found.append("libvexo.so.0")
    return found


def _load():
    errors = []
    for candidate in _candidates():
        try:
            return ctypes.CDLL(candidate)
        except OSError as error:
            errors.append(f"{candidate}: {error}")
    raise ImportError("libvexo not found (set " + LIBRARY_VARIABLE +
                      " to the path of libvexo.so); tried " + "; ".join(errors))


lib = _load()

# (name, result type, argument types) of every export the package calls.
_PROTOTYPES = [
    ("vexo_util_status_name", c_char_p, [c_uint32]),
    ("vexo_util_status_text", c_char_p, [c_uint32]),
    ("vexo_util_version_string", c_char_p, []),
    ("vexo_util_version_number", c_uint32, []),
    # point buffers
    ("vexo_geom_realloc", P(r.GeomPoint), [P(r.GeomPoint), c_uint32]),
    ("vexo_geom_release", None, [P(r.GeomPoint)]),
    ("vexo_geom_create_circle", P(r.GeomPoint),
     [c_double, P(r.GeomPoint), c_double, c_double, c_uint32, P(c_uint32)]),
    ("vexo_geom_create_spiral", P(r.GeomPoint),
     [c_double, c_double, P(r.GeomPoint), c_double, c_double, c_uint32, c_uint8, c_uint8,
      P(c_uint32)]),
    ("vexo_geom_cover", P(r.GeomPoint),
     [P(r.GeomPoint), c_uint32, P(r.VexoHatch), P(c_uint32), P(c_uint32)]),
    ("vexo_geom_merge_lines", P(r.GeomPoint),
     [P(r.GeomPoint), c_uint32, c_double, c_uint32, P(r.GeomPoint), P(c_uint32), P(c_uint32)]),
    ("vexo_geom_order_lines", P(r.GeomPoint),
     [P(r.GeomPoint), c_uint32, c_uint32, P(r.GeomPoint), P(c_uint32), P(c_uint32)]),
    ("vexo_geom_close_polygons", P(r.GeomPoint),
     [P(r.GeomPoint), P(c_uint32), c_double, c_uint32, P(c_uint32)]),
    ("vexo_geom_slice_line", P(r.GeomPoint),
     [P(r.GeomPoint), c_uint32, P(c_double), c_uint32, P(c_uint32), P(c_uint32)]),
    ("vexo_geom_inner_part", P(r.GeomPoint),
     [P(r.GeomPoint), c_uint32, P(r.GeomPoint), c_uint32, c_uint32, P(c_uint32),
      P(c_uint32)]),
    ("vexo_geom_slice_band", P(r.GeomPoint),
     [P(r.GeomPoint), c_uint32, c_uint32, c_double, c_double, c_double, c_int32, P(c_uint32),
      P(c_uint32)]),
    ("vexo_geom_inner_part_rect", P(r.GeomPoint),
     [P(r.GeomPoint), c_uint32, P(c_double), P(c_uint32), P(c_uint32)]),
    ("vexo_line_to_pattern", P(r.GeomPoint),
     [P(r.GeomPoint), c_uint32, c_double, c_double, c_uint32, c_bool, P(r.GeomDotShape),
      P(c_uint32), P(c_uint32)]),
    ("vexo_line_to_pattern3", P(r.GeomPoint),
     [P(r.GeomPoint), c_uint32, P(r.VexoDash), P(c_uint32), P(c_uint32)]),
    ("vexo_geom_reduce", P(r.GeomPoint), [P(r.GeomPoint), P(c_uint32), c_double]),
    ("vexo_geom_reduce_2d", P(r.GeomPoint), [P(r.GeomPoint), P(c_uint32), c_double]),
    ("vexo_geom_smoothen", P(r.GeomPoint),
     [P(r.GeomPoint), c_uint32, c_double, P(c_uint32)]),
    ("vexo_geom_smoothen_2d", P(r.GeomPoint),
     [P(r.GeomPoint), c_uint32, c_double, P(c_uint32)]),
    ("vexo_geom_point_in_polygon", c_uint32, [P(r.GeomPoint), P(r.GeomPoint), c_int32]),
    # matrices
    ("vexo_matrix_unify", None, [P(r.GeomMatrix)]),
    ("vexo_matrix_multiply_point", None, [P(r.GeomMatrix), P(r.GeomPoint), P(r.GeomPoint)]),
    ("vexo_matrix_multiply_matrix", None, [P(r.GeomMatrix), P(r.GeomMatrix)]),
    ("vexo_matrix_invert", None, [P(r.GeomMatrix)]),
    ("vexo_matrix_translate", None, [P(r.GeomMatrix), c_double, c_double, c_double]),
    ("vexo_matrix_scale", None, [P(r.GeomMatrix), c_double, c_double, c_double]),
    ("vexo_matrix_rotate", None,
     [P(r.GeomMatrix), P(c_double), c_double, c_double, c_double]),
    ("vexo_matrix_rotate_vector3d", c_uint32, [P(r.GeomMatrix), P(c_double), c_double]),
    # clipping
    ("vexo_clip_create", c_void_p, [P(r.GeomPoint), c_uint32, c_uint32]),
    ("vexo_clip_release", None, [c_void_p]),
    ("vexo_clip_bool", c_uint32, [c_void_p, P(r.GeomPoint), c_uint32, c_uint32]),
    ("vexo_clip_outline", c_uint32, [c_void_p, c_uint32, c_double]),
    ("vexo_clip_get_result", P(r.GeomPoint), [c_void_p, P(c_uint32)]),
    ("vexo_clip2_create", c_void_p, [P(r.GeomPoint), c_uint32, c_uint32]),
    ("vexo_clip2_release", None, [c_void_p]),
    ("vexo_clip2_bool", c_uint32, [c_void_p, P(r.GeomPoint), c_uint32, c_uint32]),
    ("vexo_clip2_outline", c_uint32, [c_void_p, c_uint32, c_double]),
    ("vexo_clip2_get_result", P(r.GeomPoint), [c_void_p, P(c_uint32)]),
    # correction tables
    ("vexo_corr_set_neutral", c_uint32, [P(r.CorrTableRecord)]),
    ("vexo_corr_load_ex", c_uint32,
     [P(r.CorrTableRecord), c_char_p, c_uint32, P(r.CorrFileInfo)]),
    ("vexo_corr_save_ex", c_uint32,
     [P(r.CorrTableRecord), c_char_p, c_uint32, P(r.CorrFileInfo)]),
    ("vexo_corr_release_info", None, [P(r.CorrFileInfo)]),
    ("vexo_corr_interpolate", c_uint32,
     [c_uint32, P(r.GeomPoint), P(r.GeomPoint), c_double, P(r.CorrTableRecord)]),
    ("vexo_corr_from_grid", c_uint32,
     [c_uint32, P(r.GeomPoint), P(r.GeomPoint), c_double, P(r.CorrTableRecord),
      P(r.CorrTableRecord)]),
    ("vexo_corr_set_scale", c_uint32, [P(r.CorrTableRecord), c_double]),
    ("vexo_corr_set_focal", c_uint32, [P(r.CorrTableRecord), c_double, c_double, c_double]),
    ("vexo_corr_adjust_single", c_uint32,
     [P(r.CorrTableRecord), P(c_double), P(c_double), c_double, c_int32]),
    ("vexo_corr_set_spatial", c_uint32, [P(r.CorrTableRecord), c_uint8, c_double]),
    ("vexo_corr_set_base", c_uint32, [P(r.CorrTableRecord), P(r.CorrBase), P(c_double)]),
    ("vexo_corr_calc_base_angles", c_uint32,
     [P(r.CorrBase), c_double, c_double, P(c_double), P(c_double)]),
    ("vexo_corr_apply", c_uint32,
     [P(r.CorrTableRecord), P(r.GeomPoint), c_uint32, c_double, c_uint32]),
]

# Vision is left out of builds without OpenCV; its calls are bound only
# when the library has them.
_VISION_PROTOTYPES = [
    ("vexo_calib_gen_correction", P(c_int32),
     [P(r.ImageBlock), c_int32, c_int32, P(r.CalibrationRecord), P(c_int32)]),
    ("vexo_calib_release_correction", None, [P(c_int32)]),
    ("vexo_prcg_gen_keypoints", P(r.PatternKeypoint),
     [P(r.ImageBlock), P(c_int32), P(c_uint32), c_int32, c_int32, c_int32, c_int32]),
    ("vexo_prcg_release_keypoints", None, [P(r.PatternKeypoint)]),
    ("vexo_prcg_create_recogniser", c_void_p,
     [P(r.PatternKeypoint), c_int32, c_uint32, P(r.ImageBlock), c_int32, c_int32]),
    ("vexo_prcg_start_recogniser2", c_uint32,
     [c_void_p, P(r.ImageBlock), c_uint32, P(r.RecognitionReport)]),
    ("vexo_prcg_release_recogniser", None, [c_void_p]),
    ("vexo_prcg_find_dots", P(r.GeomPoint),
     [P(r.ImageBlock), P(r.PrcgDotParams), P(c_uint32), P(c_uint32)]),
    ("vexo_prcg_scale_dots", c_uint32,
     [P(r.GeomPoint), c_uint32, c_double, c_double, P(c_double), c_uint32]),
    ("vexo_prcg_unrotate_dots", c_uint32,
     [P(r.GeomPoint), c_uint32, c_uint32, P(c_double), c_uint32]),
]


def _bind(prototypes, required):
    for name, restype, argtypes in prototypes:
        try:
            function = getattr(lib, name)
        except AttributeError:
            if required:
                raise ImportError(f"libvexo lacks {name}: library older than the package")
            continue
        function.restype = restype
        function.argtypes = argtypes


_bind(_PROTOTYPES, required=True)
_bind(_VISION_PROTOTYPES, required=False)

HAS_VISION = hasattr(lib, "vexo_calib_gen_correction")


def status_name(status):
    """The macro name of a status, e.g. "VEXO_ERROR_OPEN_FILE"."""
    return lib.vexo_util_status_name(int(status) & 0xFFFFFFFF).decode("ascii")


def status_text(status):
    """The library's one-line description of a status."""
    return lib.vexo_util_status_text(int(status) & 0xFFFFFFFF).decode("utf-8", "replace")


def check(status, message=None):
    """Raise VexoError unless status is VEXO_OK."""
    if status != OK:
        raise VexoError(status, message)
