/* SPDX-License-Identifier: MIT */
/* The shared library's own translation unit: the internal family libraries
 * are linked into it whole.  Compiling the record layouts here as C proves
 * them with the C compiler's view. */
#include "record_layouts.h"
