/* SPDX-License-Identifier: MIT */
/*
 * vexo.h - the one public header of libvexo.
 *
 * libvexo gives hosts that drive galvanometer laser-scanner heads a flat C
 * interface to geometry (point arrays, vectors, matrices, lines, curves,
 * polygon clipping), scanner correction tables (eleven foreign file formats,
 * the library's own big-endian "kxo" format, interpolation and adjustments),
 * camera calibration, pattern recognition, a colour pipeline and small
 * runtime-data blobs.
 *
 * Ownership.  The caller owns every record it passes in for the length of the
 * call; the library never keeps a caller pointer after returning, except
 * inside the handles it creates (released with the family's _release).
 * Every buffer the library hands back comes from malloc/realloc and belongs
 * to the caller: free point arrays with vexo_geom_release (or free()).
 * A function that takes a buffer and returns a buffer may move it, as
 * realloc does; when it fails it frees the buffer it was given and returns
 * NULL, unless its comment says otherwise.
 *
 * Status codes.  Functions that report success return a uint32_t status;
 * success is VEXO_OK (1), never 0.  The values are pinned forever.
 *
 * Units.  Coordinates are unit-agnostic (hosts use millimetres); angles
 * passed in are degrees.  Correction tables work in scanner output units
 * centred on 0 (-32767.5 .. +32767.5).
 *
 * Threads.  No call starts a thread or keeps hidden per-thread state.  Calls
 * on distinct records may run concurrently.  The only library-wide state is
 * the header of the last correction load and the colour gamma table; both
 * are guarded internally.
 *
 * Nothing is printed or logged.  No exception ever leaves the library.
 */
#ifndef VEXO_H
#define VEXO_H

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

/* ---------------------------------------------------------------------------
 * Version and export
 * ------------------------------------------------------------------------- */
#define VEXO_VERSION_MAJOR 0
#define VEXO_VERSION_MINOR 2
#define VEXO_VERSION_PATCH 0
#define VEXO_VERSION_NUMBER                                                                        \
    (VEXO_VERSION_MAJOR * 10000 + VEXO_VERSION_MINOR * 100 + VEXO_VERSION_PATCH)

#if defined(_WIN32)
#if defined(VEXO_BUILDING_LIBRARY)
#define VEXO_API __declspec(dllexport)
#elif defined(VEXO_STATIC)
#define VEXO_API
#else
#define VEXO_API __declspec(dllimport)
#endif
#elif defined(__GNUC__) || defined(__clang__)
#define VEXO_API __attribute__((visibility("default")))
#else
#define VEXO_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------
 * Status codes
 * ------------------------------------------------------------------------- */
#define VEXO_OK 1u                       /* success */
#define VEXO_ERROR_NO_RESULT 5u          /* an operation produced no output */
#define VEXO_ERROR_INVALID_DATA 7u       /* file content not understood */
#define VEXO_ERROR_NO_HANDLE 9u          /* handle missing / matching produced nothing */
#define VEXO_ERROR_NO_MEMORY 11u         /* an allocation failed */
#define VEXO_ERROR_INVALID_PARAMETER 16u /* missing pointer, count or argument out of range */
#define VEXO_ERROR_FILE_ACCESS 18u       /* runtime-data file could not be opened */
#define VEXO_ERROR_OPEN_FILE 19u         /* data file could not be opened */
#define VEXO_ERROR_WRITE_FILE 20u        /* fewer bytes written than requested */
#define VEXO_ERROR_READ_FILE 21u         /* file too short or a value unreadable */
#define VEXO_ERROR_NUMERIC 24u           /* a computed distance is not a number */
#define VEXO_ERROR_INVALID_HEADER 25u    /* required header line missing */
#define VEXO_ERROR_UNKNOWN_FORMAT 34u    /* file type not supported */

/* ===========================================================================
 * core: point records
 * ========================================================================= */

/* Flags of GeomPoint.flags. */
#define VEXO_POINT_END 0x01u       /* last point of its polyline; alone: a dot */
#define VEXO_POINT_PROCESSED 0x02u /* consumed/dropped; compacted away */
#define VEXO_POINT_END_MARK 0x04u  /* travels with VEXO_POINT_END */
#define VEXO_POINT_KEEP 0x40u      /* survives into crossings when all ends carry it */

/* One point of a polyline array: 32 bytes.  The 4 trailing bytes are never
 * read; whole-record copies keep them. */
typedef struct GeomPoint {
    double x;
    double y;
    double z;
    uint32_t flags;
    uint32_t reserved;
} GeomPoint;

/* How a dot is drawn as a figure.  radius, inner_radius and pitch are in
 * thousandths of the coordinate unit. */
typedef struct GeomDotShape {
    uint16_t kind;         /* 0 = circle, other = spiral */
    uint16_t unused;       /* not read */
    uint32_t options;      /* VEXO_DOT_REVERSE | VEXO_DOT_OUTWARD */
    uint32_t steps;        /* points per full revolution */
    uint32_t radius;       /* circle radius / spiral outer radius */
    uint32_t inner_radius; /* spiral only */
    uint32_t pitch;        /* spiral only: radial distance per revolution */
} GeomDotShape;

#define VEXO_DOT_REVERSE 0x01u /* reverse the direction of travel */
#define VEXO_DOT_OUTWARD 0x02u /* spiral runs from the inner to the outer radius */

/* Byte offset of the GeomDotShape fields inside the larger parameter record
 * read by the *_dot2 appenders (kind at 258, then 260, 264, 268, 272, 276). */
#define VEXO_DOT_PARAMS_OFFSET 258u
#define VEXO_DOT_PARAMS_SIZE 280u

/* ===========================================================================
 * vector2d / vector3d: vector math on bare double arrays
 * ========================================================================= */

/* Angles passed in are degrees; 2D angles come back in radians, the 3D angle
 * in degrees.  pi and 2pi are the single-precision values (3.1415927410125732,
 * 6.2831854820251465), visible in the last digits of every result.  A NULL
 * vector makes a value function return NaN and an in/out function do
 * nothing. */

/* Divide v (2 doubles) by its length when the length exceeds 1e-7. */
VEXO_API void vexo_vector2d_normalise(double *v);
/* a.y*b.y + a.x*b.x. */
VEXO_API double vexo_vector2d_dotproduct(const double *a, const double *b);
/* The same value as vexo_vector2d_dotproduct. */
VEXO_API double vexo_vector2d_scalar(const double *a, const double *b);
/* sqrt(x*x + y*y). */
VEXO_API double vexo_vector2d_length(const double *v);
/* Cosine of the angle between a and b, unclamped; 0.0 when a length is 0. */
VEXO_API double vexo_vector2d_angle_cos(const double *a, const double *b);
/* Angle between a and b in radians (0..pi); NaN when rounding pushes the
 * cosine outside [-1, 1]. */
VEXO_API double vexo_vector2d_angle(const double *a, const double *b);
/* Directed angle from b to a in radians, 0 <= r < 2pi, measured from +Y
 * towards +X.  Normalises a and b in place. */
VEXO_API double vexo_vector2d_angle_directed(double *a, double *b);
/* The 2D cross product a.x*b.y - a.y*b.x: > 0 when b turns counter-clockwise
 * from a. */
VEXO_API double vexo_vector2d_is_ccw(const double *a, const double *b);

/* out = a x b (3 doubles each); out must not alias a or b. */
VEXO_API void vexo_vector3d_crossproduct(const double *a, const double *b, double *out);
/* Turn v about Z by `angle` degrees, counter-clockwise for positive angles. */
VEXO_API void vexo_vector3d_rotate_z(double *v, double angle);
/* Divide v (3 doubles) by its length when the length exceeds 1e-7. */
VEXO_API void vexo_vector3d_normalise(double *v);
/* sqrt(x*x + y*y + z*z). */
VEXO_API double vexo_vector3d_length(const double *v);
/* Angle between a and b in degrees (NaN for a zero-length vector). */
VEXO_API double vexo_vector3d_angle(const double *a, const double *b);

/* Axis selection bits of vexo_vec_line_to_dot_is_dist. */
#define VEXO_AXIS_X 0x01u
#define VEXO_AXIS_Y 0x02u
#define VEXO_AXIS_Z 0x04u

/* 1 when dot p lies within `tolerance` of segment a-b (3 doubles each),
 * measured over the selected axes by a depth-10 bisection that follows the
 * nearer end (an approximation by design), else 0. */
VEXO_API uint8_t vexo_vec_line_to_dot_is_dist(const double *a, const double *b, const double *p,
                                              double tolerance, uint32_t axes);

/* ===========================================================================
 * matrix: 4x4 affine transformations
 * ========================================================================= */

/* 16 doubles, row-major; points are column vectors, translation in m[3],
 * m[7], m[11].  Builders pre-multiply: a transformation added later is
 * applied after those added earlier.  Angles are degrees, converted with the
 * single-precision 2pi.  A NULL matrix makes the functions here do nothing
 * (vexo_matrix_equal: false; vexo_matrix_rotate_vector3d: 16), except
 * vexo_matrix_multiply_point, which then copies the point. */
typedef struct GeomMatrix {
    double m[16];
} GeomMatrix;

/* New identity matrix (free with vexo_matrix_release), NULL on failure. */
VEXO_API GeomMatrix *vexo_matrix_create(void);
/* Free a matrix from vexo_matrix_create; NULL ignored. */
VEXO_API void vexo_matrix_release(GeomMatrix *m);
/* Set m to identity; NULL ignored. */
VEXO_API void vexo_matrix_unify(GeomMatrix *m);
/* true when all 16 entries compare equal (NaN never equal, +0 == -0). */
VEXO_API bool vexo_matrix_equal(const GeomMatrix *a, const GeomMatrix *b);
/* Copy the 16 entries into `out` as floats, same order. */
VEXO_API void vexo_matrix_convert_tof(const GeomMatrix *m, float *out);
/* out = m * p (x, y, z), flags copied; m NULL copies the whole record; p or
 * out NULL does nothing. */
VEXO_API void vexo_matrix_multiply_point(const GeomMatrix *m, const GeomPoint *p, GeomPoint *out);
/* (x, y, 0) through m: *out_x, *out_y. */
VEXO_API void vexo_matrix_multiply_2Dcoord(const GeomMatrix *m, double x, double y, double *out_x,
                                           double *out_y);
/* b = a * b; a and b may be the same matrix. */
VEXO_API void vexo_matrix_multiply_matrix(const GeomMatrix *a, GeomMatrix *b);
/* m = inverse(m); a singular matrix (determinant exactly 0) is unchanged. */
VEXO_API void vexo_matrix_invert(GeomMatrix *m);
/* Pre-multiply a translation; (0, 0, 0) leaves m untouched. */
VEXO_API void vexo_matrix_translate(GeomMatrix *m, double dx, double dy, double dz);
/* Pre-multiply a scaling diag(sx, sy, sz, 1). */
VEXO_API void vexo_matrix_scale(GeomMatrix *m, double sx, double sy, double sz);
/* Pre-multiply a shear: a1, a2 add x to y and z; a3, a4 add y to x and z;
 * a5, a6 add z to x and y. */
VEXO_API void vexo_matrix_slant(GeomMatrix *m, double a1, double a2, double a3, double a4,
                                double a5, double a6);
/* Pre-multiply rotations about X, then Y, then Z (degrees; a positive angle
 * turns clockwise looking down the axis), about `centre` (3 doubles) or the
 * origin when centre is NULL. */
VEXO_API void vexo_matrix_rotate(GeomMatrix *m, const double *centre, double ax, double ay,
                                 double az);
/* Pre-multiply a rotation by `angle` degrees about `axis` (3 doubles, need
 * not be unit), same sense as vexo_matrix_rotate.  VEXO_OK, or
 * VEXO_ERROR_INVALID_PARAMETER with m unchanged when m or axis is NULL. */
VEXO_API uint32_t vexo_matrix_rotate_vector3d(GeomMatrix *m, const double *axis, double angle);
/* Pre-multiply a perspective frustum (entries at the classic OpenGL
 * indices 0, 5, 8, 9, 10, 11, 14). */
VEXO_API void vexo_matrix_frustum(GeomMatrix *m, double left, double right, double bottom,
                                  double top, double z_near, double z_far);
