// SPDX-License-Identifier: MIT
// The library's version, for hosts that compare it with the header's macros.
#include "vexo.h"

extern "C" {

VEXO_API uint32_t vexo_util_version_number(void) {
    return VEXO_VERSION_NUMBER;
}

VEXO_API const char *vexo_util_version_string(void) {
#define VEXO_STR2(x) #x
#define VEXO_STR(x) VEXO_STR2(x)
    return VEXO_STR(VEXO_VERSION_MAJOR) "." VEXO_STR(VEXO_VERSION_MINOR) "." VEXO_STR(
        VEXO_VERSION_PATCH);
}

} // extern "C"
