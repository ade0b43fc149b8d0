/* The module table as data: the rows of modules.def expanded into the catalogue, the frame of
 * every module (one driver structure per group), its groups and converters, and the lookups the
 * tools make on them. */
#include "modules/tables.h"

#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <iterator>
#include <type_traits>

#include "isp_json.h"
#include "modules/module.h"

namespace isp {
namespace {

/* ---- frames: one structure per group, in the order of the group rows ----------------------- */
namespace frames {
/* Each module row closes the previous frame and opens its own; this one closes at the first. */
// clang-format off
struct before_first {
#define ISP_MODULE(mod, ...) }; struct mod {
#define ISP_GROUP(mod, member, type, ...) type member;
#define ISP_KEPT(mod, member, type, ...) type member;
#include "modules/modules.def"
};
// clang-format on
}  // namespace frames

/* ---- thunks ------------------------------------------------------------------------------- */
template <typename T, int (*convert)(picojson::object &, T *, uint8_t)>
int convert_as(picojson::object &root, void *structure, uint8_t partition) {
    return convert(root, static_cast<T *>(structure), partition);
}

/* A structure that points at partition-size arrays gets them for partitions 0 to partition,
 * and lets go of them afterwards. */
template <typename T, int (*convert)(picojson::object &, T *, uint8_t), bool sized>
int convert_alone_as(picojson::object &root, void *structure, uint8_t partition) {
    if constexpr (sized) {
        std::vector<uint16_t> size_h(partition + 1u), size_v(partition + 1u);
        T *out           = static_cast<T *>(structure);
        out->part_size_h = size_h.data();
        out->part_size_v = size_v.data();
        const int status = convert(root, out, partition);
        out->part_size_h = out->part_size_v = nullptr;
        return status;
    } else {
        return convert(root, static_cast<T *>(structure), partition);
    }
}

template <typename T, int (*exporter)(T *, picojson::object &, uint8_t)>
int export_as(void *structure, picojson::object &out, uint8_t partition) {
    return exporter(static_cast<T *>(structure), out, partition);
}

/* The exporter column holds an exporter or nullptr; chosen by the column's type, since the
 * sanitizers make a function's address no constant to compare with nullptr. */
constexpr export_fn exporter_or_none(std::nullptr_t, export_fn) {
    return nullptr;
}
template <typename F>
constexpr export_fn exporter_or_none(F *, export_fn thunk) {
    return thunk;
}

template <typename Group, uint32_t (Group::*table)[ISP_MAX_PARTITIONS]>
void write_address(void *group, uint8_t partition, uint32_t address) {
    (static_cast<Group *>(group)->*table)[partition] = address;
}

constexpr bool same(const char *a, const char *b) {
    while (*a != '\0' && *a == *b) ++a, ++b;
    return *a == *b;
}

const size_t k_none = static_cast<size_t>(-1);

/* ---- source lines of the log calls -------------------------------------------------------- */
/* the colour-correction module's, which every module but dehaze reports with */
constexpr log_lines cc_lines = {
    118, 120,               /* create: allocation, warning */
    209, 217, 221,          /* deinit: invalid, regio destroy, destroy */
    151, 163, 183, 190,     /* init: invalid, wrapper create, regio create, default setup */
    244, 250, 255,          /* trigger: invalid, case path, trigger */
    266,                    /* sync */
    46,  47,  48,  52,  58, /* loader: handle, pipe, context, case path, grid */
    94,  6,                 /* loader: first group push, step per group */
    72,                     /* statistics buffer allocation */
};
constexpr log_lines dehaze_lines = {
    132, 134, 223, 231, 235, 165, 177, 197, 204, 258, 264, 269, 280, 46, 47, 48, 52, 58, 94, 6, 72,
};

/* Status codes are written as the hardware documentation writes them. */
constexpr int32_t code(uint32_t value) {
    return static_cast<int32_t>(value);
}

/* ---- the module rows, by column name -------------------------------------------------------- */
constexpr enable_update in_sync = enable_update::in_sync, in_trigger = enable_update::in_trigger,
                        none  = enable_update::none;
constexpr module_kind generic = module_kind::generic, statistics = module_kind::statistics,
                      channelled = module_kind::channelled, pattern = module_kind::pattern;

/* The catalogue columns of a module row, in the order the rows name them. Codes are written as
 * the hardware documentation writes them, unsigned. */
struct module_row {
    const char *block;
    const char *file;
    uint32_t wrapper_type;
    uint8_t block_code[2];
    uint32_t depth[2];
    uint32_t mem_tag;
    uint32_t code_arg, code_hw, code_alloc;
    uint8_t bypass_bit, enable_bit;
    enable_update enable;
    module_kind kind;
    uint32_t code_grid     = 0;
    bool trigger_noop      = false;
    bool banner            = false;
    const log_lines *lines = &cc_lines;
    size_t pipeline;
};

constexpr module_row k_rows[] = {
#define ISP_MODULE(mod, ...) module_row{__VA_ARGS__},
#include "modules/modules.def"
};

constexpr const module_row &row_for(module_id id) {
    return k_rows[static_cast<size_t>(id)];
}

/* ---- which module each row belongs to ----------------------------------------------------- */
struct row_key {
    module_id module;
    const char *member;
};

constexpr row_key k_group_keys[] = {
#define ISP_GROUP(mod, member, ...) {module_id::mod, #member},
#define ISP_KEPT(mod, member, ...) {module_id::mod, #member},
#include "modules/modules.def"
};
constexpr row_key k_converter_keys[] = {
#define ISP_CONVERTER(mod, member, converter) {module_id::mod, #member},
#include "modules/modules.def"
};
constexpr row_key k_sized_groups[] = {
    {module_id::count, ""},
#define ISP_PARTITION_SIZES(mod, member) {module_id::mod, #member},
#include "modules/modules.def"
};
/* the partition-size helpers below know the one structure that points at the arrays */
#define ISP_PARTITION_SIZES(mod, member)                                               \
    static_assert(std::is_same_v<decltype(frames::mod::member), _isp_clc_user_init_t>, \
                  "partition-size arrays are attached to the colour-correction init group");
#include "modules/modules.def"
constexpr module_id k_stat_owners[] = {
#define ISP_STAT_BUFFER(mod, area) module_id::mod,
#include "modules/modules.def"
};
constexpr row_key k_stat_address_keys[] = {
#define ISP_STAT_ADDRESS(mod, member, table, offset) {module_id::mod, #member},
#include "modules/modules.def"
};

template <size_t n>
constexpr size_t first_of(const row_key (&keys)[n], module_id m) {
    for (size_t i = 0; i < n; ++i)
        if (keys[i].module == m) return i;
    return n;
}
template <size_t n>
constexpr size_t count_of(const row_key (&keys)[n], module_id m) {
    size_t count = 0;
    for (size_t i = 0; i < n; ++i) count += keys[i].module == m;
    return count;
}
template <size_t n>
constexpr size_t index_of(const row_key (&keys)[n], module_id m, const char *member) {
    for (size_t i = 0; i < n; ++i)
        if (keys[i].module == m && same(keys[i].member, member)) return i;
    return k_none;
}
/* The rows of one module follow its module row, so they are one run. */
template <size_t n>
constexpr bool in_runs(const row_key (&keys)[n]) {
    for (size_t i = 0; i < n; ++i)
        for (size_t j = i + 1; j < n; ++j)
            if (keys[j].module == keys[i].module && keys[j - 1].module != keys[i].module)
                return false;
    return true;
}
static_assert(in_runs(k_group_keys) && in_runs(k_converter_keys),
              "the group and converter rows of a module follow its module row");

constexpr size_t stat_index(module_id m) {
    for (size_t i = 0; i < std::size(k_stat_owners); ++i)
        if (k_stat_owners[i] == m) return i;
    return k_none;
}

constexpr bool one_position_each() {
    const size_t n = std::size(k_rows);
    for (size_t i = 0; i < n; ++i) {
        if (k_rows[i].pipeline >= n) return false;
        for (size_t j = i + 1; j < n; ++j)
            if (k_rows[i].pipeline == k_rows[j].pipeline) return false;
    }
    return true;
}
static_assert(one_position_each(), "every module has its own pipeline position");

/* ---- groups ------------------------------------------------------------------------------- */
#define ISP_GROUP_ROW(mod, member, type, cmd, message, exporter, reads) \
    {#member,                                                           \
     cmd,                                                               \
     message,                                                           \
     #type,                                                             \
     sizeof(type),                                                      \
     offsetof(frames::mod, member),                                     \
     exporter_or_none(exporter, &export_as<type, exporter>),            \
     same(#reads, "partition"),                                         \
     index_of(k_sized_groups, module_id::mod, #member) != k_none},
constexpr group_desc k_groups[] = {
#define ISP_GROUP(mod, member, type, cmd, message, exporter, reads) \
    ISP_GROUP_ROW(mod, member, type, cmd, message, exporter, reads)
#define ISP_KEPT(mod, member, type, exporter, reads) \
    ISP_GROUP_ROW(mod, member, type, 0, nullptr, exporter, reads)
#include "modules/modules.def"
};
#undef ISP_GROUP_ROW

/* ---- converters --------------------------------------------------------------------------- */
#define ISP_CONVERTER_ROW(mod, member, converter, raises)                            \
    {#converter,                                                                     \
     row_for(module_id::mod).block,                                                  \
     k_groups[index_of(k_group_keys, module_id::mod, #member)].c_type,               \
     sizeof(frames::mod::member),                                                    \
     &k_groups[index_of(k_group_keys, module_id::mod, #member)],                     \
     &convert_as<decltype(frames::mod::member), converter>,                          \
     &convert_alone_as<decltype(frames::mod::member), converter,                     \
                       index_of(k_sized_groups, module_id::mod, #member) != k_none>, \
     k_groups[index_of(k_group_keys, module_id::mod, #member)].exporter,             \
     raises},
constexpr converter_desc k_converters[] = {
#define ISP_CONVERTER(mod, member, converter) ISP_CONVERTER_ROW(mod, member, converter, false)
#define ISP_TABLE_CONVERTER(mod, member, converter) ISP_CONVERTER_ROW(mod, member, converter, true)
#include "modules/modules.def"
};
#undef ISP_CONVERTER_ROW

constexpr converter_desc k_spares[] = {
#define ISP_SPARE(block, type, converter, exporter)          \
    {#converter,                                             \
     block,                                                  \
     #type,                                                  \
     sizeof(type),                                           \
     nullptr,                                                \
     &convert_as<type, converter>,                           \
     &convert_as<type, converter>,                           \
     exporter_or_none(exporter, &export_as<type, exporter>), \
     false},
#include "modules/modules.def"
};

constexpr const char *k_blocks[] = {
#define ISP_BLOCK(name) #name,
#include "modules/modules.def"
};

/* ---- statistics buffers ------------------------------------------------------------------- */
constexpr stat_address k_stat_addresses[] = {
#define ISP_STAT_ADDRESS(mod, member, table, offset)                     \
    {&k_groups[index_of(k_group_keys, module_id::mod, #member)], offset, \
     &write_address<decltype(frames::mod::member), &decltype(frames::mod::member)::table>},
#include "modules/modules.def"
};

constexpr stat_buffer k_stat_buffers[] = {
#define ISP_STAT_BUFFER(mod, area)                                      \
    {area,                                                              \
     "vin_" #mod "%dx%d",                                               \
     {&k_stat_addresses[first_of(k_stat_address_keys, module_id::mod)], \
      count_of(k_stat_address_keys, module_id::mod)}},
#include "modules/modules.def"
};

}  // namespace

/* ---- the catalogue ------------------------------------------------------------------------ */
#define ISP_OP_NAMES(mod)                                                  \
    {                                                                      \
        "isp_" #mod "_json_mod_create", "isp_" #mod "_json_mod_destroy",   \
            "isp_" #mod "_json_mod_init", "isp_" #mod "_json_mod_deinit",  \
            "isp_" #mod "_json_mod_trigger", "isp_" #mod "_json_mod_sync", \
            "__" #mod "_json_param_setup", "__" #mod "_json_alloc_buf",    \
            "qv_isp_module_" #mod "_json_register"                         \
    }

const module_desc k_modules[] = {
#define ISP_MODULE(mod, ...)                                                                      \
    {#mod,                                                                                        \
     row_for(module_id::mod).block,                                                               \
     row_for(module_id::mod).file,                                                                \
     row_for(module_id::mod).wrapper_type,                                                        \
     {row_for(module_id::mod).block_code[0], row_for(module_id::mod).block_code[1]},              \
     {row_for(module_id::mod).depth[0], row_for(module_id::mod).depth[1]},                        \
     row_for(module_id::mod).mem_tag,                                                             \
     code(row_for(module_id::mod).code_arg),                                                      \
     code(row_for(module_id::mod).code_hw),                                                       \
     code(row_for(module_id::mod).code_alloc),                                                    \
     row_for(module_id::mod).bypass_bit,                                                          \
     row_for(module_id::mod).enable_bit,                                                          \
     row_for(module_id::mod).enable,                                                              \
     row_for(module_id::mod).kind,                                                                \
     code(row_for(module_id::mod).code_grid),                                                     \
     row_for(module_id::mod).trigger_noop,                                                        \
     row_for(module_id::mod).banner,                                                              \
     row_for(module_id::mod).lines,                                                               \
     row_for(module_id::mod).pipeline,                                                            \
     ISP_OP_NAMES(mod),                                                                           \
     sizeof(frames::mod),                                                                         \
     {&k_groups[first_of(k_group_keys, module_id::mod)], count_of(k_group_keys, module_id::mod)}, \
     {&k_converters[first_of(k_converter_keys, module_id::mod)],                                  \
      count_of(k_converter_keys, module_id::mod)},                                                \
     stat_index(module_id::mod) == k_none ? nullptr                                               \
                                          : &k_stat_buffers[stat_index(module_id::mod)]},
#include "modules/modules.def"
};
#undef ISP_OP_NAMES

/* A module has a sync operation exactly when it updates its enable bit in sync; the declarations
 * of the exported operations must say the same. */
namespace {
#define ISP_DECLARED_WITH_SYNC(mod) constexpr bool declares_sync_##mod = true;
#define ISP_DECLARED_NO_SYNC(mod) constexpr bool declares_sync_##mod = false;
ISP_JSON_MODULE_LIST(ISP_DECLARED_WITH_SYNC, ISP_DECLARED_NO_SYNC)
#undef ISP_DECLARED_WITH_SYNC
#undef ISP_DECLARED_NO_SYNC
#define ISP_MODULE(mod, ...)                                                          \
    static_assert(declares_sync_##mod == (row_for(module_id::mod).enable == in_sync), \
                  #mod ": a sync operation exactly when the enable bit follows in sync");
#include "modules/modules.def"
}  // namespace

/* ---- lookups ------------------------------------------------------------------------------ */
rows<module_desc> modules() {
    return {k_modules, std::size(k_modules)};
}

const module_desc *find_module(const std::string &name) {
    for (const module_desc &m : modules())
        if (name == m.name) return &m;
    return nullptr;
}

const std::vector<const module_desc *> &pipeline_order() {
    static const std::vector<const module_desc *> order = [] {
        std::vector<const module_desc *> sorted;
        for (const module_desc &m : modules()) sorted.push_back(&m);
        std::sort(sorted.begin(), sorted.end(), [](const module_desc *a, const module_desc *b) {
            return a->pipeline < b->pipeline;
        });
        return sorted;
    }();
    return order;
}

rows<const char *> blocks() {
    return {k_blocks, std::size(k_blocks)};
}

const group_desc *find_pushed_group(const std::string &block, uint32_t cmd) {
    if (cmd == 0) return nullptr;
    for (const module_desc &m : modules()) {
        if (block != m.block) continue;
        for (const group_desc &g : m.groups)
            if (g.cmd == cmd) return &g;
    }
    return nullptr;
}

std::vector<const converter_desc *> block_converters(const std::string &block) {
    std::vector<const converter_desc *> found;
    auto add = [&](const converter_desc &c) {
        for (const converter_desc *seen : found)
            if (strcmp(seen->name, c.name) == 0 && strcmp(seen->c_type, c.c_type) == 0) return;
        found.push_back(&c);
    };
    for (const module_desc &m : modules())
        if (block == m.block)
            for (const converter_desc &c : m.converters) add(c);
    for (const converter_desc &c : k_spares)
        if (block == c.block) add(c);
    return found;
}

file_kind file_kind_of(const module_desc &m) {
    switch (m.kind) {
        case module_kind::channelled:
            return file_kind::per_channel;
        case module_kind::pattern:
            return file_kind::pattern;
        default:
            return file_kind::per_frame;
    }
}

std::string relative_file(const module_desc &m, int frame, int partition, int channel) {
    /* every pattern starts with the case directory's "%s/" */
    const char *pattern = m.file_pattern + strlen("%s/");
    char path[256];
    switch (file_kind_of(m)) {
        case file_kind::pattern:
            snprintf(path, sizeof path, pattern, partition);
            break;
        case file_kind::per_channel:
            snprintf(path, sizeof path, pattern, frame, partition, channel);
            break;
        default:
            snprintf(path, sizeof path, pattern, frame, partition);
            break;
    }
    return path;
}

/* ---- partition sizes ---------------------------------------------------------------------- */
size_t partition_size_bytes(size_t partitions) {
    return 2 * ((partitions * sizeof(uint16_t) + 7) / 8 * 8);
}

void attach_partition_sizes(const group_desc &g, void *structure, void *arrays, size_t partitions) {
    if (!g.partition_sizes) return;
    _isp_clc_user_init_t *init = static_cast<_isp_clc_user_init_t *>(structure);
    unsigned char *bytes       = static_cast<unsigned char *>(arrays);
    init->part_size_h          = reinterpret_cast<uint16_t *>(bytes);
    init->part_size_v = reinterpret_cast<uint16_t *>(bytes + partition_size_bytes(partitions) / 2);
}

bool copy_partition_sizes(const group_desc &g, const void *structure, size_t count,
                          std::vector<uint8_t> &h, std::vector<uint8_t> &v) {
    if (!g.partition_sizes) return false;
    const _isp_clc_user_init_t *init = static_cast<const _isp_clc_user_init_t *>(structure);
    auto copy = [count](const uint16_t *values, std::vector<uint8_t> &bytes) {
        bytes.assign(count * sizeof(uint16_t), 0);
        if (values) memcpy(bytes.data(), values, bytes.size());
    };
    copy(init->part_size_h, h);
    copy(init->part_size_v, v);
    return true;
}

}  // namespace isp
