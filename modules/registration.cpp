/* The registration function of every module, apart from the rest of the table: a program that
 * reads only sizes and names does not link the modules. */
#include "isp_json_modules.h"
#include "modules/tables.h"

namespace isp {

registration_fn registration_of(const module_desc &m) {
    static const registration_fn k_registrations[] = {
#define ISP_MODULE(mod, ...) &qv_isp_module_##mod##_json_register,
#include "modules/modules.def"
    };
    return k_registrations[&m - modules().begin()];
}

}  // namespace isp
