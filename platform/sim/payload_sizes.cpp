/* The simulated wrapper's command table: the structure each setup command of a block carries,
 * from the module table, so that every push can be recorded as a byte copy of the structure. */
#include <string>

#include "isp_sim.h"
#include "modules/tables.h"

namespace isp_sim {

size_t payload_size(const std::string &block, uint32_t cmd) {
    const isp::group_desc *group = isp::find_pushed_group(block, cmd);
    return group ? group->size : 0;
}

}  // namespace isp_sim
