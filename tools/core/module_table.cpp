/* The answers the tool asks of the library's module table. */
#include "tools/core/module_table.h"

namespace isp_case {

int bypass_bit_of(const module_info &module) {
    return module.enable == enable_update::none ? -1 : module.bypass_bit;
}

int enable_bit_of(const module_info &module) {
    return module.enable == enable_update::none ? -1 : module.enable_bit;
}

std::vector<const converter_info *> exported_converters(const std::string &block) {
    std::vector<const converter_info *> converters;
    for (const converter_info *c : isp::block_converters(block))
        if (c->group && c->exporter) converters.push_back(c);
    return converters;
}

const std::vector<std::string> &exporting_blocks() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> names;
        for (const char *block : isp::blocks())
            if (!exported_converters(block).empty()) names.push_back(block);
        return names;
    }();
    return names;
}

}  // namespace isp_case