/* m[3], m[7], m[11]; any output may be NULL. */
VEXO_API void vexo_matrix_get_translation(const GeomMatrix *m, double *x, double *y, double *z);
/* Lengths of rows 0, 1, 2 (values within 1e-7 of 1 are exactly 1); any
 * output may be NULL. */
VEXO_API void vexo_matrix_get_scaling(const GeomMatrix *m, double *sx, double *sy, double *sz);
/* Rotation angles in degrees about X, Y, Z; any output may be NULL. */
VEXO_API void vexo_matrix_get_rotation(const GeomMatrix *m, double *ax, double *ay, double *az);

/* ===========================================================================
 * geom: point buffers and dots
 * ========================================================================= */

/* Resize `buffer` (may be NULL) to exactly `count` points.  count 0 returns
 * NULL and leaves buffer untouched.  On failure frees buffer, returns NULL. */
VEXO_API GeomPoint *vexo_geom_realloc(GeomPoint *buffer, uint32_t count);

/* Grow with headroom: returns buffer unchanged when it is not NULL and
 * count <= *capacity; otherwise *capacity = count + max(count/100, 100) and
 * the buffer is reallocated.  On failure frees buffer and returns NULL
 * (*capacity already updated).  A capacity that would not fit in 32 bits
 * fails the same way. */
VEXO_API GeomPoint *vexo_geom_realloc_fast(GeomPoint *buffer, uint32_t count, uint32_t *capacity);

/* Free a point array returned by any vexo_ function; NULL is ignored. */
VEXO_API void vexo_geom_release(GeomPoint *buffer);

/* Resize an array of 56-byte pair records to `count`.  Plain realloc
 * semantics: on failure the old block is NOT freed; count 0 returns NULL
 * without freeing. */
VEXO_API void *vexo_geom_pair_realloc(void *buffer, uint32_t count);

/* Free a pair array; NULL is ignored. */
VEXO_API void vexo_geom_pair_release(void *buffer);

/* Append n points of `source` behind the `count` points of buffer, adding
 * (dx, dy, dz).  With a zero offset the records are copied whole.  The caller
 * adds n to its count.  count + n == 0 returns NULL (buffer untouched); on
 * failure frees buffer and returns NULL. */
VEXO_API GeomPoint *vexo_geom_append(GeomPoint *buffer, uint32_t count, const GeomPoint *source,
                                     uint32_t n, double dx, double dy, double dz);

/* vexo_geom_append without offset, growing with headroom (see
 * vexo_geom_realloc_fast).  On failure frees buffer and returns NULL. */
VEXO_API GeomPoint *vexo_geom_append_fast(GeomPoint *buffer, uint32_t count,
                                          const GeomPoint *source, uint32_t n, uint32_t *capacity);

/* Append a dot at point->x/y/z: one point with flags 1, or, with use_shape,
 * the circle or spiral that `shape` describes.  *count is advanced.
 * `capacity` may be NULL (exact growth).  On allocation failure frees buffer
 * and returns NULL; a figure that yields no points leaves everything as is. */
VEXO_API GeomPoint *vexo_geom_append_dot_fast(GeomPoint *buffer, uint32_t *count,
                                              const GeomPoint *point, bool use_shape,
                                              const GeomDotShape *shape, uint32_t *capacity);

/* vexo_geom_append_dot_fast with exact growth. */
VEXO_API GeomPoint *vexo_geom_append_dot(GeomPoint *buffer, uint32_t *count, const GeomPoint *point,
                                         bool use_shape, const GeomDotShape *shape);

/* As the two above, reading the shape from a caller parameter record of at
 * least VEXO_DOT_PARAMS_SIZE bytes (fields at VEXO_DOT_PARAMS_OFFSET). */
VEXO_API GeomPoint *vexo_geom_append_dot_fast2(GeomPoint *buffer, uint32_t *count,
                                               const GeomPoint *point, bool use_shape,
                                               const void *params, uint32_t *capacity);
VEXO_API GeomPoint *vexo_geom_append_dot2(GeomPoint *buffer, uint32_t *count,
                                          const GeomPoint *point, bool use_shape,
                                          const void *params);

/* ===========================================================================
 * geom: circle and spiral generators
 * ========================================================================= */

/* Points along a circular arc around centre (x, y, z used), angles in
 * degrees from +Y towards +X, `steps` points per full turn (min 3).  A full
 * circle is closed with a copy of its first point.  The last point carries
 * flags 1.  Returns a new array (free with vexo_geom_release) and stores its
 * length in *count when count is not NULL; NULL when no point results or on
 * allocation failure. */
VEXO_API GeomPoint *vexo_geom_create_circle(double radius, const GeomPoint *centre, double start,
                                            double end, uint32_t steps, uint32_t *count);

/* A spiral between `inner` and `outer` radius with `pitch` per turn and
 * roughly constant point spacing, running inward (or outward when outward is
 * non-zero), clockwise (or counter-clockwise when reverse is non-zero).
 * `count` is required.  Returns a new array (free with vexo_geom_release)
 * or NULL (no point, or allocation failure; *count then holds the points
 * written before it).  Radii the walk cannot reach are refused before any
 * point is made (NULL, *count 0): a radius that is not finite, a negative
 * inner radius going outward, an inner radius below -max(outer, 0.0001)
 * going inward. */
VEXO_API GeomPoint *vexo_geom_create_spiral(double inner, double outer, const GeomPoint *centre,
                                            double start, double pitch, uint32_t steps,
                                            uint8_t reverse, uint8_t outward, uint32_t *count);

/* ===========================================================================
 * geom: smoothing, point reduction, placement, predicates
 * ========================================================================= */

/* Average each inner point of a polyline with its neighbours when both
 * neighbours lie closer than max_dist (x and y only; the 3D variant measures
 * with z but never moves z).  One forward pass, in place: a point averages
 * with its already smoothed predecessor.  Points of a triple that holds a
 * line end are left alone.  Writes VEXO_OK to *status when not NULL (also
 * for a NULL array, which is returned as is).  Returns points. */
VEXO_API GeomPoint *vexo_geom_smoothen(GeomPoint *points, uint32_t count, double max_dist,
                                       uint32_t *status);
VEXO_API GeomPoint *vexo_geom_smoothen_2d(GeomPoint *points, uint32_t count, double max_dist,
                                          uint32_t *status);

/* Drop points closer than min_dist to their predecessor, and two-point
 * polylines shorter than min_dist; polylines whose ends nearly touch are
 * joined.  Line ends and dots are never dropped for closeness; a two-point
 * line at the very start of the array always stays.  Points the caller had
 * already flagged VEXO_POINT_PROCESSED go as well.  In place, no allocation:
 * *count shrinks, order is kept.  Returns points; a NULL count leaves
 * everything alone, a NULL array with *count > 0 returns NULL. */
VEXO_API GeomPoint *vexo_geom_reduce(GeomPoint *points, uint32_t *count, double min_dist);
VEXO_API GeomPoint *vexo_geom_reduce_2d(GeomPoint *points, uint32_t *count, double min_dist);

/* Drop points whose direction change is positive and below max_angle
 * (degrees here; RADIANS in the _2d variant).  Collinear points stay; a
 * repeated point stays in 3D and counts as a right angle in 2D, where a full
 * reversal counts as pi.  In place: *count shrinks.  NULL handling as
 * vexo_geom_reduce.  Returns points. */
VEXO_API GeomPoint *vexo_geom_reduce_by_angle(GeomPoint *points, uint32_t *count, double max_angle);
VEXO_API GeomPoint *vexo_geom_reduce_by_angle_2d(GeomPoint *points, uint32_t *count,
                                                 double max_angle);

/* Add (dx, dy, dz) to every point; NULL or count 0 does nothing. */
VEXO_API void vexo_geom_translate(GeomPoint *points, uint32_t count, double dx, double dy,
                                  double dz);
/* Scale every point about the origin through a scaling matrix; NULL or
 * count 0 does nothing. */
VEXO_API void vexo_geom_scale(GeomPoint *points, uint32_t count, double sx, double sy, double sz);

/* 1 strictly inside, 2 on a border line (one coordinate equal to a bound,
 * whatever the other), 0 outside.  Note the argument order: y_max first. */
VEXO_API uint32_t vexo_geom_point_in_rect(const GeomPoint *point, double y_max, double x_min,
                                          double y_min, double x_max);
/* 1 inside, 0 outside (crossing number, polygon closed implicitly); fewer
 * than 3 vertices give 0. */
VEXO_API uint32_t vexo_geom_point_in_polygon(const GeomPoint *point, const GeomPoint *polygon,
                                             int32_t count);
/* Height of point on the plane of triangle[3] into *z: VEXO_OK or
 * VEXO_ERROR_NUMERIC.  A triangle degenerate in XY gives inf/NaN with
 * VEXO_OK; a NULL argument gives VEXO_ERROR_INVALID_PARAMETER. */
VEXO_API uint32_t vexo_geom_point_height(const GeomPoint *point, const GeomPoint *triangle,
                                         double *z);

/* ===========================================================================
 * geom: marking geometry - hatch fill, merging and travel order, closing,
 * slicing, inner part
 *
 * Polyline arrays as everywhere: VEXO_POINT_END on the last point of each
 * polyline.  A ring (closed contour) is a polyline closed implicitly from its
 * last point back to its first; a repeated closing point is harmless.  The
 * region of a set of rings is the even-odd region of all of them together
 * (a letter "O" is its outer ring minus its inner one), decided by the same
 * crossing rule as vexo_geom_point_in_polygon.  Results are new arrays (free
 * with vexo_geom_release); a status is stored through `status` when it is
 * not NULL: VEXO_OK, VEXO_ERROR_NO_RESULT (valid input, empty result: NULL,
 * *out_count 0), VEXO_ERROR_INVALID_PARAMETER (NULL pointer, NaN or
 * infinite value, parameter out of range), VEXO_ERROR_NO_MEMORY (allocation
 * failed, or a result beyond 2^26 points).  On any failure the result is
 * NULL and *out_count 0.  Output is a function of the input bytes alone.
 * ========================================================================= */

/* Hatch parameters: 88 bytes, offsets in the comments. */
typedef struct VexoHatch {
    double spacing;          /*  0: distance between hatch lines, > 0 */
    double angle;            /*  8: direction of the lines, degrees from +X */
    double inset;            /* 16: distance kept from the contours, >= 0 */
    double start_trim;       /* 24: taken off the start of each line (< 0 extends) */
    double end_trim;         /* 32: taken off the end of each line (< 0 extends) */
    double min_length;       /* 40: shorter lines (after trims) are dropped */
    double origin_x;         /* 48: every hatch line family passes through */
    double origin_y;         /* 56:   the origin, so objects share lines */
    double connect_distance; /* 64: longest serpentine connector */
    double angle_step;       /* 72: degrees added per cross-hatch pass */
    uint32_t passes;         /* 80: number of passes, 1..64 */
    uint32_t options;        /* 84: VEXO_HATCH_ bits */
} VexoHatch;

#define VEXO_HATCH_BIDIRECTIONAL 0x01u  /* every other line runs backwards */
#define VEXO_HATCH_CONNECT 0x02u        /* join neighbouring lines by connectors */
#define VEXO_HATCH_CONTOUR_BEFORE 0x04u /* the rings, closed, before the hatch */
#define VEXO_HATCH_CONTOUR_AFTER 0x08u  /* the rings, closed, after the hatch */

/* Fill the region of `rings` (count points) with hatch lines.  Each pass
 * turns the frame by angle + pass * angle_step (single-precision pi) and
 * cuts the lines v = k * spacing (k integer, v measured across the lines
 * from the origin) with the region: a line point is covered exactly when
 * vexo_geom_point_in_polygon-style crossing parity says inside, so vertices
 * on a line and edges along it never flip the parity.  With inset > 0 the
 * region is first shrunk by `inset` (round joins, about 1/1000 of the inset
 * as arc tolerance).  Lines run from lower to higher along the turned x
 * axis, every other line of a run reversed with VEXO_HATCH_BIDIRECTIONAL.
 * Lines follow each other in runs over neighbouring scan lines that overlap;
 * with VEXO_HATCH_CONNECT (and BIDIRECTIONAL) consecutive lines of a run are
 * joined into one polyline when the connector is at most connect_distance
 * long and stays inside the region.  Hatch points have z 0 and flags 0,
 * VEXO_POINT_END | VEXO_POINT_END_MARK on each polyline's last point;
 * contours are copied with their z and closed by a copy of their first
 * point.  Rings with fewer than 3 points are skipped.  Statuses: see the
 * section; spacing <= 0, passes outside 1..64, a negative inset or
 * min_length, or a pass with more than 2^24 scan lines give
 * VEXO_ERROR_INVALID_PARAMETER.  Returns the new array. */
