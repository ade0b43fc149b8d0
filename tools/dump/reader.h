/* The one reader of dump directories, for diff, report and whatever compares runs: the manifest
 * (the current layout and the one before it) checked against the files it lists, and each push's
 * decoded members checked against its raw bytes when the push is read. A recording (made on the
 * board by the preloaded recorder) is a dump whose pushes have raw bytes only: they are decoded
 * when read. */
#ifndef ISP_CASE_DUMP_READER_H
#define ISP_CASE_DUMP_READER_H

#include <stddef.h>
#include <stdint.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <picojson.h>

#include "tools/core/step.h"
#include "tools/dump/store.h"

namespace isp_case {

/* A dump that cannot be used as it is: the message names the file and what is wrong. Commands
 * end with exit status 3 on it. */
struct dump_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* A register file a push was converted from. */
struct dump_source {
    int partition = 0, channel = 0;
    std::string file; /* relative to the case directory: "cfgs/f1/rtl_wbc_p3.json" */
};

/* One push as the manifest lists it. */
struct dump_push {
    step_id step;
    std::string module, block; /* "cc", "clc" */
    int channel      = 0;
    bool channelled  = false; /* the module keeps one directory per channel */
    uint32_t command = 0;
    std::string group, type; /* empty for a command or type the tool does not know */
    size_t size = 0;         /* bytes pushed */
    std::vector<dump_source> sources;
    std::string bin, json;            /* relative to the dump; json empty in a recording */
    std::vector<std::string> cmodel;  /* C-model files */
    std::vector<std::string> targets; /* raw arrays behind pointer members */
    /* version 3: the store's keys of its bytes and of the arrays behind pointer members (by
     * member), in place of bin and targets; json empty in a raw-only dump */
    std::string object;
    std::vector<std::pair<std::string, std::string>> pointees;
};

/* One member of a pushed structure as its decoded file gives it. Per-partition members hold the
 * grid's partitions only; a pointer holds the array it leads to. */
struct dump_member {
    std::string name;
    std::string format;     /* "u8.4"; empty where no register row reads the member */
    std::string location;   /* its register path; empty likewise */
    unsigned count     = 1; /* elements in the structure */
    bool scalar        = true;
    bool per_partition = false;
    bool pointer       = false;
    std::vector<double> codes;
    std::vector<double> values; /* real values (NaN where none is finite); empty without format */
    std::vector<std::string> locations; /* each element's register path, where the file names
                                         * them (dumps written before elements had their own) */
};

/* A push's structure: its members, or why it has none, and its raw bytes. */
struct decoded_push {
    std::string problem;
    std::vector<dump_member> members;
    std::string bytes; /* the .bin file, pointer members cleared */
    const dump_member *member(const std::string &name) const;
};

/* The verdict a run recorded (manifest version 2). */
struct dump_verdict {
    bool recorded = false;
    std::string result, text; /* "not clean", "not clean: 2 warnings" */
    int errors = 0, warnings = 0;
    bool strict = false;
};

struct dump {
    std::string dir;
    int version    = 0;     /* of the manifest */
    bool recording = false; /* raw bytes only, decoded when read */
    std::string tool, library, case_path;
    int part_h = 0, part_v = 0, channels = 0, frames = 0;
    unsigned pointer_bytes = 0;
    std::vector<std::string> modules, bypass;
    dump_verdict verdict;
    picojson::array findings;       /* as `check --format json` writes them */
    size_t findings_not_listed = 0; /* beyond those, counted only */
    std::vector<dump_push> pushes;
    std::vector<step_id> steps; /* in replay order */
    std::string store_dir;      /* version 3: the store, relative to dir (or absolute) */
    store_reader store;         /* its index; objects are read one at a time */

    int partitions() const { return part_h * part_v; }
};

/* Reads dir/manifest.json and checks the dump is whole: every file it lists is there, every .bin
 * (or stored object) has the size its push has, every object it names is in its store and lies
 * inside the pack, and the pushes agree with the grid, channels and frames the manifest states.
 * A repeated step comes back as the pushes of the step it repeats. */
dump open_dump(const std::string &dir);

/* The decoded members of one push, checked against its raw bytes (and the arrays behind its
 * pointers): a .json that does not decode from its .bin is an error naming both, a stored
 * object that does not match its key one naming the pack. A push without a .json (a
 * recording's, a raw-only dump's) is decoded from its raw bytes. */
decoded_push read_push(const dump &d, const dump_push &push);

/* The file a person opens for a push: its .bin, or in a store's dump its decoded file (empty in
 * a raw-only one). */
std::string push_file(const dump_push &push);

/* "frame 1 (f1)", "setup (f0)", "frame 5 (f3 again)", "teardown": a step with the frame
 * directory it read. */
std::string step_label(const step_id &step);

/* Whether a step is the one `--frame N` means: frame N, the cycle that read cfgs/fN, or setup
 * for N = 0 (setup reads cfgs/f0). */
bool is_frame_step(const step_id &step, int frame);
/* That step of a dump, or null. */
const step_id *find_frame(const dump &d, int frame);

}  // namespace isp_case

#endif
