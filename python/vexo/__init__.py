# SPDX-License-Identifier: MIT
"""libvexo from Python: correction tables, geometry and vision on numpy arrays.

The shared library is found through the VEXO_LIBRARY variable (a path), the
package's own folder, then the system's library path.
"""
from . import clipping, corr, geometry, vision
from ._lib import HAS_VISION, VexoError, status_name, status_text
from .clipping import difference, outline, union
from .corr import CorrTable, FileInfo, HeadGeometry
from .geometry import (circle, close_polygons, dashes, dot_shape, dots, hatch, identity,
                       inner_part, inner_part_rect, invert, merge_lines, multiply, order_lines,
                       reduce, rotate, rotate_axis, scale, slice_band, slice_line, smoothen,
                       spiral, transform, translate)
from .vision import (Calibration, Match, Pattern, calibrate_chessboard, find_dots, scale_dots,
                     unrotate_dots)

__version__ = "0.2.0"


def library_version():
    """The loaded library's version string ("major.minor.patch")."""
    from ._lib import lib
    return lib.vexo_util_version_string().decode("ascii")


__all__ = ["CorrTable", "FileInfo", "HeadGeometry", "VexoError", "status_name", "status_text",
           "union", "difference", "outline", "circle", "spiral", "hatch", "merge_lines",
           "order_lines", "slice_line", "slice_band", "inner_part", "inner_part_rect",
           "close_polygons", "dots", "dashes", "dot_shape", "reduce", "smoothen", "identity",
           "translate", "scale", "rotate", "rotate_axis", "multiply", "invert", "transform",
           "calibrate_chessboard", "find_dots", "scale_dots", "unrotate_dots", "Calibration", "Pattern", "Match", "clipping", "corr",
           "geometry", "vision", "HAS_VISION", "library_version"]
