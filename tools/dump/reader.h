/* A dump directory as the report reads it: the run's facts from its manifest and, for every
 * push, the decoded members of the pushed structure. */
#ifndef ISP_CASE_REPORT_DUMP_VIEW_H
#define ISP_CASE_REPORT_DUMP_VIEW_H

#include <string>
#include <vector>

#include "tools/dump/manifest.h"

namespace isp_case {
namespace report {

/* One member of a pushed structure as its decoded file gives it. Per-partition members hold the
 * grid's partitions only; a pointer holds the array it leads to. */
struct member_view {
    std::string name;
    std::string format;     /* "u8.4"; empty where no register row reads the member */
    std::string location;   /* the register path; empty likewise */
    unsigned count     = 1; /* elements in the structure */
    bool scalar        = true;
    bool per_partition = false;
    bool pointer       = false;
    std::vector<double> codes;
    std::vector<double> values; /* real values; empty without a format */
};

struct push_view {
    step_id id;
    std::string step;   /* its directory in the dump: "setup", "frame1", ... */
    std::string module; /* "gamma" */
    std::string block;  /* "gamma"; "clc" for cc */
    int channel = -1;   /* -1 for the modules without channels */
    int command = 0;
    std::string group, type;
    size_t size = 0;
    std::vector<std::string> sources; /* register files, relative to the case */
    std::string file;                 /* the raw bytes, relative to the dump */
    std::string problem;              /* why the structure has no members, if it has none */
    std::vector<member_view> members;
    const member_view *member(const std::string &name) const;
};

struct dump_view {
    std::string dir;
    manifest facts;                 /* pushes moved to `pushes`; the verdict and findings */
    std::vector<std::string> steps; /* in replay order */
    std::vector<push_view> pushes;  /* in replay order */
};

/* Reads dir/manifest.json and the decoded file of every push it lists. Returns false with a
 * message naming the file when either cannot be read. */
bool load_dump(const std::string &dir, dump_view &out, std::string &error);

}  // namespace report
}  // namespace isp_case

#endif
