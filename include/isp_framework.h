/* What the host pipeline framework hands to a JSON module: the operations table, the module
 * handle, the private contexts and the pipeline context. C linkage, usable from C and C++. */
#ifndef ISP_FRAMEWORK_H
#define ISP_FRAMEWORK_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ISP_WRAPPER_SLOTS 40
#define ISP_MAX_PARTITIONS 256 /* the whole range of the 8-bit partition index */
#define ISP_MAX_CHANNELS 6
#define ISP_CASE_PATH_SIZE 256

typedef struct IspPipeAttr { /* its address goes into the wrapper creation record */
    uint8_t part_h;          /* partitions per row */
    uint8_t part_v;          /* rows of partitions */
} IspPipeAttr;

typedef struct IspRegShadow {
    uint32_t module_enable; /* one enable bit per module; bit 0 = lowest bit of the lowest byte */
} IspRegShadow;

typedef struct JsonModuleContext {
    uint32_t wrapper;    /* wrapper handle, 0 = none; must stay first */
    int32_t frame;       /* frame the next load reads */
    uint32_t last_frame; /* 1 once no further frame directory exists */
} JsonModuleContext;     /* 12 bytes */

typedef struct JsonStatContext { /* ae_stat, awb_stat: 40 bytes with 32-bit pointers */
    uint32_t wrapper;
    int32_t frame;
    uint32_t last_frame;
    uint32_t reserved0;
    uint32_t area_size;  /* bytes of one partition's statistics area */
    uint32_t area_count; /* partition areas in the buffer, always 3 */
    uint64_t phys;       /* bus address of the buffer, 0 = none */
    void *virt;          /* mapped address of the buffer */
    uint32_t reserved1;
} JsonStatContext;

typedef struct JsonChnContext { /* blc, dpc, bl_det: 32 bytes */
    uint32_t wrapper[ISP_MAX_CHANNELS];
    int32_t frame;
    uint32_t last_frame;
} JsonChnContext;

typedef struct PipeContext {
    uint8_t pipe_id; /* first byte */
    IspPipeAttr attr;
    IspRegShadow *reg_shadow;
    JsonModuleContext *wrapper_slot[ISP_WRAPPER_SLOTS]; /* per hardware block: the creator's context */
    uint8_t bypass[8]; /* bit n: byte n / 8, bit n % 8; bits 0-35 used */
    int32_t channel_count;
    char case_path[ISP_CASE_PATH_SIZE]; /* "" = no case configured */
} PipeContext;

typedef struct JsonModuleHandle {
    PipeContext *pipe;
    void *priv;            /* the module's context; written by create and destroy only */
    uint32_t framework[4]; /* the framework's own */
    uint32_t trigger_arg;  /* passed through to the wrapper trigger */
} JsonModuleHandle;

typedef int32_t (*JsonModuleOp)(JsonModuleHandle *handle);
typedef struct JsonModuleOps {
    JsonModuleOp create, destroy, init, deinit, process, process2, trigger, sync;
    int32_t (*ctrl)(JsonModuleHandle *handle, uint32_t cmd, void *arg);
    int32_t (*set_param)(JsonModuleHandle *handle, void *param);
    int32_t (*get_param)(JsonModuleHandle *handle, void *param);
} JsonModuleOps;

#if defined(__SIZEOF_POINTER__) && __SIZEOF_POINTER__ == 4
#ifdef __cplusplus
#define ISP_STATIC_ASSERT static_assert
#else
#define ISP_STATIC_ASSERT _Static_assert
#endif
ISP_STATIC_ASSERT(sizeof(JsonModuleContext) == 12, "JsonModuleContext is 12 bytes");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonModuleContext, frame) == 4, "frame index is word 1");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonModuleContext, last_frame) == 8, "last frame is word 2");
/* The 64-bit physical address is 8-byte aligned under the ARM EABI; words 0-5 come before it,
 * so it lands on words 6-7 without padding and the whole context stays ten words. */
ISP_STATIC_ASSERT(sizeof(JsonStatContext) == 40, "statistics context is ten 32-bit words");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonStatContext, frame) == 4, "frame index is word 1");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonStatContext, last_frame) == 8, "last frame is word 2");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonStatContext, reserved0) == 12, "reserved is word 3");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonStatContext, area_size) == 16, "area size is word 4");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonStatContext, area_count) == 20, "area count is word 5");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonStatContext, phys) == 24, "physical address is words 6-7");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonStatContext, virt) == 32, "virtual address is word 8");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonStatContext, reserved1) == 36, "reserved is word 9");
ISP_STATIC_ASSERT(sizeof(JsonChnContext) == 32, "channelled context is eight 32-bit words");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonChnContext, frame) == 24, "frame index is word 6");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonChnContext, last_frame) == 28, "last frame is word 7");
ISP_STATIC_ASSERT(__builtin_offsetof(PipeContext, attr) == 1, "attribute block follows the pipe id");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonModuleHandle, priv) == 4, "private context is word 1");
ISP_STATIC_ASSERT(__builtin_offsetof(JsonModuleHandle, trigger_arg) == 24, "trigger argument is word 6");
ISP_STATIC_ASSERT(sizeof(JsonModuleOps) == 44, "eleven slots");
#endif

#ifdef __cplusplus
}
#endif

#endif
