/* Platform interfaces: defined only by a platform library (the real one on the target,
 * libisp_platform_sim on a workstation), never by libisp_json. Status 0 = success. */
#ifndef ISP_PLATFORM_H
#define ISP_PLATFORM_H

#include <stddef.h>
#include <stdint.h>

#include "isp_framework.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct VinHalWrapperAttr { /* 20 bytes with 32-bit pointers */
    uint32_t type;                 /* wrapper type of the module */
    uint32_t reserved;             /* 0 */
    uint32_t mode;                 /* 2 */
    int32_t (*register_func)(void); /* isp_plat_hal_register_func */
    const IspPipeAttr *pipe_attr;
} VinHalWrapperAttr;

typedef struct VinHalRegioAttr { /* 88 bytes with 32-bit pointers, zero-filled before use */
    uint8_t pipe_id;             /*  0 */
    uint8_t mode;                /*  1: 1 */
    uint8_t channel;             /*  2: channel index, 0 for single-channel modules */
    uint8_t reserved0[5];
    uint32_t reg_base; /*  8: 0x2400000 */
    uint32_t reserved1;
    uint8_t block_code[2]; /* 16, 17 */
    uint8_t reserved2[2];
    int32_t (*regdesc_get)(void); /* 20: qv_regio_regdesc_get_plat */
    uint8_t part_num;             /* 24: low 8 bits of part_h * part_v */
    uint8_t reserved3[7];
    uint32_t depth[2]; /* 32, 36 */
    uint8_t flag;      /* 40: 1 */
    uint8_t reserved4[3];
    uint32_t param[2]; /* 44, 48: 2, 4 */
    char name[36];     /* 52: "mod_<block>" */
} VinHalRegioAttr;

typedef struct VinHalSetupCmd {
    uint32_t cmd;
    void *data;
} VinHalSetupCmd;

int32_t QV_SYS_LogPrint(int32_t level, const char *tag, int32_t flag, const char *format, ...)
    __attribute__((format(printf, 4, 5)));
void *QV_OS_MEM_Calloc(uint32_t tag, size_t count, size_t size);
void QV_OS_MEM_Free(uint32_t tag, void *ptr);
int32_t qv_hal_sys_mem_alloc_cached(uint8_t pipe_id, uint64_t *phys, void **virt, uint32_t size,
                                    uint32_t align, const char *name);
int32_t QV_SYS_MemFree(uint64_t phys, void *virt);
int32_t vin_hal_wrapper_create(uint32_t *handle, const VinHalWrapperAttr *attr);
int32_t vin_hal_wrapper_destroy(uint32_t handle);
int32_t vin_hal_wrapper_regio_create(uint32_t handle, const VinHalRegioAttr *attr);
int32_t vin_hal_wrapper_regio_destroy(uint32_t handle);
int32_t vin_hal_wrapper_setup(uint32_t handle, const VinHalSetupCmd *cmd);
int32_t vin_hal_wrapper_trigger(uint32_t handle, uint32_t mode, uint32_t arg, uint32_t channel);
int32_t isp_plat_hal_register_func(void);
int32_t qv_regio_regdesc_get_plat(void);

#if defined(__SIZEOF_POINTER__) && __SIZEOF_POINTER__ == 4
ISP_STATIC_ASSERT(sizeof(VinHalWrapperAttr) == 20, "wrapper creation record is 20 bytes");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalWrapperAttr, type) == 0, "type at 0");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalWrapperAttr, reserved) == 4, "zero word at 4");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalWrapperAttr, mode) == 8, "mode at 8");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalWrapperAttr, register_func) == 12, "callback at 12");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalWrapperAttr, pipe_attr) == 16, "pipe attributes at 16");
ISP_STATIC_ASSERT(sizeof(VinHalRegioAttr) == 88, "register I/O record is 88 bytes");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, pipe_id) == 0, "pipe id at 0");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, mode) == 1, "mode at 1");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, channel) == 2, "channel at 2");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, reg_base) == 8, "register base at 8");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, reserved1) == 12, "zero word at 12");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, block_code) == 16, "block codes at 16");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, regdesc_get) == 20, "descriptor at 20");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, part_num) == 24, "partition count at 24");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, depth) == 32, "depths at 32");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, flag) == 40, "flag at 40");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, param) == 44, "words 2 and 4 at 44");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalRegioAttr, name) == 52, "name at 52");
ISP_STATIC_ASSERT(sizeof(VinHalSetupCmd) == 8, "setup record is command and pointer");
ISP_STATIC_ASSERT(__builtin_offsetof(VinHalSetupCmd, data) == 4, "data pointer at 4");
#endif

#ifdef __cplusplus
}
#endif

#endif