VEXO_API GeomPoint *vexo_geom_cover(const GeomPoint *rings, uint32_t count, const VexoHatch *params,
                                    uint32_t *out_count, uint32_t *status);

/* Options of vexo_geom_merge_lines and vexo_geom_order_lines. */
#define VEXO_MERGE_ORDER 0x01u          /* merge_lines: also order the result */
#define VEXO_ORDER_ROTATE_CLOSED 0x02u  /* a closed polyline may start anywhere */
#define VEXO_ORDER_KEEP_DIRECTION 0x04u /* never reverse a polyline */

/* Join polylines whose ends lie within `tolerance` (2D, >= 0) of each other
 * into longer ones, reversing pieces where needed; the end with the smallest
 * distance is joined first (ties by position in the input), each end at most
 * once.  At a joint the second piece's first point is left out, so the
 * joint is the first piece's end point.  A chain that comes back to its own
 * start ends with its last point (within tolerance of its first).  Dots
 * (one-point polylines) stay dots.  Open chains and dots come in the order
 * of their lowest-numbered piece, loops after them.  With VEXO_MERGE_ORDER
 * the result is then ordered as by vexo_geom_order_lines (start may be
 * NULL: the origin).  The input is only read.  Each result polyline ends
 * with VEXO_POINT_END | VEXO_POINT_END_MARK; other flags are the input
 * points' flags without those bits.  Statuses: see the section (NaN or negative tolerance: 16). */
VEXO_API GeomPoint *vexo_geom_merge_lines(const GeomPoint *points, uint32_t count, double tolerance,
                                          uint32_t options, const GeomPoint *start,
                                          uint32_t *out_count, uint32_t *status);

/* Order polylines to shorten the jumps between them, starting at `start`
 * (x, y; NULL: the origin): each step goes to the nearest free polyline end
 * (2D; ties by position in the input) and the polyline is entered there,
 * reversed if that was its last point (never with
 * VEXO_ORDER_KEEP_DIRECTION).  A polyline whose last point equals its first
 * is closed; with VEXO_ORDER_ROTATE_CLOSED it may be entered at any vertex
 * and is rotated to start and end there.  Up to 7 polylines are ordered
 * exactly (shortest total jump length); more are ordered nearest first, in
 * O(n log n) for spread-out input.  Points keep their records except the
 * end flags, which are moved to each polyline's new last point.  Statuses:
 * see the section. */
VEXO_API GeomPoint *vexo_geom_order_lines(const GeomPoint *points, uint32_t count, uint32_t options,
                                          const GeomPoint *start, uint32_t *out_count,
                                          uint32_t *status);

/* Options of vexo_geom_close_polygons. */
#define VEXO_CLOSE_SNAP 0x01u            /* move the last point onto the first */
#define VEXO_CLOSE_DROP_DEGENERATE 0x02u /* drop polylines of fewer than 3 points */

/* Close, in place, every polyline whose last point lies within `tolerance`
 * (2D, > 0 to be useful) but not exactly on its first point: with
 * VEXO_CLOSE_SNAP the last point takes the first point's x, y and z;
 * otherwise a copy of the first point (with the last point's flags) is
 * appended and the old last point loses VEXO_POINT_END and
 * VEXO_POINT_END_MARK.  With VEXO_CLOSE_DROP_DEGENERATE polylines of
 * fewer than 3 points (a closing copy of the first not counted) are flagged
 * VEXO_POINT_PROCESSED and compacted away.  *count is updated.  The array
 * may move (as realloc); on failure (status 11) it is freed and NULL
 * returned.  NULL count: nothing happens, status 16.  Other statuses as in
 * the section (an empty result is NULL with VEXO_ERROR_NO_RESULT and the
 * array freed). */
VEXO_API GeomPoint *vexo_geom_close_polygons(GeomPoint *points, uint32_t *count, double tolerance,
                                             uint32_t options, uint32_t *status);

/* Sides kept by vexo_geom_slice_line. */
#define VEXO_SLICE_LEFT 0x01u  /* left of the directed line a->b */
#define VEXO_SLICE_RIGHT 0x02u /* right of it (points on the line count here) */

/* Cut polylines by the infinite line through line[0], line[1] (x, y) and
 * (line[2], line[3]), keeping the sides named in `options` (both: every
 * polyline cut into pieces at the line).  Cut points take z interpolated
 * along the cut segment and flags 0; kept points keep their records, with
 * VEXO_POINT_END moved to each piece's last point.  Statuses: see the
 * section (no side, a zero-length or non-finite line: 16). */
VEXO_API GeomPoint *vexo_geom_slice_line(const GeomPoint *points, uint32_t count,
                                         const double *line, uint32_t options, uint32_t *out_count,
                                         uint32_t *status);

/* Axis of vexo_geom_slice_band. */
#define VEXO_BAND_X 0u /* bands across x: x in [lo, hi] */
#define VEXO_BAND_Y 1u /* bands across y */

/* The part of polylines inside band number `band`: along `axis`, band k
 * covers [origin + k*width - overlap, origin + (k+1)*width + overlap]
 * (bounds inclusive), so neighbouring bands share 2*overlap at each seam.
 * The band of a coordinate c is floor((c - origin) / width).  Cuts and
 * flags as vexo_geom_slice_line.  width > 0, overlap >= 0, finite.
 * Statuses: see the section. */
VEXO_API GeomPoint *vexo_geom_slice_band(const GeomPoint *points, uint32_t count, uint32_t axis,
                                         double origin, double width, double overlap, int32_t band,
                                         uint32_t *out_count, uint32_t *status);

/* Options of vexo_geom_inner_part. */
#define VEXO_PART_OUTSIDE 0x01u /* keep the parts outside instead of inside */

/* The parts of polylines inside (or, with VEXO_PART_OUTSIDE, outside) the
 * region of `rings` (ring_count points, even-odd as in vexo_geom_cover).
 * Each segment is cut at every ring edge it crosses; a piece counts as
 * inside when its midpoint is.  Cuts take z interpolated along the segment
 * and flags 0.  Cost grows with segments x ring edges.  Statuses: see the
 * section. */
VEXO_API GeomPoint *vexo_geom_inner_part(const GeomPoint *points, uint32_t count,
                                         const GeomPoint *rings, uint32_t ring_count,
                                         uint32_t options, uint32_t *out_count, uint32_t *status);

/* The parts of polylines inside rect = {left, top, -, right, bottom, -}
 * (bounds inclusive), each segment cut with vexo_line_get_inner_part (so
 * cut points follow its 4-decimal crossing rule and get z interpolated
 * along the segment); consecutive cut segments that meet continue one
 * polyline.  Statuses: see the section. */
VEXO_API GeomPoint *vexo_geom_inner_part_rect(const GeomPoint *points, uint32_t count,
                                              const double *rect, uint32_t *out_count,
                                              uint32_t *status);

/* ===========================================================================
 * line: measurement, crossings, clipping to a rectangle
 * ========================================================================= */

/* Distance a-b (3D, or 2D when only2d); 0.0 when a or b is NULL. */
VEXO_API double vexo_line_get_length(const GeomPoint *a, const GeomPoint *b, bool only2d);
/* ceil((|a-b| + extra) / spacing), the length counting as 0 when a or b is
 * NULL.  spacing must be positive. */
VEXO_API uint32_t vexo_line_get_dot_num(const GeomPoint *a, const GeomPoint *b, double spacing,
                                        double extra);
/* Write the dot at spacing*index + offset along a->b into *out (flags 0);
 * true when it lies within the segment's bounding box.  Coincident a and b
 * put every dot on a.  A NULL pointer gives false and writes nothing. */
VEXO_API bool vexo_line_get_dot(const GeomPoint *a, const GeomPoint *b, double spacing,
                                int32_t index, GeomPoint *out, double offset);
/* out[2] = b - a with components below 1e-7 snapped to 0.  Any NULL
 * pointer: nothing is written (likewise for the 3D variant). */
VEXO_API void vexo_line_to_vector2d(const GeomPoint *a, const GeomPoint *b, double *out);
/* out[3] = b - a, unsnapped. */
VEXO_API void vexo_line_to_vector3d(const GeomPoint *a, const GeomPoint *b, double *out);
/* Remove every point flagged VEXO_POINT_PROCESSED, keeping order; *count
 * receives the number kept.  Returns points (not reallocated).  NULL count:
 * nothing happens; NULL points with *count > 0: NULL, *count untouched. */
VEXO_API GeomPoint *vexo_line_rem_unused_vertices(GeomPoint *points, uint32_t *count);

/* Crossing codes of vexo_line_get_crossing. */
#define VEXO_CROSSING_FOUND 1u            /* inside the bounded operands */
#define VEXO_CROSSING_OUTSIDE 2u          /* lines cross outside a bounded operand */
#define VEXO_CROSSING_PARALLEL 3u         /* no crossing */
#define VEXO_CROSSING_COINCIDENT 4u       /* the same line */
#define VEXO_CROSSING_MISSING_ARGUMENT 0u /* a point pointer was NULL */

/* Crossing of line a0-a1 and line b0-b1 in XY into *out (z interpolated
 * along a); an operand marked unbounded is treated as an infinite line.
 * Slopes, offsets and segment bounds are compared rounded half away from
 * zero to 4 decimals.  out->flags is 0x40 only when all four points carry
 * it.  Codes 3 and 4 leave out's coordinates alone; code 2 leaves the
 * crossing of the unbounded lines with z 0.  out may alias an input.
 * Returns a VEXO_CROSSING_ code (0 when any pointer is NULL). */
VEXO_API uint32_t vexo_line_get_crossing(const GeomPoint *a0, const GeomPoint *a1, bool a_unbounded,
                                         const GeomPoint *b0, const GeomPoint *b1, bool b_unbounded,
                                         GeomPoint *out);
/* The part of segment a-b inside rect = {left, top, -, right, bottom, -}
 * (bounds inclusive): a new 2-point array running a->b with flags 1 on the
 * second point (free with vexo_geom_release), or NULL when the segment lies
 * outside, memory runs out or a pointer is NULL.  A segment wholly inside
 * comes back as copies of a and b with their own flags; edge crossings get
 * flags 0 and z interpolated along a-b. */
VEXO_API GeomPoint *vexo_line_get_inner_part(const GeomPoint *a, const GeomPoint *b,
                                             const double *rect);

/* Line patterns: dots or dashes along polylines.
 *
 * Input: `count` points forming polylines as everywhere (VEXO_POINT_END on
 * each polyline's last point; the array's last point ends its polyline
 * whatever its flags).  Arc length runs on across vertices and starts again
 * at 0 on each polyline.  A position at arc length s lies on the first
 * segment whose span [start, end) holds it (the last segment also holds its
 * end), so a dot on a vertex appears once; it is placed with the arithmetic
 * of vexo_line_get_dot on that segment.  Results are new arrays (free with
 * vexo_geom_release); generated points have flags 0 and zeroed trailing
 * bytes, each output polyline ends with VEXO_POINT_END.  A status is stored
 * through `status` when it is not NULL: VEXO_OK; VEXO_ERROR_NO_RESULT
 * (valid input, nothing to draw: NULL, *out_count 0);
 * VEXO_ERROR_INVALID_PARAMETER (NULL points with count > 0, NULL
 * out_count, a NaN or infinite coordinate or parameter, a pitch or pattern
 * period of at most 1e-7, a bad dash record, an unknown option bit);
 * VEXO_ERROR_NO_MEMORY (allocation failed, a result beyond 2^26 points,
 * or more than 2^26 dash entries along one polyline).  On failure the result is
 * NULL and *out_count 0; nothing is allocated for bad parameters. */

