/* The one reader of dump directories, for diff, report and whatever compares runs: the manifest
 * (the current layout and the one before it) checked against the files it lists, and each push's
 * decoded members checked against its raw bytes when the push is read. A recording (made on the
 * board by the preloaded recorder) is a dump whose pushes have raw bytes only: they are decoded
 * when read. */
#ifndef ISP_CASE_DUMP_READER_H
#define ISP_CASE_DUMP_READER_H

#include <stddef.h>
#include <stdint.h>

#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <picojson.h>

#include "tools/core/case_layout.h"
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

/* A dump's pushes in replay order, held flat in the number of steps: each push the manifest
 * lists is kept once, and a push of a repeated frame is a reference to the one it repeats (4
 * bytes), given back with its own step when read. */
class push_list {
  public:
    size_t size() const { return refs_.size(); }
    bool empty() const { return refs_.empty(); }
    /* push i with its step: a copy */
    dump_push operator[](size_t i) const;
    /* push i as listed (its step may be an earlier one it repeats) */
    const dump_push &listed(size_t i) const { return listed_[refs_[i]]; }
    /* which listed push push i is: equal numbers, equal pushes but for the step */
    size_t listed_index(size_t i) const { return refs_[i]; }
    const step_id &step(size_t i) const;
    /* the pushes of the manifest, each once, in the order they first come */
    const std::vector<dump_push> &all_listed() const { return listed_; }
    std::vector<dump_push> &all_listed() { return listed_; }
    /* runs of consecutive pushes of one step: the first push of each and its step */
    struct span {
        size_t first;
        step_id step;
    };
    const std::vector<span> &spans() const { return spans_; }
    /* pushes [first, end) of span s */
    size_t span_end(size_t s) const;

    /* a push the manifest lists, at its step */
    void add(dump_push push);
    /* push i again, at step */
    void repeat(size_t i, const step_id &step);
    /* push i becomes a push the manifest lists, at its step */
    void replace(size_t i, dump_push push);
    /* f(step) on every step held: a version 1 manifest's directories, known at the end */
    template <class F>
    void each_step(F f) {
        for (dump_push &p : listed_) f(p.step);
        for (span &s : spans_) f(s.step);
    }

    class iterator {
      public:
        using value_type        = dump_push;
        using difference_type   = ptrdiff_t;
        using reference         = dump_push;
        using pointer           = void;
        using iterator_category = std::input_iterator_tag;
        iterator(const push_list *list, size_t i) : list_(list), i_(i) {}
        dump_push operator*() const { return (*list_)[i_]; }
        iterator &operator++() { return ++i_, *this; }
        bool operator!=(const iterator &o) const { return i_ != o.i_; }
        bool operator==(const iterator &o) const { return i_ == o.i_; }

      private:
        const push_list *list_;
        size_t i_;
    };
    iterator begin() const { return {this, 0}; }
    iterator end() const { return {this, size()}; }

  private:
    void at_step(const step_id &step);
    std::vector<dump_push> listed_;
    std::vector<uint32_t> refs_;
    std::vector<span> spans_;
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
    std::vector<applied_override> overrides; /* values set for the run; older manifests: none */
    dump_verdict verdict;
    picojson::array findings;       /* as `check --format json` writes them */
    size_t findings_not_listed = 0; /* beyond those, counted only */
    push_list pushes;
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
