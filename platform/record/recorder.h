/* The recorder preloaded into a process that runs the library: what the library hands the
 * hardware wrapper, written as a recording the workstation tool reads as it reads a dump. The
 * interposed functions (interpose.cpp) forward every call unchanged and tell the recorder what
 * passed; the recorder never changes an argument or a result. */
#ifndef ISP_RECORD_RECORDER_H
#define ISP_RECORD_RECORDER_H

#include <stdint.h>

#include "isp_platform.h"
#include "modules/tables.h"
#include "tools/core/step.h"

namespace isp_record {

/* The operations a wrapped operations table attributes its calls to. */
enum class op { create, destroy, init, deinit, process, trigger, sync };

/* What the wrapper calls of a wrapped operation belong to. */
struct attribution {
    const isp::module_desc *module = nullptr;
    isp_case::step_id step;
};

/* While a wrapped operation runs on a thread: the module and step its wrapper calls belong to.
 * Nested operations restore the outer one. */
class op_scope {
  public:
    op_scope(const isp::module_desc &module, op kind, const JsonModuleHandle *handle);
    ~op_scope();
    op_scope(const op_scope &)            = delete;
    op_scope &operator=(const op_scope &) = delete;

  private:
    attribution now_;
    const attribution *outer_;
};

/* A module's operations table as the library handed it, and the table the framework gets in its
 * place. */
void registered(const isp::module_desc &module, JsonModuleOps *real, const void *library_symbol);

void wrapper_created(uint32_t handle, const VinHalWrapperAttr *attr);
void regio_created(uint32_t handle, const VinHalRegioAttr *attr);
void wrapper_destroyed(uint32_t handle);
/* A push the wrapper accepted. */
void pushed(uint32_t handle, const VinHalSetupCmd *cmd);

}  // namespace isp_record

#endif
