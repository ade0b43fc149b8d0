/* A case directory as the library sees it: which frame directories it would step through, how
 * many partitions and channels its files cover, and which files a replay reads, in order. */
#ifndef ISP_CASE_CASE_LAYOUT_H
#define ISP_CASE_CASE_LAYOUT_H

#include <string>
#include <vector>

#include "tools/core/module_table.h"

namespace isp_case {

/* What a case directory holds, found by looking at it. */
struct case_contents {
    int frames = 0;                    /* consecutive frame directories cfgs/f0, cfgs/f1, ... */
    std::vector<int> unreached;        /* frame directories after the first gap: never read */
    std::vector<std::string> misnamed; /* "f01": a number the library never formats so */
    int partitions    = 0;             /* highest partition index of any file in f0, plus one */
    int channels      = 0;             /* highest channel index of any file in f0, plus one */
    int pattern_files = 0;             /* isp_nrlite_ptn_<p>.json in the case directory */
};

case_contents discover(const std::string &case_path);

/* A register value set from the command line, as a run lists it. */
struct applied_override {
    std::string set;   /* as given: "f3-5:isp_wbc.d_gain.val=1.5" */
    double value  = 0; /* the real value the files now hold */
    long long raw = 0; /* the integer written into them */
    int files     = 0;
};

/* How a replay drives the modules: the pipe's grid and channel count, the number of frames
 * (process, trigger and sync cycles after init) and the modules, in the order they run. */
struct run_settings {
    std::string case_path;
    /* where the files are read when values were set: an overlay of the case, which findings
     * never name; empty: the case itself */
    std::string files_at;
    std::vector<applied_override> overrides;
    int part_h = 1, part_v = 1;
    int channels = 1;
    int frames   = 1;
    std::vector<const module_info *> modules;

    const std::string &read_root() const { return files_at.empty() ? case_path : files_at; }
};

/* The grid with h * v = partitions that is closest to square, h >= v (4 gives 2x2, 6 gives
 * 3x2); 1x1 for no partitions. */
void default_grid(int partitions, int &part_h, int &part_v);

/* One register file a replay reads, with every module that reads it. */
struct planned_file {
    std::string relative; /* "cfgs/f0/rtl_wbc_p0.json" */
    int partition = 0;
    int frame     = -1; /* -1 for pattern files, which every load reads */
    int channel   = 0;
    std::vector<const module_info *> readers;
};

/* The files that init and the processes of every module read, in the order of their first
 * read, each once. Frame steps follow the library: a load moves on to the next frame directory
 * when it exists and freezes on the last one otherwise, per channel for channelled modules. */
std::vector<planned_file> plan_reads(const run_settings &settings);

/* The frame directories that the loads of one module read, one entry per load and channel,
 * stepping as the library does. */
std::vector<int> frames_stepped(const std::string &case_path, int loads, int channels_per_load);

std::string join_path(const std::string &dir, const std::string &relative);
bool is_directory(const std::string &path);

}  // namespace isp_case

#endif
