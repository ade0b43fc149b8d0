/* The pushed groups of a replay on disk, decoded and listed in a manifest, written step by step
 * so that a replay can hand over each step as it finishes. */
#ifndef ISP_CASE_DUMP_H
#define ISP_CASE_DUMP_H

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tools/core/run_record.h"
#include "tools/core/runner.h"
#include "tools/dump/manifest.h"
#include "tools/dump/store.h"

namespace isp_case {

/* Where a dump keeps its raw structures and what it writes beside them. */
struct dump_options {
    /* A store directory shared by several dumps (a baseline keeps one manifest per case under
     * DIR/<case>/ and one store in DIR): a structure repeated across the dumps is kept once.
     * Empty: the dump keeps its own store in its directory. */
    std::string shared_store;
    /* The manifest and the raw structures only: no decoded JSON, C-model files or index.txt
     * (the reader decodes the raw bytes when asked). */
    bool raw_only = false;
};

struct dump_summary {
    /* raw_objects: objects the dump added to its store (a shared store may have had them) */
    size_t pushes = 0, raw_objects = 0, decoded_files = 0, cmodel_files = 0;
    std::vector<std::string>
        problems; /* "<path>: <reason>": files not written, exporters raising */
};

/* Layout under dir, for a replay's pushes:
 *   manifest.json   written by finish(): the run, its verdict, and every push (a frame step
 *                   whose pushes are an earlier frame's, but for the step, as a reference to it)
 *   objects.pack, objects.idx  the store (store.h): each distinct structure's bytes once,
 *                   pointer members cleared, and the arrays behind pointer members; in a shared
 *                   store directory instead when dump_options::shared_store names one
 * and unless raw_only, for each distinct structure of a module, command and group:
 *   decoded/<module>/[chn<c>/]cmd<NN>_<group>-<key>.json   every member decoded
 *   ...-<key>.cmodel.json, or .p<P>.cmodel.json   the C-model export where the block has one
 *   index.txt       per step, which decoded file each push is
 * The directory must have been prepared (prepare_output_dir) and the replay must keep the pushed
 * bytes (replay_settings::keep_bytes). Nothing in it depends on the time or on host addresses;
 * a shared store written by several processes at once holds the same objects in an order that
 * depends on which came first. */
class dump_writer {
  public:
    dump_writer(const std::string &dir, const replay_settings &settings,
                const dump_options &options = {});
    ~dump_writer();
    dump_writer(const dump_writer &)            = delete;
    dump_writer &operator=(const dump_writer &) = delete;

    /* The pushes of one step. */
    void write_step(const replay_step &step);
    /* Writes the manifest with the run's verdict and findings; call once, after the last step.
     * False when it could not be written (a problem of the summary). */
    bool finish(const run_record &record, const verdict &judged);

    const dump_summary &summary() const { return summary_; }

  private:
    manifest_push write_push(const step_id &step, const module_step &m, const op_outcome &op,
                             const pushed_group &push);
    std::string raw(const std::vector<uint8_t> &bytes);
    void json(const std::string &relative, const picojson::value &value);
    void cmodel(const std::string &relative, const pushed_group &push, uint8_t partition,
                manifest_push &entry);
    void entry(const std::string &line);

    std::string dir_;
    dump_options options_;
    int partitions_;
    manifest manifest_;           /* without its pushes, which go to pushes_ as they come */
    std::FILE *pushes_ = nullptr; /* one line of JSON per entry: a long replay's manifest stays on
                                     disk, not in memory */
    std::FILE *index_ = nullptr;  /* index.txt */
    size_t entries_   = 0;
    std::unique_ptr<store_writer> store_;
    /* the decoded files written, by name without extension, with their C-model files */
    std::map<std::string, std::vector<std::string>> decoded_;
    std::map<std::string, int> frames_;   /* the first frame of each distinct list of pushes */
    std::vector<std::string> last_frame_; /* the last distinct frame's entries, without step */
    int last_frame_number_ = 0;
    dump_summary summary_;
};

/* The relative path of a push without extension: "frame1/wbc/cmd01_ctrl". */
std::string dump_name(const step_id &step, const module_info &module, const pushed_group &push);

}  // namespace isp_case

#endif
