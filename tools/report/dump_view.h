/* A dump directory as the report reads it: the run's facts and, for every push, the members of
 * the pushed structure. */
#ifndef ISP_CASE_REPORT_DUMP_VIEW_H
#define ISP_CASE_REPORT_DUMP_VIEW_H

#include <string>
#include <vector>

namespace isp_case {
namespace report {

/* One member of a pushed structure. Arrays are flattened in index order with their shape kept;
 * per-partition members hold one element per partition of the grid (of each sub-array). */
struct member_view {
    std::string name;
    std::string format;        /* "u8.4"; empty for raw values and host addresses */
    std::vector<size_t> shape; /* empty for a scalar */
    bool per_partition = false;
    std::vector<double> codes, values;
};

struct push_view {
    std::string step;   /* "init", "frame0", ... */
    std::string module; /* "gamma" */
    int channel = -1;   /* -1 for the modules without channels */
    int command = 0;
    std::string group, type;
    size_t size = 0;
    std::vector<std::string> sources; /* register files, relative to the case */
    std::string file;                 /* the raw bytes, relative to the dump */
    std::vector<member_view> members;
    const member_view *member(const std::string &name) const;
};

struct dump_view {
    std::string dir;
    std::string tool_version, library_version, case_path;
    int part_h = 0, part_v = 0, channels = 0, frames = 0;
    std::vector<std::string> modules;
    std::vector<std::string> steps; /* in replay order */
    std::vector<push_view> pushes;  /* in replay order */
    std::vector<std::string> failures, warnings;

    const push_view *find(const std::string &step, const std::string &module,
                          const std::string &group, int channel = -1) const;
};

/* Reads a dump: every <step>/<module>/[chn<c>/]cmd<NN>_<group>.bin, the members of its C-model
 * JSON where the block has an exporter and its raw tables or words otherwise; the run's facts
 * from manifest.json where there is one. Returns false with a message naming the directory when
 * it is not a dump. */
bool load_dump(const std::string &dir, dump_view &out, std::string &error);

}  // namespace report
}  // namespace isp_case

#endif