/* Options of the pattern functions. */
#define VEXO_PATTERN_2D 0x01u   /* arc length over x and y only (z interpolated) */
#define VEXO_PATTERN_FIT 0x02u  /* stretch the pattern to whole periods per polyline */
#define VEXO_PATTERN_RING 0x04u /* a closed polyline runs on across its seam */

/* Dots every `pitch` along each polyline, the first at arc length `phase`
 * (taken modulo pitch, so a negative phase works as in a dash offset):
 * floor((L - phase) / pitch) + 1 dots on a polyline of length L.  Each dot
 * is one point flagged VEXO_POINT_END, or with use_shape (and a shape) the
 * circle or spiral vexo_geom_append_dot draws there, byte for byte; a shape
 * that draws nothing leaves nothing.  VEXO_PATTERN_FIT: the pitch becomes
 * L / n with n = round(L / pitch) (at least 1), the phase scaled alike, so
 * with phase 0 the dots hit both ends.  VEXO_PATTERN_RING: on a polyline
 * of at least 3 points whose last point equals its first (x, y and, unless
 * VEXO_PATTERN_2D, z), a last dot closer than 1e-7 along the ring to the
 * first is left out, so the seam gets one dot.  Statuses: see above. */
VEXO_API GeomPoint *vexo_line_to_pattern(const GeomPoint *points, uint32_t count, double pitch,
                                         double phase, uint32_t options, bool use_shape,
                                         const GeomDotShape *shape, uint32_t *out_count,
                                         uint32_t *status);

/* vexo_line_to_pattern reading the dot shape from a caller parameter
 * record of at least VEXO_DOT_PARAMS_SIZE bytes (fields at
 * VEXO_DOT_PARAMS_OFFSET), as vexo_geom_append_dot2 does. */
VEXO_API GeomPoint *vexo_line_to_pattern2(const GeomPoint *points, uint32_t count, double pitch,
                                          double phase, uint32_t options, bool use_shape,
                                          const void *params, uint32_t *out_count,
                                          uint32_t *status);

/* Most entries of a dash array. */
#define VEXO_DASH_MAX 16u

/* Dash pattern: 144 bytes, offsets in the comments. */
typedef struct VexoDash {
    double lengths[VEXO_DASH_MAX]; /*   0: on, off, on, ... (>= 0, finite) */
    uint32_t count;                /* 128: entries used, 1..VEXO_DASH_MAX */
    uint32_t options;              /* 132: VEXO_PATTERN_ bits */
    double offset;                 /* 136: where in the pattern arc length 0 lies */
} VexoDash;

/* Dashes along each polyline.  The pattern is lengths[0..count) (an odd
 * count is repeated once, as dash arrays are in SVG), entry 0 "on"; arc
 * length s lies at pattern position (offset + s) modulo the period.  Each
 * "on" stretch becomes a polyline of its own: its start, the vertices
 * strictly inside it, its end (z interpolated; a stretch cut by the
 * polyline's end, or ending within 1e-7 of it, ends on that vertex), the last point flagged
 * VEXO_POINT_END.  A zero "on" entry is a dot (one point), also at the
 * polyline's end; a longer stretch cut to nothing is dropped.
 * VEXO_PATTERN_FIT: the pattern and offset are scaled so that an open
 * polyline holds n periods plus the first entry (so with offset 0 it
 * starts and ends "on") and a ring n periods, n = round(...) as for dots.
 * VEXO_PATTERN_RING: on a closed polyline (as for dots) a stretch that runs
 * into the seam and one that starts there become one polyline, written
 * after the polyline's other stretches.  Statuses: see above; a period
 * (sum of the entries) of at most 1e-7, a negative or non-finite entry, a
 * count of 0 or above VEXO_DASH_MAX give VEXO_ERROR_INVALID_PARAMETER. */
VEXO_API GeomPoint *vexo_line_to_pattern3(const GeomPoint *points, uint32_t count,
                                          const VexoDash *dash, uint32_t *out_count,
                                          uint32_t *status);

/* ===========================================================================
 * gfx: colour pipeline
 * ========================================================================= */

/* Gamma (-100..100, the FIRST call's value stays in force for the process),
 * contrast (percent), brightness and per-channel offsets (8-bit levels)
 * applied to width*height 3-byte pixels from src into dst (may be the same
 * buffer).  Returns VEXO_OK (VEXO_ERROR_INVALID_PARAMETER for a NULL buffer
 * with a non-empty image). */
VEXO_API uint32_t vexo_gfx_process_colours(uint8_t *dst, const uint8_t *src, uint32_t width,
                                           uint32_t height, int32_t brightness, int32_t contrast,
                                           int32_t gamma, int32_t offset0, int32_t offset1,
                                           int32_t offset2);

/* ===========================================================================
 * bezier / spline: curves
 * ========================================================================= */

/* Sample the Bezier curve of `count` control points (x, y, z triples, 1..32)
 * at `steps` evenly spaced parameters into out[steps] (flags 0); the last
 * sample is the last control point exactly.  steps 0 returns VEXO_OK with
 * nothing written; otherwise VEXO_ERROR_INVALID_PARAMETER for count outside
 * 1..32 or a NULL pointer (count > 32 is refused even with steps 0). */
VEXO_API uint32_t vexo_bezier_get_curve3d(const double *controls, int32_t count, GeomPoint *out,
                                          uint32_t steps);

/* vexo_spline_get_curve2d: two knots with the same x bracket a point. */
#define VEXO_SPLINE_EQUAL_KNOTS ((uint32_t)-2)

/* Natural cubic spline through `count` (x, y) knots (x increasing, at least
 * 2): for each of the m points, y is computed from its x (x, z and flags
 * untouched); outside the knots the end cubics extrapolate.  VEXO_OK,
 * VEXO_ERROR_NO_MEMORY, VEXO_SPLINE_EQUAL_KNOTS (that point's y set to 0,
 * later points untouched) or VEXO_ERROR_INVALID_PARAMETER (NULL knots,
 * count < 2, m < 0, or NULL points with m > 0). */
VEXO_API uint32_t vexo_spline_get_curve2d(const double *knots, int32_t count, GeomPoint *points,
                                          int32_t m);

/* ===========================================================================
 * clip: polygon union, difference and outline (over Clipper)
 * ========================================================================= */

/* Opaque clip handle: a subject path list and a result path list. */
typedef struct ClipHandle ClipHandle;

/* Mode bits.  Arrays are cut into paths after each point flagged
 * VEXO_POINT_END; the array's last point is never converted (it closes the
 * outline).  Coordinates go to a 0.001 integer grid by truncation. */
#define VEXO_CLIP_UNION 0x01u       /* vexo_clip_bool */
#define VEXO_CLIP_DIFFERENCE 0x02u  /* vexo_clip_bool: subject minus operand */
#define VEXO_CLIP_JOIN_MITER 0x01u  /* vexo_clip_outline */
#define VEXO_CLIP_JOIN_ROUND 0x02u  /* vexo_clip_outline */
#define VEXO_CLIP_JOIN_SQUARE 0x04u /* vexo_clip_outline */
#define VEXO_CLIP_2D 0x10u          /* conversion: z = 0 for every point */

/* New handle whose subject holds `points` (destroy with vexo_clip_release);
 * NULL when count is 0, points is NULL, a coordinate is out of range or
 * memory runs out. */
VEXO_API ClipHandle *vexo_clip_create(const GeomPoint *points, uint32_t count, uint32_t mode);
/* Destroy a handle; NULL ignored. */
VEXO_API void vexo_clip_release(ClipHandle *clip);
/* Union (mode & 1) or difference (mode & 2) of the subject with `points`,
 * even-odd filling, into the result (neither bit: empty result).  VEXO_OK;
 * VEXO_ERROR_INVALID_PARAMETER for a NULL handle/points, count 0 or a
 * coordinate out of range; VEXO_ERROR_NO_MEMORY (also when Clipper reports
 * a failed execution).  The subject is kept. */
VEXO_API uint32_t vexo_clip_bool(ClipHandle *clip, const GeomPoint *points, uint32_t count,
                                 uint32_t mode);
/* Offset every subject path by `distance` (grows when positive) with the join
 * chosen by mode (miter limit 2, arc tolerance 0.25) into the result.  Holes
 * are told by orientation (opposite to the outermost path), not even-odd.
 * VEXO_OK; VEXO_ERROR_INVALID_PARAMETER when no join bit is set, the handle
 * is NULL, |distance| is not finite or above 1e10, or a subject coordinate
 * is out of range; VEXO_ERROR_NO_MEMORY.  The subject is kept. */
VEXO_API uint32_t vexo_clip_outline(ClipHandle *clip, uint32_t mode, double distance);
/* The result paths as a new array, each path closed by a copy of its first
 * point flagged VEXO_POINT_END; z comes from subject path 0 (free with
 * vexo_geom_release).  NULL with *count = 0 when the result is empty. */
VEXO_API GeomPoint *vexo_clip_get_result(const ClipHandle *clip, uint32_t *count);
/* The subject paths as a new array, as vexo_clip_get_result (free with
 * vexo_geom_release). */
VEXO_API GeomPoint *vexo_clip_get_subject(const ClipHandle *clip, uint32_t *count);
/* The result becomes the subject; the result is emptied.  VEXO_OK, or
 * VEXO_ERROR_INVALID_PARAMETER for a NULL handle or an empty result. */
VEXO_API uint32_t vexo_clip_set_solution(ClipHandle *clip);
/* The result is replaced by a copy of the subject.  VEXO_OK, or
 * VEXO_ERROR_INVALID_PARAMETER for a NULL handle; VEXO_ERROR_NO_MEMORY. */
VEXO_API uint32_t vexo_clip_copy_subject(ClipHandle *clip);
/* New handle whose subject is a copy of this handle's result (destroy with
 * vexo_clip_release); NULL for a NULL handle, an empty result or on
 * allocation failure. */
VEXO_API ClipHandle *vexo_clip_copy_solution(const ClipHandle *clip);

/* ===========================================================================
 * clip2: polygon union, difference and outline (over Boost.Polygon)
 * ========================================================================= */

/* Opaque handle of the second clip family: the same nine calls as
 * vexo_clip_*, the same mode bits (VEXO_CLIP_UNION, VEXO_CLIP_DIFFERENCE,
 * VEXO_CLIP_JOIN_*, VEXO_CLIP_2D), the same 0.001 grid reached by
 * truncation, the same heights and the same ownership, over an integer
 * scan-line engine with exact snap rounding.  Where results differ from
 * vexo_clip_*:
 * - scaled coordinates must lie within +-VEXO_CLIP2_GRID_LIMIT (caller
 *   units about +-1,073,741.823);
 * - paths come in the engine's order: each outer boundary (counter-
 *   clockwise) directly followed by its holes (clockwise), or, with
 *   VEXO_CLIP2_KEYHOLE, one hole-free contour per region whose holes are
 *   joined to the outer boundary by a zero-width cut;
 * - outlines offset the even-odd region of the subject (holes told by
 *   nesting, not by orientation); the region is united with the quads and
 *   join figures of every edge (a negative distance subtracts them), so the
 *   outline of overlapping subject paths is the outline of their region;
 *   an outline may keep collinear vertices where two figures met. */
typedef struct Clip2Handle Clip2Handle;

#define VEXO_CLIP2_KEYHOLE 0x20u         /* bool, outline: hole-free contours per region */
#define VEXO_CLIP2_GRID_LIMIT 1073741823 /* largest |x*1000| or |y*1000| accepted */

/* New handle whose subject holds `points`; NULL when count is 0, points is
 * NULL, a coordinate (or a z without VEXO_CLIP_2D) is off the grid, x or y
 * lies beyond VEXO_CLIP2_GRID_LIMIT, or memory runs out. */
VEXO_API Clip2Handle *vexo_clip2_create(const GeomPoint *points, uint32_t count, uint32_t mode);
/* Destroy a handle; NULL ignored. */
VEXO_API void vexo_clip2_release(Clip2Handle *clip);
/* Union (mode & 1) or difference (mode & 2) of the subject with `points`,
 * both filled even-odd (a self-crossing path keeps every region it winds
 * round an odd number of times), into the result (neither bit: empty
 * result).  VEXO_OK; VEXO_ERROR_INVALID_PARAMETER for a NULL handle or
 * points, count 0 or a coordinate off the grid or beyond
 * VEXO_CLIP2_GRID_LIMIT; VEXO_ERROR_NO_MEMORY.  The subject is kept. */
