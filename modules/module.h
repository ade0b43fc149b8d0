/* The generic module's view of the module table: the catalogue row of every module, by module
 * name, and the operations every module runs with its row. */
#ifndef ISP_MODULE_H
#define ISP_MODULE_H

#include <stddef.h>
#include <stdint.h>

#include "isp_framework.h"
#include "isp_json_modules.h"
#include "modules/tables.h"

namespace isp {

/* The position of every module's row in the catalogue: module_id::cc, module_id::dehaze, ... */
enum class module_id : size_t {
#define ISP_MODULE(mod, ...) mod,
#include "modules/modules.def"
    count
};

extern const module_desc k_modules[];

inline const module_desc &row_of(module_id id) {
    return k_modules[static_cast<size_t>(id)];
}

/* Frame index and last-frame flag of a module's context. */
struct frame_cursor {
    int32_t *frame;
    uint32_t *last_frame;
};
frame_cursor cursor_of(const module_desc &m, void *context);

/* Operations of the generic module. */
int32_t module_create(const module_desc &m, JsonModuleHandle *handle);
int32_t module_destroy(const module_desc &m, JsonModuleHandle *handle);
int32_t module_init(const module_desc &m, JsonModuleHandle *handle);
int32_t module_deinit(const module_desc &m, JsonModuleHandle *handle);
int32_t module_trigger(const module_desc &m, JsonModuleHandle *handle);
int32_t module_sync(const module_desc &m, JsonModuleHandle *handle);
/* The parameter loader: loads the current frame's files and pushes every group. */
int32_t module_load(const module_desc &m, JsonModuleHandle *handle);

}  // namespace isp

#endif
