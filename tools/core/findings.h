/* What every subcommand reports on a case, whatever the output: findings with a severity and a
 * place (the check's lint, the replay's pre-flight and its operations, the batch's reasons), the
 * outcome of each step as it ends, and the pieces the text and JSON outputs share. */
#ifndef ISP_CASE_REPORT_H
#define ISP_CASE_REPORT_H

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include <picojson.h>

#include "tools/core/enum_list.h"
#include "tools/output/json.h"

namespace isp_case {

/* error: the library would abort or raise, an operation failed, a value cannot be read;
 * warning: a value reaches the hardware changed, a key is ignored, partitions disagree, the
 * library logged a warning. --strict fails on both. */
#define ISP_CASE_SEVERITIES(X) X(error, "error") X(warning, "warning")
ISP_CASE_ENUM(severity, ISP_CASE_SEVERITIES);
inline const char *severity_name(severity level) {
    return enum_name(severity_names, level);
}

#define ISP_CASE_FINDING_KINDS(X)                                                                 \
    /* the lint of a case, before anything runs */                                                \
    X(frame_directory, "frame-directory") /* cfgs/f0 missing, or directories after a gap */       \
    X(frames, "frames")                   /* more frames asked for than the case holds */         \
    X(grid, "grid")                 /* an empty grid, or one past the 8-bit partition index */    \
    X(channels, "channels")         /* a channel count the channelled modules reject or ignore */ \
    X(module_order, "module-order") /* modules sharing a wrapper in an order that breaks it */    \
    X(missing_file, "missing-file")                                                               \
    X(path_too_long, "path-too-long") /* the library would cut the file's path */                 \
    X(unreadable_file, "unreadable-file")                                                         \
    X(byte_order_mark, "byte-order-mark")                                                         \
    X(syntax, "syntax")                                                                           \
    X(non_finite, "number-out-of-range") /* picojson raises overflow_error while parsing */       \
    X(not_object, "root-not-object")                                                              \
    X(trailing_content,                                                                           \
      "trailing-content") /* text after the root value, which picojson ignores */                 \
    X(duplicate_key, "duplicate-key")                                                             \
    X(unknown_key, "unknown-key")                                                                 \
    X(missing_field, "missing-field")                                                             \
    X(type, "type")                                                                               \
    X(sign_dropped, "sign-dropped")                                                               \
    X(too_wide, "too-wide")                                                                       \
    X(wrapped, "wrapped")                                                                         \
    X(truncated, "truncated")                                                                     \
    X(saturated, "saturated")                                                                     \
    X(underflow, "underflow") /* a number written non-zero that reads as 0 */                     \
    X(partitions_disagree, "partitions-disagree")                                                 \
    /* a converter printed "read json_obj failed: ...": in the lint, one the rows do not          \
       explain; in a replay, every such line */                                                   \
    X(field_not_read, "field-not-read")                                                           \
    X(converter_raises, "converter-raises")                                                       \
    /* what an operation of a replay did */                                                       \
    X(operation_failed, "operation-failed") /* returned a status other than 0 */                  \
    X(operation_raised, "operation-raised") /* an exception left it */                            \
    /* a log line at warning level or below from an operation that did not fail */                \
    X(library_warning, "library-warning")
ISP_CASE_ENUM(finding_kind, ISP_CASE_FINDING_KINDS);
/* "sign-dropped" */
inline const char *kind_name(finding_kind kind) {
    return enum_name(finding_kind_names, kind);
}

/* One place a finding was found: a register file (with the frame directory, partition and
 * channel it holds, -1 where none) or a step of the replay. */
struct finding_place {
    std::string file, step;
    int frame = -1, partition = -1, channel = -1;
};

/* Where (file, line, column, or the replay's step), what (module, register, field, the value as
 * written and its format) and what the hardware gets instead. */
struct finding {
    severity level    = severity::error;
    finding_kind kind = finding_kind::syntax;
    std::string file;         /* path of the file or directory; empty for the run's settings */
    int line = 0, column = 0; /* 1-based; 0 when not known */
    std::string step;         /* the replay's step, "frame 17"; empty for the lint's findings */
    std::string module;       /* the modules that read it, ", "-separated */
    std::string reg, field;   /* register (or array) and field (or key) */
    std::string value;        /* as written in the file */
    std::string format;       /* fixed-point format, or the element width of a table */
    std::string hardware;     /* what reaches the hardware instead */
    std::string message;
    int frame = -1, partition = -1, channel = -1; /* of the register file, -1 where none */
    std::string probably; /* an unknown key: the known key it is probably a misspelling of */
    /* once grouped (finding_tally): every place the same fault was found, this one's first,
     * kept up to a limit, and how many more there were */
    std::vector<finding_place> places;
    size_t places_not_kept = 0;
};

/* "FILE:LINE:COLUMN: warning: MODULES: MESSAGE (PLACES) [kind]"; the step instead of the file for
 * what an operation did, "settings" for findings without either, no line and column where they
 * are not known, no modules where none reads it, the places of a group as places_text. For
 * people: what came from a file is terminal_text. */
std::string finding_line(const finding &f);
/* The same as a GitHub workflow annotation: "::warning file=F,line=L,col=C,title=KIND::MODULES:
 * MESSAGE (PLACES)", escaped as the runner reads it back; no file for the run's settings and
 * steps, whose place starts the text. */
std::string finding_annotation(const finding &f);

struct finding_counts {
    size_t errors = 0, warnings = 0;
    bool passed(bool strict) const { return errors == 0 && (!strict || warnings == 0); }
};
finding_counts count_findings(const std::vector<finding> &findings);

/* A finding as a JSON object, every member present ("" and 0 when not known). */
picojson::value finding_json(const finding &f);
picojson::value findings_json(const std::vector<finding> &findings);
/* The finding finding_json wrote; false when the value is not one. */
bool finding_from_json(const picojson::value &value, finding &out);

/* How a run is to be shown. */
#define ISP_CASE_OUTPUT_FORMATS(X) X(text, "text") X(json, "json")
ISP_CASE_ENUM(output_format, ISP_CASE_OUTPUT_FORMATS);
enum class verbosity { quiet, normal, verbose };

/* One step as it ends: counts in the order they are shown, and what it found. */
struct step_outcome {
    std::string name;
    std::vector<std::pair<std::string, size_t>> counts;
    std::vector<finding> findings;
};

/* 85674 as "85,674". */
std::string grouped(size_t value);
/* "1 warning", "1,000 errors" */
std::string counted(size_t n, const char *word);
/* A line as the library wrote it, without its line end. */
std::string without_line_end(std::string line);

/* A step's counts and findings as the members of a JSON object. */
json_fields json_step(const step_outcome &step);

}  // namespace isp_case

#endif