VEXO_API uint32_t vexo_clip2_bool(Clip2Handle *clip, const GeomPoint *points, uint32_t count,
                                  uint32_t mode);
/* Offset the subject's even-odd region by `distance` (grows when positive)
 * with the join chosen by mode (miter limit 2, arc tolerance 0.25 grid
 * units, as vexo_clip_outline) into the result; |distance*1000| below 0.5
 * gives the region itself.
 * VEXO_OK; VEXO_ERROR_INVALID_PARAMETER when no join bit is set, the handle
 * is NULL, distance is not finite or the outline could reach beyond
 * VEXO_CLIP2_GRID_LIMIT (largest |coordinate| + 2 |distance|, in grid
 * units); VEXO_ERROR_NO_MEMORY.  The subject is kept. */
VEXO_API uint32_t vexo_clip2_outline(Clip2Handle *clip, uint32_t mode, double distance);
/* The result paths as a new array for vexo_geom_release, each path closed by
 * a copy of its first point flagged VEXO_POINT_END; z comes from subject
 * path 0 as in vexo_clip_get_result.  NULL with *count = 0 when the result
 * is empty. */
VEXO_API GeomPoint *vexo_clip2_get_result(const Clip2Handle *clip, uint32_t *count);
/* The subject paths, as vexo_clip2_get_result. */
VEXO_API GeomPoint *vexo_clip2_get_subject(const Clip2Handle *clip, uint32_t *count);
/* The result becomes the subject; the result is emptied.  VEXO_OK, or
 * VEXO_ERROR_INVALID_PARAMETER for a NULL handle or an empty result. */
VEXO_API uint32_t vexo_clip2_set_solution(Clip2Handle *clip);
/* The result is replaced by a copy of the subject.  VEXO_OK, or
 * VEXO_ERROR_INVALID_PARAMETER for a NULL handle; VEXO_ERROR_NO_MEMORY. */
VEXO_API uint32_t vexo_clip2_copy_subject(Clip2Handle *clip);
/* New handle whose subject is a copy of this handle's result; NULL for a NULL
 * handle, an empty result or on allocation failure. */
VEXO_API Clip2Handle *vexo_clip2_copy_solution(const Clip2Handle *clip);

/* ===========================================================================
 * corr: scanner correction tables
 * ========================================================================= */

#define VEXO_CORR_SIZE 65u
#define VEXO_CORR_CELLS 4225u
#define VEXO_KXO_FILE_SIZE 50712u

/* 65x65 cells, row by row: cell (row r, column c) is cell[r * 65 + c]; the
 * column runs along X.  x and y are output deflections (-32767.5..32767.5),
 * z a focus value.  The correction functions never touch `flags`. */
typedef struct CorrTable {
    GeomPoint cell[4225];
} CorrTable;

/* The 12-byte header of the kxo format, kept library-wide after a load. */
typedef struct CorrHead {
    uint16_t version;     /* the writer stores 1 */
    uint16_t header_size; /* the writer stores 12 */
    uint8_t tag;          /* passed through */
    uint8_t reserved[3];  /* as read; written as 0 */
    uint32_t value;       /* passed through */
} CorrHead;

/* Format numbers of vexo_corr_load_corr65. */
#define VEXO_CORR_FORMAT_AUTO 0u /* by extension */
#define VEXO_CORR_FORMAT_UCF 1u
#define VEXO_CORR_FORMAT_CTB 2u
#define VEXO_CORR_FORMAT_CT5 3u
#define VEXO_CORR_FORMAT_GCD 4u
#define VEXO_CORR_FORMAT_KXO 5u
#define VEXO_CORR_FORMAT_XML 6u
#define VEXO_CORR_FORMAT_TXT 7u
#define VEXO_CORR_FORMAT_CRT 8u
#define VEXO_CORR_FORMAT_COR 9u
#define VEXO_CORR_FORMAT_FCR 10u
#define VEXO_CORR_FORMAT_SCOR 11u

/* Fill table with the identity correction (flags untouched).  VEXO_OK;
 * VEXO_ERROR_INVALID_PARAMETER for NULL. */
VEXO_API uint32_t vexo_corr_set_neutral(CorrTable *table);

/* Copy the header of the last load (all zero unless it was a kxo file).
 * VEXO_OK; VEXO_ERROR_INVALID_PARAMETER for NULL. */
VEXO_API uint32_t vexo_corr_get_corr_head(CorrHead *head);

/* Load a correction file into table (set neutral first).  format is a
 * VEXO_CORR_FORMAT_ number, or 0 to recognise the extension by substring
 * (".scor" before ".cor" before ".crt", ".ucf", ".ctb", ".ct5", ".gcd",
 * ".kxo", ".xml", ".txt", ".fcr"; lower then upper case; the first found
 * wins, and vexo_corr_load_ex reports the format chosen).  VEXO_OK, or
 * VEXO_ERROR_INVALID_DATA (also: a file over 64 MiB), VEXO_ERROR_NO_MEMORY,
 * VEXO_ERROR_INVALID_PARAMETER for a NULL argument, VEXO_ERROR_OPEN_FILE
 * (also: not a regular file, e.g. a folder or a FIFO, refused without
 * waiting for data), VEXO_ERROR_READ_FILE for a
 * short file, VEXO_ERROR_INVALID_HEADER for a missing header,
 * VEXO_ERROR_UNKNOWN_FORMAT.  On failure the table may hold
 * values read so far.  The header (vexo_corr_get_corr_head) is zeroed at
 * the start and only a kxo file, even a truncated one, fills it. */
VEXO_API uint32_t vexo_corr_load_corr65(CorrTable *table, const char *path, uint32_t format);

/* Write table as a 50,712-byte big-endian kxo file with head's tag and value
 * (version 1, header size 12, reserved bytes 0).  Each coordinate is stored
 * as round((w + 32767.5) * 30000) saturated to int32, NaN as 0.
 * VEXO_OK; VEXO_ERROR_INVALID_PARAMETER for a NULL argument,
 * VEXO_ERROR_OPEN_FILE when the file cannot be created, VEXO_ERROR_WRITE_FILE
 * for a short write or a failed close.  Every writer puts the bytes in a
 * new file in the target's folder and renames it over the target only once
 * all of it is written, flushed and closed: on failure the old file is
 * untouched and the new one removed.  VEXO_ERROR_OPEN_FILE also when no
 * file can be made in that folder or the target exists and is not a
 * writable regular file (a folder, device or FIFO); a link is followed, a
 * replaced file keeps its permission bits. */
VEXO_API uint32_t vexo_corr_save_kxo(const CorrTable *table, const char *path,
                                     const CorrHead *head);

/* Write table as a ".ctb" file: Y then X planes of little-endian u16,
 * column-major, value = x + 32767.5 rounded half away from zero and clamped
 * to 0..65535.  Statuses as vexo_corr_save_kxo. */
VEXO_API uint32_t vexo_corr_save_ctb(const CorrTable *table, const char *path);

/* Write table as a "JCZ_COR_2_1" ".cor" file (33,840 bytes): label, f64
 * `scale` (galvo units per mm, 0 when unknown), 65x65 little-endian i32
 * delta pairs (neutral - cell, x then y) row by row, 4-byte zero trailer.
 * Statuses as vexo_corr_save_kxo. */
VEXO_API uint32_t vexo_corr_save_cor(const CorrTable *table, const char *path, double scale);

/* What a correction file holds beside the grid, per call: filled by
 * vexo_corr_load_ex, read by vexo_corr_save_ex.  `flags` says which fields
 * mean something. */
#define VEXO_CORR_INFO_HEAD 0x01u    /* head: the file's kxo header */
#define VEXO_CORR_INFO_SCALE 0x02u   /* scale: ".cor" galvo units per mm */
#define VEXO_CORR_INFO_FACTORS 0x04u /* factors: ".cor" x, y delta factors */
#define VEXO_CORR_INFO_PARAMS 0x08u  /* params: the 16 ".ct5" header words */
#define VEXO_CORR_INFO_TRAILER 0x10u /* trailer: bytes after the ".ctb" planes */
#define VEXO_CORR_INFO_NO_Z 0x20u    /* the file has no z; the table's z is a fill */

typedef struct CorrFileInfo {
    uint32_t format;       /* VEXO_CORR_FORMAT_ number the file was read as */
    uint32_t flags;        /* VEXO_CORR_INFO_ bits */
    CorrHead head;         /* kxo header as stored (version, size, tag, value) */
    uint32_t reserved;     /* 0 */
    double scale;          /* galvo units per mm, 0 when the file says none */
    double factors[2];     /* x, y factors of a ".cor" with factors */
    uint32_t params[16];   /* ".ct5": the 64 header bytes, little-endian words */
    uint32_t trailer_size; /* bytes in trailer */
    uint32_t reserved2;    /* 0 */
    uint8_t *trailer;      /* malloc'd copy or NULL; vexo_corr_release_info */
} CorrFileInfo;

/* vexo_corr_load_corr65 with a record of what the file holds beside the
 * grid: info (may be NULL) is zeroed, then gets the format read and, on
 * success, the flags and fields that format carries.  Leaves the
 * library-wide header (vexo_corr_get_corr_head) alone, so loads on distinct
 * tables may run at once.  Same statuses as vexo_corr_load_corr65; on
 * failure info holds only the format.  Release info with
 * vexo_corr_release_info. */
VEXO_API uint32_t vexo_corr_load_ex(CorrTable *table, const char *path, uint32_t format,
                                    CorrFileInfo *info);

/* Write table as `format` (VEXO_CORR_FORMAT_KXO, _CTB or _COR; 0: by the
 * extension rule of vexo_corr_load_corr65) with what info (may be NULL:
 * zero header, scale 0, no trailer) carries: kxo the header's tag and
 * value, ".cor" the scale when VEXO_CORR_INFO_SCALE is set, ".ctb" the
 * trailer when VEXO_CORR_INFO_TRAILER is set.  VEXO_OK;
 * VEXO_ERROR_INVALID_PARAMETER for a NULL table or path;
 * VEXO_ERROR_UNKNOWN_FORMAT for a format that cannot be written;
 * VEXO_ERROR_NO_MEMORY, VEXO_ERROR_OPEN_FILE, VEXO_ERROR_WRITE_FILE as the
 * writers. */
VEXO_API uint32_t vexo_corr_save_ex(const CorrTable *table, const char *path, uint32_t format,
                                    const CorrFileInfo *info);

/* Free info's trailer and zero the record; NULL is ignored. */
VEXO_API void vexo_corr_release_info(CorrFileInfo *info);

/* Fill table from an n x n grid of measured and nominal positions (cell
 * (a, b) at a*n + b, x and y read) given in a field of size `range`:
 * pre-distort, normalise to the output range, resample bilinearly.  z and
 * flags end 0.  VEXO_OK; VEXO_ERROR_INVALID_PARAMETER for a NULL table or
 * grid; VEXO_ERROR_NO_MEMORY when n*n is 0 or too large.
 * Conventions kept for identical tables: the grid's FIRST index a runs
 * along X (it becomes the table column) and b along Y (the table row), the
 * opposite of the table's own row-by-row order; the resampling step is
 * (n - 1) / 65, not / 64, so table node p samples grid position p * (n - 1)
 * / 65 and node 64 stops short of the grid's last line.  Hence even a
 * perfect measurement (measured = nominal) does not give the neutral table;
 * vexo_corr_from_grid does. */
VEXO_API uint32_t vexo_corr_interpolate(uint32_t n, const GeomPoint *measured,
                                        const GeomPoint *nominal, double range, CorrTable *table);

/* Shrink (scale < 1) or enlarge the field near the centre while the rim at
 * radius 32767.5*scale stays put.  VEXO_OK; VEXO_ERROR_INVALID_PARAMETER
 * for NULL or scale 0. */
VEXO_API uint32_t vexo_corr_set_scale(CorrTable *table, double scale);

