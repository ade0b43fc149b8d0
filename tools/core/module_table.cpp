/* The tool's view of the library's module table: one group per converter, the blocks' converters
 * in the order their modules run them. */
#include "tools/core/module_table.h"

#include <string.h>

#include <map>

namespace isp_case {
namespace {

/* A converter's name in the tool: its group's, or, for a converter that fills only part of
 * another group, what its own name says ("noise_profile" of rtl_to_drv_hdr_noise_profile). */
const char *converter_label(const isp::converter_desc &c) {
    const size_t name = strlen(c.name), group = strlen(c.group->name);
    if (name >= group && strcmp(c.name + name - group, c.group->name) == 0) return c.group->name;
    return c.name + strlen("rtl_to_drv_") + strlen(c.block) + 1;
}

struct tables {
    std::vector<module_info> modules;
    std::map<std::string, std::vector<group_info>> blocks;
};

const tables &read_tables() {
    static const tables t = [] {
        tables t;
        for (const isp::module_desc *m : isp::pipeline_order()) {
            module_info info{m->name,
                             m->block,
                             m->file_pattern + strlen("%s/"),
                             isp::file_kind_of(*m),
                             isp::registration_of(*m),
                             m->enable == enable_update::none ? -1 : m->bypass_bit,
                             m->enable == enable_update::none ? -1 : m->enable_bit,
                             m->enable,
                             m->code_grid != 0,
                             {}};
            for (const isp::converter_desc &c : m->converters)
                info.converters.push_back(converter_label(c));
            t.modules.push_back(info);
        }
        for (const isp::module_desc &m : isp::modules()) {
            std::vector<group_info> &groups = t.blocks[m.block];
            for (const isp::converter_desc *c : isp::block_converters(m.block)) {
                if (!c->group) continue;
                const char *label = converter_label(*c);
                bool known        = false;
                for (const group_info &g : groups) known |= strcmp(g.name, label) == 0;
                if (!known)
                    groups.push_back({label, label == c->group->name ? c->group->cmd : 0, c->size,
                                      c->convert_alone, c->name, c->exporter,
                                      c->group->export_per_partition, c->c_type,
                                      c->group->partition_sizes});
            }
        }
        return t;
    }();
    return t;
}

}  // namespace

const std::vector<module_info> &modules() {
    return read_tables().modules;
}

const module_info *find_module(const std::string &name) {
    for (const module_info &m : modules())
        if (name == m.name) return &m;
    return nullptr;
}

const group_info *find_group(const std::string &block, const std::string &name) {
    auto it = read_tables().blocks.find(block);
    if (it == read_tables().blocks.end()) return nullptr;
    for (const group_info &g : it->second)
        if (name == g.name) return &g;
    return nullptr;
}

const group_info *find_pushed_group(const std::string &block, uint32_t cmd) {
    auto it = read_tables().blocks.find(block);
    if (it == read_tables().blocks.end() || cmd == 0) return nullptr;
    for (const group_info &g : it->second)
        if (g.cmd == cmd) return &g;
    return nullptr;
}

std::vector<const group_info *> exported_groups(const std::string &block) {
    std::vector<const group_info *> groups;
    auto it = read_tables().blocks.find(block);
    if (it == read_tables().blocks.end()) return groups;
    for (const group_info &g : it->second)
        if (g.exporter) groups.push_back(&g);
    return groups;
}

const std::vector<std::string> &exporting_blocks() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> names;
        for (const char *block : isp::blocks())
            if (!exported_groups(block).empty()) names.push_back(block);
        return names;
    }();
    return names;
}

std::string relative_file(const module_info &module, int frame, int partition, int channel) {
    return isp::relative_file(*isp::find_module(module.name), frame, partition, channel);
}

}  // namespace isp_case
