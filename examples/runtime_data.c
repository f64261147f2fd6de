/* SPDX-License-Identifier: MIT */
/* Runtime data: store a small settings blob under a name and a key in the
 * user's data folder, read it back, and ask for one that was never saved. */
#include <stdio.h>
#include <string.h>

#include "vexo.h"

int main(void) {
    const uint8_t key[] = "head-42";
    const uint8_t settings[] = {1, 2, 3, 4, 5, 6, 7, 8};
    uint8_t back[sizeof settings] = {0};

    uint32_t status =
        vexo_util_save_runtime_data("example", key, sizeof key - 1, settings, sizeof settings);
    if (status != VEXO_OK) {
        fprintf(stderr, "save: %s\n", vexo_util_status_text(status));
        return 1;
    }
    status = vexo_util_load_runtime_data("example", key, sizeof key - 1, back, sizeof back);
    if (status != VEXO_OK || memcmp(back, settings, sizeof back) != 0) {
        fprintf(stderr, "load: %s\n", vexo_util_status_text(status));
        return 1;
    }
    printf("stored and read back %zu bytes under \"example\"\n", sizeof back);

    status = vexo_util_load_runtime_data("example", (const uint8_t *)"other", 5, back, sizeof back);
    printf("another key: %s (%s)\n", vexo_util_status_name(status), vexo_util_status_text(status));
    return status == VEXO_ERROR_FILE_ACCESS ? 0 : 1;
}