/* Recompute z for a flat field under a lens of focal_length over a field of
 * field_size, rescaled to target_size.  VEXO_OK;
 * VEXO_ERROR_INVALID_PARAMETER for NULL or a field_size of 0 (table
 * unchanged). */
VEXO_API uint32_t vexo_corr_set_focal(CorrTable *table, double focal_length, double field_size,
                                      double target_size);

/* A mark meant for `to` landed at `from` (x, y each, output units): move the
 * nodes within |to - from| * radius_factor of `to` against the error,
 * weighted linearly.  mode 3: single nodes in X and Y; bit 0: Y along rows;
 * bit 1: X along columns.  VEXO_OK; VEXO_ERROR_INVALID_PARAMETER for
 * NULL. */
VEXO_API uint32_t vexo_corr_adjust_single(CorrTable *table, const double *from, const double *to,
                                          double radius_factor, int32_t mode);

/* Trapezoid correction: scale one side (0: last row in X, 1: first column in
 * Y, 2: last column in Y, 3: first row in X) by `factor`, the opposite side
 * by 1, blending linearly.  VEXO_OK; VEXO_ERROR_INVALID_PARAMETER for a
 * side above 3 or NULL. */
VEXO_API uint32_t vexo_corr_set_spatial(CorrTable *table, uint8_t side, double factor);

/* Scanner head geometry.  The beam meets the X mirror first, travels the
 * mirror gap to the Y mirror, then the distance to the field plane; each
 * mirror's surface contains its rotation axis, and the incoming beam meets
 * the X axis.  Field coordinates: the undeflected beam lands at (0, 0), y
 * along the Y mirror's sweep; an angle moves the spot the same way as its
 * sign (positive X angle towards +x, positive Y angle towards +y).  Mirror
 * angles are mechanical, in degrees (radians with the single-precision pi),
 * 0 at the rest position; the beam turns by twice the mirror angle.
 * Without an objective a spot at (x, y) needs the beam angles
 *   ay = atan(y / d),  ax = atan(x / (e + sqrt(d^2 + y^2))).
 * With an ideal f-theta objective (focal length f) the spot lies at
 * f * theta from the centre, theta the beam's angle to the axis, in the
 * azimuth of the beam; gap and distance then play no part. */
typedef struct CorrBase {
    double mirror_gap;   /* e: X mirror axis to Y mirror axis along the beam, >= 0 */
    double distance;     /* d: Y mirror axis to the field plane; > 0 without objective */
    double field_size;   /* F: side of the square field the table spans, > 0 */
    double focal_length; /* f of an ideal f-theta objective, > 0; 0: none */
    uint32_t options;    /* VEXO_CORR_BASE_ bits */
    uint32_t reserved;   /* must be 0 */
} CorrBase;              /* 40 bytes */

/* set_base writes z: the beam's extra path length from the X mirror to the
 * node over the axial path e + d, as -(extra / F) * 65535 (the units of
 * vexo_corr_set_focal); 0 everywhere with an objective (its image field is
 * flat). */
#define VEXO_CORR_BASE_FOCUS 0x1u

/* Fill table with the ideal correction of the head described by base.  Node
 * (r, c) stands for the field position ((c - 32) / 64 * F, (r - 32) / 64 * F)
 * (the neutral grid scaled to F); its x and y become the X and Y mirror
 * angles that put the spot there, in output units proportional to angle:
 * the largest angle of any node, on either mirror, maps to 32767.5, so the
 * table never leaves the output range.  Both mirrors share that scale.
 * z is written only with VEXO_CORR_BASE_FOCUS; flags are never touched.
 * *full_scale (may be NULL) receives the mirror angle, degrees, that an
 * output of 32767.5 stands for.  VEXO_OK; 16 NULL table or base, a value
 * out of range or not finite, unknown option bits, reserved not 0;
 * 24 a node the model cannot reach (beyond 90 degrees from the axis behind
 * an objective) or angles that vanish or overflow.  On failure the table
 * and *full_scale are untouched. */
VEXO_API uint32_t vexo_corr_set_base(CorrTable *table, const CorrBase *base, double *full_scale);

/* The mirror angles (degrees) that put the spot at field position (x, y),
 * in the units of base's sizes.  VEXO_OK; 16 for NULL pointers, a bad
 * record (as for vexo_corr_set_base) or a position not finite; 24 for a
 * position the model cannot reach.  Nothing is written on failure. */
VEXO_API uint32_t vexo_corr_calc_base_angles(const CorrBase *base, double x, double y,
                                             double *angle_x, double *angle_y);

/* Correct a table from a measured n x n grid of marks (n >= 2), positions
 * in field units (mm) in a field of field_size centred on (0, 0), x and y
 * read, y along the table rows.  Cell (i, j) is element i * n + j: row i
 * along Y, column j along X, the table's own order (not that of
 * vexo_corr_interpolate).  The nominal grid must be rectilinear and
 * increasing: nominal x depends on j only and grows with j, nominal y on i
 * only and grows with i (each within 1e-9 of the field size).  The marks
 * were made through `base` (NULL: the neutral table): the output value base
 * gives at nominal[k] landed at measured[k].  The new table sends every node
 * q to the output base gives at p, where p + e(p) = q and e is the measured
 * error (measured - nominal) interpolated bilinearly over the nominal grid,
 * held at its edge value beyond it; p is found by fixed-point iteration.
 * So a mark aimed at a measured position now lands where the nominal one
 * was aimed, a perfect measurement (measured = nominal) returns base (the
 * neutral table) bit for bit, and z follows the output (base's z at p).
 * Values are not clamped to the output range.  table may be base.  flags
 * stay as table had them.  VEXO_OK; VEXO_ERROR_INVALID_PARAMETER for NULL
 * pointers, n < 2, field_size not finite or not above 0, a value not finite,
 * a nominal grid that is not rectilinear and increasing;
 * VEXO_ERROR_INVALID_DATA a folded measurement (measured x not growing
 * along a row or y along a column); VEXO_ERROR_NUMERIC when the iteration
 * does not settle (it contracts while the error changes by less than the
 * nominal spacing, so measured spacings up to twice the nominal ones);
 * VEXO_ERROR_NO_MEMORY.  On failure table is
 * untouched. */
VEXO_API uint32_t vexo_corr_from_grid(uint32_t n, const GeomPoint *measured,
                                      const GeomPoint *nominal, double field_size,
                                      const CorrTable *base, CorrTable *table);

/* vexo_corr_apply option: output values back to field positions. */
#define VEXO_CORR_APPLY_INVERSE 0x1u

/* Replace x and y of count points, field positions in a field of
 * field_size (the table's node (r, c) at ((c - 32) / 64, (r - 32) / 64) *
 * field_size), by the output values the table gives there: bilinear
 * interpolation between the four nodes around the point, as a scanner card
 * does; beyond the table's edge the edge cell's bilinear form continues.
 * With VEXO_CORR_APPLY_INVERSE the points are output values and become the
 * field positions the table sends there (Newton iteration on the same
 * interpolation).  A coordinate that is not finite gives NaN x and y.  z,
 * flags and padding stay.  VEXO_OK (also for count 0); 16 NULL table, NULL
 * points with count > 0, field_size not finite or not above 0, unknown
 * option bits; 24 an inverse that does not converge (a folded or singular
 * table); 11 no memory for the inverse's answers (16 bytes a point).  On
 * failure no point is changed. */
VEXO_API uint32_t vexo_corr_apply(const CorrTable *table, GeomPoint *points, uint32_t count,
                                  double field_size, uint32_t options);

/* ===========================================================================
 * calib: camera calibration
 * ========================================================================= */

/* ImageBlock.format values.  The unprefixed IMAGE_FORMAT_, CALIB_ and
 * RECOGNISER_ names are the ones the hosts' record formats define, so they
 * stay as they are; each has a VEXO_-prefixed alias for code that keeps to
 * the library's prefix. */
#define IMAGE_FORMAT_RGB24 1u
#define IMAGE_FORMAT_GREY8 17u
#define VEXO_IMAGE_FORMAT_RGB24 IMAGE_FORMAT_RGB24
#define VEXO_IMAGE_FORMAT_GREY8 IMAGE_FORMAT_GREY8
#define VEXO_IMAGE_KIND 2u
#define VEXO_IMAGE_HEADER_SIZE 32u

/* A host image: this 32-byte header, then the pixels (rows top to bottom, no
 * padding; 3 bytes per pixel for RGB24, 1 for GREY8) at byte 32. */
typedef struct ImageBlock {
    uint8_t header[8]; /* not interpreted */
    uint8_t kind;      /* must be VEXO_IMAGE_KIND */
    uint8_t format;    /* IMAGE_FORMAT_RGB24 or IMAGE_FORMAT_GREY8 */
    uint8_t reserved[6];
    int32_t width;      /* BIG-endian */
    int32_t height;     /* BIG-endian */
    uint32_t bits;      /* host order */
    uint32_t data_size; /* host order */
} ImageBlock;

/* Largest frame, in pixels (width x height), that keypoint generation,
 * recognition and chessboard calibration accept: 2^23, a 3840 x 2160 frame
 * with room to spare.  Larger frames are refused before any work, so that
 * peak memory stays under about 2 GiB (SIFT's scale space takes about 240
 * bytes per frame pixel).  vexo_calib_start_calibrator only warps and has
 * no such limit. */
#define VEXO_VISION_MAX_PIXELS 8388608

/* CalibrationRecord.options bit (see the note on unprefixed names above). */
#define CALIB_OPTION_TOP_DOWN 0x01u
#define VEXO_CALIB_OPTION_TOP_DOWN CALIB_OPTION_TOP_DOWN

/* Calibration exchange record (216 bytes).  Every double is stored as an
 * 8-byte block (IEEE 754 binary64, big-endian; see vexo_util_dbl_to_block). */
typedef struct CalibrationRecord {
    uint8_t camera[9][8];      /* 0: 3x3 camera matrix, row by row */
    uint8_t distortion[4][8];  /* 72: k1, k2, p1, p2 */
    int32_t width;             /* 104: host order */
    int32_t height;            /* 108: host order */
    uint8_t reserved0[3][8];   /* 112: written as 0.0 */
    uint8_t perspective[9][8]; /* 136: 3x3 row by row; all 0.0 = none */
    uint8_t reserved1[5];      /* 208 */
    uint8_t options;           /* 213: CALIB_OPTION_TOP_DOWN */
    uint8_t padding[2];
} CalibrationRecord;

/* Opaque calibrator handle. */
typedef struct Calibrator Calibrator;

/* New calibrator from a record (size clamped to 80..8192 x 60..8192;
 * destroy with vexo_calib_release_calibrator); NULL for a NULL record or on
 * allocation failure. */
VEXO_API Calibrator *vexo_calib_create_calibrator(const CalibrationRecord *record);
/* Rectify one frame in place: grey, warped by the record's perspective (or
 * left unwarped when it has none), flipped vertically unless
 * CALIB_OPTION_TOP_DOWN; the block becomes GREY8, 8 bits, with data_size =
 * calibrator width x height bytes written from byte 32 (width and height
 * fields unchanged).  A frame smaller than the calibrator lowers the
 * calibrator size for good, so the output never exceeds the frame.
 * VEXO_OK; VEXO_ERROR_NO_HANDLE for a NULL calibrator; VEXO_ERROR_NO_MEMORY
 * for a NULL or unusable image (kind not VEXO_IMAGE_KIND, format not RGB24
 * or GREY8, width or height <= 0 or absurd), the block untouched.
 * One calibrator must not be started from two threads at once. */
VEXO_API int32_t vexo_calib_start_calibrator(Calibrator *cal, ImageBlock *image);
/* Destroy a calibrator; NULL ignored. */
VEXO_API void vexo_calib_release_calibrator(Calibrator *cal);

/* Calibrate from one image of a chessboard with columns x rows inner
 * corners (each 3..1024): fills record (all but bytes 208..215; width and
 * height first, even when the call then fails) and returns the corners as
 * columns*rows (x, y) int32 pairs rounded half away from zero (free with
 * vexo_calib_release_correction), or NULL.  *found (may be NULL) receives
 * the number of corners found: 0 for bad arguments or an unusable image
 * (one above VEXO_VISION_MAX_PIXELS included). */
