// SPDX-License-Identifier: MIT
// Entity-type predicates over the host application's type numbers.
#include "vexo.h"

extern "C" {

VEXO_API bool vexo_util_entity_is_group_type(int32_t type) {
    switch (type) {
    case 4:
    case 8:
    case 9:
    case 10:
    case 11:
    case 16:
    case 17:
        return true;
    default:
        return false;
    }
}

VEXO_API bool vexo_util_entity_is_image_type(uint32_t type) {
    switch (type) {
    case 6:
    case 7:
    case 12:
    case 13:
        return true;
    default:
        return false;
    }
}

} // extern "C"
