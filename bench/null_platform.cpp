/* The platform interfaces doing only what the library needs of them and recording nothing:
 * what a board's platform costs the library's heap, which is none. The simulated platform keeps
 * a copy of every pushed structure and would hide a growing library behind its own growth. */
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>

#include "isp_platform.h"

#define NULL_PLATFORM_API extern "C" __attribute__((visibility("default")))

namespace {
uint32_t next_handle = 1;
uint64_t next_phys   = 0x10000000;
}  // namespace

NULL_PLATFORM_API int32_t QV_SYS_LogPrint(int32_t, const char *, int32_t, const char *, ...) {
    return 0;
}
NULL_PLATFORM_API void *QV_OS_MEM_Calloc(uint32_t, size_t count, size_t size) {
    return calloc(count, size);
}
NULL_PLATFORM_API void QV_OS_MEM_Free(uint32_t, void *ptr) {
    free(ptr);
}
NULL_PLATFORM_API int32_t qv_hal_sys_mem_alloc_cached(uint8_t, uint64_t *phys, void **virt,
                                                      uint32_t size, uint32_t align, const char *) {
    if (posix_memalign(virt, align < sizeof(void *) ? sizeof(void *) : align, size) != 0) return -1;
    *phys = next_phys;
    next_phys += (size + 0xFFFu) & ~0xFFFull;
    return 0;
}
NULL_PLATFORM_API int32_t QV_SYS_MemFree(uint64_t, void *virt) {
    free(virt);
    return 0;
}
NULL_PLATFORM_API int32_t vin_hal_wrapper_create(uint32_t *handle, const VinHalWrapperAttr *) {
    *handle = next_handle++;
    return 0;
}
NULL_PLATFORM_API int32_t vin_hal_wrapper_destroy(uint32_t) {
    return 0;
}
NULL_PLATFORM_API int32_t vin_hal_wrapper_regio_create(uint32_t, const VinHalRegioAttr *) {
    return 0;
}
NULL_PLATFORM_API int32_t vin_hal_wrapper_regio_destroy(uint32_t) {
    return 0;
}
NULL_PLATFORM_API int32_t vin_hal_wrapper_setup(uint32_t, const VinHalSetupCmd *) {
    return 0;
}
NULL_PLATFORM_API int32_t vin_hal_wrapper_trigger(uint32_t, uint32_t, uint32_t, uint32_t) {
    return 0;
}
NULL_PLATFORM_API int32_t isp_plat_hal_register_func(void) {
    return 0;
}
NULL_PLATFORM_API int32_t qv_regio_regdesc_get_plat(void) {
    return 0;
}