VEXO_API int32_t *vexo_calib_gen_correction(const ImageBlock *image, int32_t columns, int32_t rows,
                                            CalibrationRecord *record, int32_t *found);
/* Free a corner list; NULL ignored. */
VEXO_API void vexo_calib_release_correction(int32_t *corners);

/* ===========================================================================
 * prcg: pattern recognition
 * ========================================================================= */

/* A taught keypoint (28 bytes); x, y, size, angle, response are x1000. */
typedef struct PatternKeypoint {
    int32_t x;
    int32_t y;
    int32_t size;
    int32_t angle;
    int32_t response;
    int32_t octave;
    int32_t class_id;
} PatternKeypoint;

/* Recogniser option word; the unprefixed names are fixed by the hosts'
 * record formats (see IMAGE_FORMAT_), each with a VEXO_ alias. */
#define RECOGNISER_SIFT 0x0100u
#define RECOGNISER_SURF 0x0200u
#define RECOGNISER_ORB 0x0400u
#define RECOGNISER_DETECTOR_MASK 0x0F00u
#define RECOGNISER_FLANN 0x0001u
#define RECOGNISER_MATCHER_MASK 0x000Fu
#define RECOGNISER_POSITION 0x0010u
#define RECOGNISER_ROTATION 0x0020u
#define VEXO_RECOGNISER_SIFT RECOGNISER_SIFT
#define VEXO_RECOGNISER_SURF RECOGNISER_SURF
#define VEXO_RECOGNISER_ORB RECOGNISER_ORB
#define VEXO_RECOGNISER_DETECTOR_MASK RECOGNISER_DETECTOR_MASK
#define VEXO_RECOGNISER_FLANN RECOGNISER_FLANN
#define VEXO_RECOGNISER_MATCHER_MASK RECOGNISER_MATCHER_MASK
#define VEXO_RECOGNISER_POSITION RECOGNISER_POSITION
#define VEXO_RECOGNISER_ROTATION RECOGNISER_ROTATION
/* Fit the homography robustly (RANSAC, reprojection threshold 3.0 pixels)
 * instead of by least squares over every match.  Read only by
 * vexo_prcg_start_recogniser2; vexo_prcg_start_recogniser always fits by
 * least squares. */
#define VEXO_RECOGNISER_ROBUST 0x0040u

/* Statuses of vexo_prcg_start_recogniser beyond the common ones. */
#define VEXO_ERROR_NO_RATIO_MATCH 0x10000009u /* no match passed the ratio test */
#define VEXO_ERROR_NO_POINT_PAIRS 0x20000009u /* no point pairs (every kept match gives one) */

/* Filled by vexo_prcg_start_recogniser. */
typedef struct RecognitionResult {
    float x; /* pattern origin in the frame, pixels */
    float y;
    float rotation; /* degrees */
    int32_t status; /* VEXO_OK, VEXO_ERROR_NO_HANDLE, VEXO_ERROR_NO_MEMORY,
                       VEXO_ERROR_INVALID_PARAMETER, VEXO_ERROR_NO_RATIO_MATCH,
                       VEXO_ERROR_NO_POINT_PAIRS */
} RecognitionResult;

/* Opaque recogniser handle. */
typedef struct Recogniser Recogniser;

/* Teach: detect keypoints inside rectangle (left, top)-(right, bottom) with
 * the detectors *options allows, keep the detector with the most keypoints
 * wholly inside, rewrite *options to name it, and return those keypoints
 * (*count of them; free with vexo_prcg_release_keypoints), or NULL (*count
 * -1 on a bad image, one above VEXO_VISION_MAX_PIXELS, or allocation
 * failure).  Keypoints that vexo_prcg_create_recogniser would refuse on the
 * same image are left out, so a returned set always creates a recogniser.
 * Detector bits: one allows that detector alone, none allows all three, and
 * two or more (or 0x0800) allow none: NULL, with *options naming SURF. */
VEXO_API PatternKeypoint *vexo_prcg_gen_keypoints(const ImageBlock *image, int32_t *count,
                                                  uint32_t *options, int32_t left, int32_t top,
                                                  int32_t right, int32_t bottom);
/* count zeroed keypoints (free with vexo_prcg_release_keypoints), or NULL. */
VEXO_API PatternKeypoint *vexo_prcg_alloc_keypoints(uint32_t count);
/* Free a keypoint array; NULL ignored. */
VEXO_API void vexo_prcg_release_keypoints(PatternKeypoint *keypoints);

/* New recogniser for `count` (>= 3) keypoints taught on `reference`; the
 * origin is subtracted from reported positions.  Destroy with
 * vexo_prcg_release_recogniser.  NULL on failure, for a
 * reference above VEXO_VISION_MAX_PIXELS, and for a set with any keypoint
 * the detector cannot use (the whole set is refused, none is dropped):
 * every keypoint needs x and y inside the reference image (0 <= x/1000 <
 * width, the same for y) and a size of at least 1000 (one pixel); SIFT
 * (RECOGNISER_SIFT) also needs an octave whose low byte, signed, is -1 to
 * round(log2(min(width, height))) - 2, whose second byte (the layer) is 1
 * to 3, and a size of at most 64 pixels in that octave (size/1000 divided
 * by 2^octave) and an angle of 0 to 360000 (0 to 360 degrees); ORB needs
 * an octave of 0 to 7.  An unreadable reference gives a handle that never
 * finds anything. */
VEXO_API Recogniser *vexo_prcg_create_recogniser(const PatternKeypoint *keypoints, int32_t count,
                                                 uint32_t options, const ImageBlock *reference,
                                                 int32_t origin_x, int32_t origin_y);
/* Find the pattern in `frame`; the outcome is result->status (x, y and
 * rotation 0 unless VEXO_OK); VEXO_ERROR_NO_MEMORY for a frame that cannot
 * be read or has more than VEXO_VISION_MAX_PIXELS pixels. */
VEXO_API void vexo_prcg_start_recogniser(Recogniser *rec, const ImageBlock *frame,
                                         RecognitionResult *result);
/* Destroy a recogniser; NULL ignored. */
VEXO_API void vexo_prcg_release_recogniser(Recogniser *rec);

/* Filled by vexo_prcg_start_recogniser2 (120 bytes). */
typedef struct RecognitionReport {
    double x;             /* where the reference image's (0, 0) lands in the frame, less */
    double y;             /* the recogniser's origin, pixels (H applied and divided by w) */
    double rotation;      /* degrees, as vexo_prcg_start_recogniser reports it */
    double scale;         /* mean linear scale: sqrt(area ratio) of the pattern box */
    uint32_t matches;     /* matches that passed the ratio test */
    uint32_t inliers;     /* matches the fit kept (all of them without ROBUST) */
    uint32_t status;      /* also the return value */
    uint32_t reserved;    /* 0 */
    double homography[9]; /* pattern (reference pixels) -> frame, row-major */
} RecognitionReport;

/* Find the pattern in `frame` and report the whole fit.  The homography is
 * fitted by least squares over every match, or with VEXO_RECOGNISER_ROBUST
 * in the recogniser's option word or in `options` (no other bit of
 * `options` is read) by RANSAC.  The pattern box (the rectangle around the
 * taught keypoints) is then mapped into the frame: its corners must lie in
 * front of the camera and form a convex quadrilateral of the same
 * orientation (not folded, not mirrored), and the image of its centre must
 * lie inside the frame; x, y, rotation and scale are always filled on
 * success, whatever the POSITION and ROTATION bits say.
 * Returns the status, also stored in report->status: VEXO_OK; 9 NULL
 * recogniser or nothing to match; 11 frame unreadable; 16 no homography
 * (fewer than 4 matches, or no fit); VEXO_ERROR_NO_RATIO_MATCH;
 * VEXO_ERROR_NO_POINT_PAIRS; VEXO_ERROR_NO_RESULT a homography that folds,
 * mirrors or puts the pattern outside the frame.  Unless VEXO_OK, x, y,
 * rotation and scale are 0; matches, inliers and homography keep what was
 * reached (0 before it).  A NULL report: VEXO_ERROR_INVALID_PARAMETER and
 * nothing is done. */
VEXO_API uint32_t vexo_prcg_start_recogniser2(Recogniser *rec, const ImageBlock *frame,
                                              uint32_t options, RecognitionReport *report);

/* Dot finding: a photo of marked dots -> their centres, for field
 * calibration.  The image is made grey as the calibrator does (no flip);
 * with VEXO_PRCG_DOTS_DARK it is then inverted (255 - grey) and all that
 * follows reads the inverted image.  A pixel is "ink" when its value is
 * above the level; each outer contour of the ink is a candidate dot
 * (holes inside a dot belong to it). */

/* PrcgDotParams.threshold_kind */
#define VEXO_PRCG_THRESHOLD_FIXED 0u /* the level is `threshold` */
#define VEXO_PRCG_THRESHOLD_OTSU 1u  /* Otsu's level of the image; `threshold` unread */

/* PrcgDotParams.options */
#define VEXO_PRCG_DOTS_DARK 0x01u        /* dark dots on a light ground */
#define VEXO_PRCG_DOTS_NO_BORDER 0x02u   /* drop dots whose contour touches the border */
#define VEXO_PRCG_DOTS_UNDISTORT 0x04u   /* centres through the record's lens model */
#define VEXO_PRCG_DOTS_PERSPECTIVE 0x08u /* centres through the record's perspective */

/* Parameters of vexo_prcg_find_dots (48 bytes on 64-bit hosts). */
typedef struct PrcgDotParams {
    uint32_t threshold_kind;         /* VEXO_PRCG_THRESHOLD_ value */
    uint32_t threshold;              /* level 0..254 for VEXO_PRCG_THRESHOLD_FIXED */
    double min_area;                 /* smallest contour area kept, pixels, >= 0 */
    double max_area;                 /* largest contour area kept, pixels; 0: no limit */
    double min_circularity;          /* 4 pi area / perimeter^2 of the contour, 0..1; 0: any */
    uint32_t options;                /* VEXO_PRCG_DOTS_ bits */
    uint32_t reserved;               /* must be 0 */
    const CalibrationRecord *record; /* read with UNDISTORT or PERSPECTIVE only */
} PrcgDotParams;

/* Find the dots in `image` (GREY8 or RGB24, at most VEXO_VISION_MAX_PIXELS
 * pixels).  Kept: contours whose area (polygon area through the boundary
 * pixels' centres, so about pi (r - 0.5)^2 for a disc of radius r) lies in
 * min_area..max_area and whose circularity reaches min_circularity; two
 * dots that touch form one contour, which the circularity limit drops.
 * The centre is the centroid of the ink weights (value - level, 0 below)
 * inside the dot's own filled contour: sub-pixel, pixel (column, row) at
 * (column, row), y down.  With VEXO_PRCG_DOTS_UNDISTORT the centres are
 * then mapped into an ideal camera with the record's camera matrix and no
 * distortion (k1, k2, p1, p2 removed); with VEXO_PRCG_DOTS_PERSPECTIVE
 * (after undistortion when both are set) through the record's perspective
 * (a record without one leaves them).  Returns count GeomPoints (x, y the
 * centre, z the contour area in pixels, flags 0x01: each a dot), sorted by
 * y then x; free with vexo_geom_release.  *status (may be NULL): VEXO_OK;
 * VEXO_ERROR_NO_RESULT when no dot passes (NULL, count 0: an empty image);
 * VEXO_ERROR_NO_MEMORY for an unusable image (NULL, kind or format wrong,
 * above the pixel budget) or no memory; VEXO_ERROR_INVALID_PARAMETER for
 * NULL params or count, an unknown kind or option bit, reserved not 0, a
 * level above 254, limits negative, not finite or max_area below
 * min_area, circularity outside 0..1, UNDISTORT or PERSPECTIVE without a
 * record, UNDISTORT with a camera matrix or distortion not usable (fx, fy
 * not above 0, a value not finite), PERSPECTIVE with a value not finite.
 * NULL on every failure, *count 0. */
VEXO_API GeomPoint *vexo_prcg_find_dots(const ImageBlock *image, const PrcgDotParams *params,
                                        uint32_t *count, uint32_t *status);

