/* Every report of the modules goes through these, as one QV_SYS_LogPrint call. */
#ifndef ISP_MODULE_LOG_H
#define ISP_MODULE_LOG_H

#include <stdint.h>

namespace isp {

enum log_level : int32_t { log_error = 3, log_warning = 4, log_debug = 7 };

void log_code(const char *function, int line, int32_t code, const char *text);
void log_case_path_invalid(const char *function, int line);
void log_null_pointer(const char *function, int line);
void log_already_allocated(const char *function, int line, const char *module);
void log_debug_text(const char *function, int line, const char *text);
void log_dma_failure(const char *function, int line, uint32_t bytes, int32_t result);

}  // namespace isp

#endif
