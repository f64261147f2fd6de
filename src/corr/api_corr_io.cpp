// SPDX-License-Identifier: MIT
// C boundary of the correction table, its header, the file loaders and the
// writers.
#include <cstdlib>

#include "core/boundary.hpp"
#include "corr/dispatch.hpp"
#include "corr/file_info.hpp"
#include "corr/head_state.hpp"
#include "corr/table.hpp"
#include "corr/writers.hpp"

extern "C" {

VEXO_API uint32_t vexo_corr_set_neutral(CorrTable *table) {
    if (!table) return VEXO_ERROR_INVALID_PARAMETER;
    vexo::set_neutral(*table);
    return VEXO_OK;
}

VEXO_API uint32_t vexo_corr_get_corr_head(CorrHead *head) {
    if (!head) return VEXO_ERROR_INVALID_PARAMETER;
    *head = vexo::current_corr_head();
    return VEXO_OK;
}

VEXO_API uint32_t vexo_corr_load_corr65(CorrTable *table, const char *path, uint32_t format) {
    // The previous load's header goes first, whatever happens next.
    vexo::clear_corr_head();
    if (!table || !path) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&] { return vexo::load_corr_file(*table, path, format); });
}

VEXO_API uint32_t vexo_corr_save_kxo(const CorrTable *table, const char *path,
                                     const CorrHead *head) {
    if (!table || !path || !head) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::save_kxo(*table, path, *head);
}

VEXO_API uint32_t vexo_corr_save_ctb(const CorrTable *table, const char *path) {
    if (!table || !path) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::save_ctb(*table, path);
}

VEXO_API uint32_t vexo_corr_save_cor(const CorrTable *table, const char *path, double scale) {
    if (!table || !path) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::save_cor21(*table, path, scale);
}

VEXO_API uint32_t vexo_corr_load_ex(CorrTable *table, const char *path, uint32_t format,
                                    CorrFileInfo *info) {
    if (info) *info = CorrFileInfo{};
    if (!table || !path) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&] {
        CorrHead head{};
        vexo::FileBytes file;
        const uint32_t status = vexo::read_corr_file(*table, path, format, head, file);
        if (info) info->format = format;
        if (status != VEXO_OK || !info) return status;
        return vexo::describe_corr_file(format, file.span(), head, *info);
    });
}

VEXO_API uint32_t vexo_corr_save_ex(const CorrTable *table, const char *path, uint32_t format,
                                    const CorrFileInfo *info) {
    if (!table || !path) return VEXO_ERROR_INVALID_PARAMETER;
    if (format == VEXO_CORR_FORMAT_AUTO) format = vexo::format_from_path(path);
    return vexo::guard_status([&] { return vexo::save_corr_file(*table, path, format, info); });
}

VEXO_API void vexo_corr_release_info(CorrFileInfo *info) {
    if (!info) return;
    std::free(info->trailer);
    *info = CorrFileInfo{};
}

} // extern "C"
