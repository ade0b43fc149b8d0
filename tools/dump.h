/* The pushed groups of a replay on disk: raw bytes for every push and, where the block has an
 * exporter, the C-model JSON of what was pushed. */
#ifndef ISP_CASE_DUMP_H
#define ISP_CASE_DUMP_H

#include <memory>
#include <string>
#include <vector>

#include "tools/replay.h"

namespace isp_case {

struct dump_summary {
    size_t raw_files = 0, cmodel_files = 0;
    std::vector<std::string> problems; /* files that could not be written, exporters that raised */
};

class dump_writer;

/* Every pushed group of a replay, written step by step while it runs. Layout under dir:
 * <step>/<module>/[chn<c>/]cmd<NN>_<group>.bin with <step> "init", "frame0", "frame1", ...; beside
 * it <same name>.json, or <same name>.p<P>.json per partition for groups whose exporter reads one
 * partition; for the colour-correction init group also the arrays its pointers lead to, <same
 * name>.part_size_h.bin and .part_size_v.bin. The replay must keep the pushed bytes
 * (replay_settings::keep_bytes). */
class dump_stream {
  public:
    dump_stream(const std::string &dir, const replay_settings &settings);
    ~dump_stream();
    dump_stream(const dump_stream &)            = delete;
    dump_stream &operator=(const dump_stream &) = delete;

    void write(const replay_step &step);
    dump_summary summary() const;

  private:
    std::unique_ptr<dump_writer> writer_;
};

/* The relative path of a push without extension: "frame0/wbc/cmd01_ctrl". */
std::string dump_name(const std::string &step, const module_info &module, const pushed_group &push);

}  // namespace isp_case

#endif