/* vexo_prcg_scale_dots option: negate y after scaling (y up). */
#define VEXO_PRCG_SCALE_FLIP_Y 0x01u

/* Pixels to field units in place: x = (x - origin x) * scale_x, y = (y -
 * origin y) * scale_y, then y negated with VEXO_PRCG_SCALE_FLIP_Y; z (an
 * area) times |scale_x * scale_y|; flags kept.  origin: two doubles (x, y),
 * or NULL for the dot nearest the mean of all dots (the first such dot on
 * a tie).  VEXO_OK (also for count 0); VEXO_ERROR_INVALID_PARAMETER for
 * NULL dots with count > 0, a scale 0 or not finite, an origin not finite,
 * unknown option bits; nothing is changed then. */
VEXO_API uint32_t vexo_prcg_scale_dots(GeomPoint *dots, uint32_t count, double scale_x,
                                       double scale_y, const double *origin, uint32_t options);

/* vexo_prcg_unrotate_dots options */
#define VEXO_PRCG_ROTATION_GIVEN 0x01u /* *rotation is the grid's rotation */
#define VEXO_PRCG_SORT_GRID 0x02u      /* sort into n x n grid order */

/* Remove a grid's rotation in place: every dot turned by -rotation about
 * (0, 0) (scale the dots first so that (0, 0) is the grid's middle).  The
 * rotation, degrees from +x towards +y, is *rotation with
 * VEXO_PRCG_ROTATION_GIVEN, else estimated from the directions between
 * neighbouring dots (pairs closer than 1.2 times the median nearest-
 * neighbour distance, so diagonals stay out) modulo 90 degrees, in -45..45, and written to
 * *rotation.  With VEXO_PRCG_SORT_GRID the dots are then put in grid
 * order: row i (growing y) by row, column j (growing x) within it, dot
 * (i, j) at i * n + j, the order of vexo_corr_from_grid; rows are told
 * apart by gaps in y wider than half the median spacing.  Statuses:
 * VEXO_OK; VEXO_ERROR_NO_RESULT fewer than 2 dots to estimate from, or
 * fewer than n * n dots to sort (a missing dot); VEXO_ERROR_INVALID_DATA
 * more than n * n dots (an extra one) or n * n dots not in n rows of n;
 * VEXO_ERROR_INVALID_PARAMETER NULL dots (count > 0) or rotation, a given
 * rotation not finite, a coordinate not finite, n < 2 with
 * VEXO_PRCG_SORT_GRID, unknown option bits; VEXO_ERROR_NO_MEMORY.  On
 * failure neither the dots nor *rotation change. */
VEXO_API uint32_t vexo_prcg_unrotate_dots(GeomPoint *dots, uint32_t count, uint32_t n,
                                          double *rotation, uint32_t options);

/* ===========================================================================
 * util: version, double blocks, runtime data, entity predicates
 * ========================================================================= */

/* Library version as VEXO_VERSION_NUMBER and as "major.minor.patch"; compare
 * with the macros to detect a header/library mismatch. */
VEXO_API uint32_t vexo_util_version_number(void);
VEXO_API const char *vexo_util_version_string(void);

/* A double as its 8-byte transport block (IEEE 754 binary64, most
 * significant byte first), and back.  A NULL out is ignored; a NULL in
 * reads as 0.0. */
VEXO_API void vexo_util_dbl_to_block(double value, uint8_t *out);
VEXO_API double vexo_util_block_to_dbl(const uint8_t *in);

/* Store `size` bytes under (name, MD5 of key) in the user's data folder
 * (".vexo_rtdata"; on POSIX under $XDG_DATA_HOME or ~/.local/share, created
 * with mode 0700).  The file is "<name>.<32 upper-case hex digits>".
 * VEXO_OK; VEXO_ERROR_INVALID_PARAMETER for a NULL name, NULL key with
 * key_length > 0, NULL data with size > 0, or a name containing '/' or
 * '\'; VEXO_ERROR_FILE_ACCESS when the file cannot be opened;
 * VEXO_ERROR_WRITE_FILE for a short write.  The blob replaces an older one
 * in one step, as the correction writers do (vexo_corr_save_kxo): on
 * failure the older one is kept. */
VEXO_API uint32_t vexo_util_save_runtime_data(const char *name, const uint8_t *key,
                                              uint32_t key_length, const uint8_t *data,
                                              uint32_t size);
/* Read `size` bytes stored under (name, key) into buffer (a longer file is
 * fine).  VEXO_OK; VEXO_ERROR_INVALID_PARAMETER as for saving;
 * VEXO_ERROR_FILE_ACCESS when there is no such file (or it is not a
 * regular file, refused without waiting for data); VEXO_ERROR_READ_FILE
 * for a file shorter than size (the bytes it had are in buffer). */
VEXO_API uint32_t vexo_util_load_runtime_data(const char *name, const uint8_t *key,
                                              uint32_t key_length, uint8_t *buffer, uint32_t size);
/* true for the group entity types 4, 8, 9, 10, 11, 16, 17. */
VEXO_API bool vexo_util_entity_is_group_type(int32_t type);
/* true for the image entity types 6, 7, 12, 13. */
VEXO_API bool vexo_util_entity_is_image_type(uint32_t type);
/* The macro name of a status ("VEXO_OK", "VEXO_ERROR_OPEN_FILE", ...), or
 * "VEXO_STATUS_UNKNOWN" for a value the library never returns.  A static
 * string: never NULL, never freed. */
VEXO_API const char *vexo_util_status_name(uint32_t status);
/* A one-line lower-case description of a status ("data file could not be
 * opened"), or "unknown status".  A static string: never NULL, never freed. */
VEXO_API const char *vexo_util_status_text(uint32_t status);

#ifdef __cplusplus
} /* extern "C" */

/* C++ convenience: pass a plain double[16] for a matrix, or a GeomPoint[4225]
 * for a correction table, without a cast.  The overloads take array
 * references, so NULL and pointers still resolve to the C functions. */
typedef double VexoMatrixArray[16];
typedef GeomPoint VexoTableArray[4225];
inline GeomMatrix *vexo_as_matrix(VexoMatrixArray &m) {
    return reinterpret_cast<GeomMatrix *>(m);
}
inline const GeomMatrix *vexo_as_matrix(const VexoMatrixArray &m) {
    return reinterpret_cast<const GeomMatrix *>(m);
}
inline CorrTable *vexo_as_table(VexoTableArray &t) {
    return reinterpret_cast<CorrTable *>(t);
}
inline const CorrTable *vexo_as_table(const VexoTableArray &t) {
    return reinterpret_cast<const CorrTable *>(t);
}

inline void vexo_matrix_unify(VexoMatrixArray &m) {
    vexo_matrix_unify(vexo_as_matrix(m));
}
inline bool vexo_matrix_equal(const VexoMatrixArray &a, const VexoMatrixArray &b) {
    return vexo_matrix_equal(vexo_as_matrix(a), vexo_as_matrix(b));
}
inline void vexo_matrix_convert_tof(const VexoMatrixArray &m, float *out) {
    vexo_matrix_convert_tof(vexo_as_matrix(m), out);
}
inline void vexo_matrix_multiply_point(const VexoMatrixArray &m, const GeomPoint *p,
                                       GeomPoint *out) {
    vexo_matrix_multiply_point(vexo_as_matrix(m), p, out);
}
inline void vexo_matrix_multiply_2Dcoord(const VexoMatrixArray &m, double x, double y, double *ox,
                                         double *oy) {
    vexo_matrix_multiply_2Dcoord(vexo_as_matrix(m), x, y, ox, oy);
}
inline void vexo_matrix_multiply_matrix(const VexoMatrixArray &a, VexoMatrixArray &b) {
    vexo_matrix_multiply_matrix(vexo_as_matrix(a), vexo_as_matrix(b));
}
inline void vexo_matrix_invert(VexoMatrixArray &m) {
    vexo_matrix_invert(vexo_as_matrix(m));
}
inline void vexo_matrix_translate(VexoMatrixArray &m, double dx, double dy, double dz) {
    vexo_matrix_translate(vexo_as_matrix(m), dx, dy, dz);
}
inline void vexo_matrix_scale(VexoMatrixArray &m, double sx, double sy, double sz) {
    vexo_matrix_scale(vexo_as_matrix(m), sx, sy, sz);
}
inline void vexo_matrix_slant(VexoMatrixArray &m, double a1, double a2, double a3, double a4,
                              double a5, double a6) {
    vexo_matrix_slant(vexo_as_matrix(m), a1, a2, a3, a4, a5, a6);
}
inline void vexo_matrix_rotate(VexoMatrixArray &m, const double *centre, double ax, double ay,
                               double az) {
    vexo_matrix_rotate(vexo_as_matrix(m), centre, ax, ay, az);
}
inline uint32_t vexo_matrix_rotate_vector3d(VexoMatrixArray &m, const double *axis, double angle) {
    return vexo_matrix_rotate_vector3d(vexo_as_matrix(m), axis, angle);
}
inline void vexo_matrix_frustum(VexoMatrixArray &m, double l, double r, double b, double t,
                                double n, double f) {
    vexo_matrix_frustum(vexo_as_matrix(m), l, r, b, t, n, f);
}
inline void vexo_matrix_get_translation(const VexoMatrixArray &m, double *x, double *y, double *z) {
    vexo_matrix_get_translation(vexo_as_matrix(m), x, y, z);
}
inline void vexo_matrix_get_scaling(const VexoMatrixArray &m, double *x, double *y, double *z) {
    vexo_matrix_get_scaling(vexo_as_matrix(m), x, y, z);
}
inline void vexo_matrix_get_rotation(const VexoMatrixArray &m, double *x, double *y, double *z) {
    vexo_matrix_get_rotation(vexo_as_matrix(m), x, y, z);
}

inline uint32_t vexo_corr_set_neutral(VexoTableArray &t) {
    return vexo_corr_set_neutral(vexo_as_table(t));
}
inline uint32_t vexo_corr_load_corr65(VexoTableArray &t, const char *path, uint32_t format) {
    return vexo_corr_load_corr65(vexo_as_table(t), path, format);
}
inline uint32_t vexo_corr_save_kxo(const VexoTableArray &t, const char *path,
                                   const CorrHead *head) {
    return vexo_corr_save_kxo(vexo_as_table(t), path, head);
}
inline uint32_t vexo_corr_save_ctb(const VexoTableArray &t, const char *path) {
    return vexo_corr_save_ctb(vexo_as_table(t), path);
}
inline uint32_t vexo_corr_save_cor(const VexoTableArray &t, const char *path, double scale) {
    return vexo_corr_save_cor(vexo_as_table(t), path, scale);
}
inline uint32_t vexo_corr_interpolate(uint32_t n, const GeomPoint *measured,
                                      const GeomPoint *nominal, double range, VexoTableArray &t) {
    return vexo_corr_interpolate(n, measured, nominal, range, vexo_as_table(t));
}
inline uint32_t vexo_corr_set_scale(VexoTableArray &t, double scale) {
    return vexo_corr_set_scale(vexo_as_table(t), scale);
}
inline uint32_t vexo_corr_set_focal(VexoTableArray &t, double focal, double field, double target) {
    return vexo_corr_set_focal(vexo_as_table(t), focal, field, target);
}
inline uint32_t vexo_corr_adjust_single(VexoTableArray &t, const double *from, const double *to,
                                        double radius_factor, int32_t mode) {
    return vexo_corr_adjust_single(vexo_as_table(t), from, to, radius_factor, mode);
}
inline uint32_t vexo_corr_set_spatial(VexoTableArray &t, uint8_t side, double factor) {
    return vexo_corr_set_spatial(vexo_as_table(t), side, factor);
}
inline uint32_t vexo_corr_set_base(VexoTableArray &t, const CorrBase *base, double *full_scale) {
    return vexo_corr_set_base(vexo_as_table(t), base, full_scale);
}
inline uint32_t vexo_corr_apply(const VexoTableArray &t, GeomPoint *points, uint32_t count,
                                double field_size, uint32_t options) {
    return vexo_corr_apply(vexo_as_table(t), points, count, field_size, options);
}
#endif /* __cplusplus */

#endif /* VEXO_H */
