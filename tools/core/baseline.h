/* Regression baselines: the runs of a suite stored as dumps, one directory per case under the
 * baseline directory (named by the case's name in the suite), and a fresh run of a case
 * compared with its stored one through the comparison engine, reduced to what a batch reports:
 * whether it differs, the first divergence in register terms and how many more. */
#ifndef ISP_CASE_BASELINE_H
#define ISP_CASE_BASELINE_H

#include <stddef.h>

#include <optional>
#include <string>
#include <vector>

#include <picojson.h>

#include "tools/core/enum_list.h"
#include "tools/output/json.h"

namespace isp_case {

struct difference;
struct dump;
struct replay_step;

/* What a batch does with a baseline directory. */
#define ISP_CASE_BASELINE_MODES(X) X(none, "none") X(save, "save") X(compare, "compare")
ISP_CASE_ENUM(baseline_mode, ISP_CASE_BASELINE_MODES);

struct baseline_settings {
    baseline_mode mode = baseline_mode::none;
    std::string dir;
    double tolerance = 0.0;
    std::vector<std::string> ignore; /* globs over module.group.member */
    bool update = false;             /* rewrite the stored runs that differ, add missing ones */
};

/* The first difference of a run from its stored one, as both sides have it: "a" is the
 * baseline, "b" the run of this build; with its line in register terms (first_divergence_text,
 * how many more included), made where the dumps are at hand. */
struct divergence_fields {
    std::string kind; /* the engine's name of the difference: "code", "value", "push_only_in_a" */
    std::string step, frame_dir;       /* "frame 2", "f2"; frame_dir empty for teardown */
    std::string module, group, member; /* member empty for a whole push */
    long element = -1;                 /* -1 for a scalar or the whole member */
    std::string register_path;
    std::vector<std::string> files; /* the register files the element came from */
    std::optional<double> code_a, code_b, value_a, value_b;
    std::string text;
};
divergence_fields divergence_of(const difference &d, size_t more);

#define ISP_CASE_BASELINE_STATES(X)                                               \
    X(none, "none")                                                               \
    X(saved, "saved") /* --save-baseline wrote it */                              \
    X(same, "same")   /* nothing differs */                                       \
    X(differs, "differs")                                                         \
    X(missing, "not in baseline") /* the baseline has no such case */             \
    X(unreadable, "unreadable")   /* a stored or fresh run that cannot be read */ \
    X(updated, "updated")         /* it differed and was rewritten */             \
    X(added, "added")             /* it was missing and was stored */
ISP_CASE_ENUM(baseline_state, ISP_CASE_BASELINE_STATES);

/* What a case's run came to against the baseline. */
struct baseline_outcome {
    baseline_state state = baseline_state::none;
    size_t differences   = 0; /* every difference not ignored */
    std::optional<divergence_fields> first;
    std::string problem; /* why a run could not be saved or read */
};

/* "baseline: ..." for the failure reason of a case that differs, is not in the baseline or
 * cannot be compared; empty for one that passes (the same, saved, rewritten): the verdict. */
std::string baseline_reason(const baseline_outcome &outcome);

/* Its JSON, members in the documented order. */
json_fields baseline_outcome_json(const baseline_outcome &outcome);
bool baseline_outcome_from_json(const picojson::value &value, baseline_outcome &out);

/* Whether a member (module.group.member) is left out by one of the globs. */
bool ignored_member(const std::vector<std::string> &globs, const std::string &module,
                    const std::string &group, const std::string &member);
/* The globs of a file, one per line, blank lines and # comments skipped; false with a message
 * when it cannot be read. */
bool read_ignore_file(const std::string &path, std::vector<std::string> &globs, std::string &error);

/* The run stored in stored_dir (a case's directory of the baseline) against the fresh dump:
 * same, differs (with the first divergence), not in baseline, or unreadable. */
baseline_outcome compare_with_baseline(const std::string &stored_dir, const std::string &fresh_dir,
                                       const baseline_settings &settings);

/* Whether two runs of stores push the same objects (by their keys, the SHA-256 of their bytes)
 * in the same order. Identical bytes are identical runs: the comparison decodes both sides by
 * this build's tables, so only runs whose objects differ need the engine to say where and how.
 * False where a run names no keys (a dump from before the store): the engine decides then. */
bool same_objects(const dump &stored, const dump &run);

/* Where a case's run lies in a baseline directory: its name in the suite, without the parts
 * that would lead out of the directory ("/", ".", ".."), as a case given by its path is named:
 * "/data/cases/night" is stored as "data/cases/night". */
std::string baseline_case_dir(const std::string &baseline_dir, const std::string &case_name);

/* The names of the cases a baseline directory holds: every directory with a manifest.json,
 * relative to dir, sorted; a stored run's own directories are not searched. */
std::vector<std::string> baseline_cases(const std::string &dir);

}  // namespace isp_case

#endif
