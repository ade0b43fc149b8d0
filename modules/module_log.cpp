#include "modules/module_log.h"

#include <string>

#include "isp_platform.h"

namespace isp {
namespace {
const char *const k_tag = "ISP";
}

void log_code(const char *function, int line, int32_t code, const char *text) {
    QV_SYS_LogPrint(log_error, k_tag, 1, "[E][%32s][%4d]: Error [%x]: %s\n", function, line,
                    static_cast<uint32_t>(code), text);
}

void log_case_path_invalid(const char *function, int line) {
    QV_SYS_LogPrint(log_error, k_tag, 1, "[E][%32s][%4d]: case path invalid.\n", function, line);
}

void log_null_pointer(const char *function, int line) {
    QV_SYS_LogPrint(log_error, k_tag, 1, "[E][%32s][%4d]: Error: Pointer is null!\n", function,
                    line);
}

void log_already_allocated(const char *function, int line, const char *module) {
    /* the module name is part of the format itself, as in "cc context already calloc!" */
    std::string format = std::string("[W][%32s][%4d]: ") + module + " context already calloc!\n";
    QV_SYS_LogPrint(log_warning, k_tag, 1, format.c_str(), function, line);
}

void log_debug_text(const char *function, int line, const char *text) {
    QV_SYS_LogPrint(log_debug, k_tag, 1, "[D][%32s][%4d]: %s\n", function, line, text);
}

void log_dma_failure(const char *function, int line, uint32_t bytes, int32_t result) {
    QV_SYS_LogPrint(log_error, k_tag, 1,
                    "[E][%32s][%4d]: qv_hal_sys_mem_alloc_cached(%d) fail, retval=0x%x", function,
                    line, static_cast<int>(bytes), static_cast<uint32_t>(result));
}

}  // namespace isp
