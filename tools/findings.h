/* What isp-case found wrong with a case, in one shape for every subcommand that reports on a
 * case: the check, the replay's pre-flight, and whatever else prints findings. Each finding says
 * where (file, line, column), what (module, register, field, the value as written and its format)
 * and what the hardware gets instead. */
#ifndef ISP_CASE_FINDINGS_H
#define ISP_CASE_FINDINGS_H

#include <string>
#include <vector>

#include <picojson.h>

namespace isp_case {

/* error: the library would abort or raise, or a value cannot be read; warning: a value reaches
 * the hardware changed, a key is ignored, partitions disagree. */
enum class severity { error, warning };

enum class finding_kind {
    frame_directory, /* cfgs/f0 missing, or frame directories after a gap */
    frames,          /* more frames asked for than the case holds */
    grid,            /* an empty grid, or one past the 8-bit partition index */
    channels,        /* a channel count the channelled modules reject or ignore */
    module_order,    /* modules sharing a wrapper in an order that breaks it */
    missing_file,
    unreadable_file,
    byte_order_mark,
    syntax,
    non_finite, /* picojson raises overflow_error while parsing */
    not_object,
    duplicate_key,
    unknown_key,
    missing_field,
    type,
    sign_dropped,
    too_wide,
    wrapped,
    truncated,
    saturated,
    partitions_disagree,
    field_not_read, /* a converter printed "read json_obj failed: ..." the rows do not explain */
    converter_raises,
};

struct finding {
    severity level    = severity::error;
    finding_kind kind = finding_kind::syntax;
    std::string file;         /* path of the file or directory; empty for the run's settings */
    int line = 0, column = 0; /* 1-based; 0 when not known */
    std::string module;       /* the modules that read it, ", "-separated */
    std::string reg, field;   /* register (or array) and field (or key) */
    std::string value;        /* as written in the file */
    std::string format;       /* fixed-point format, or the element width of a table */
    std::string hardware;     /* what reaches the hardware instead */
    std::string message;
};

const char *kind_name(finding_kind kind); /* "sign-dropped" */
const char *severity_name(severity level);

/* "FILE:LINE:COLUMN: warning: MODULES: MESSAGE [kind]"; "settings: ..." for findings without a
 * file, no line and column where they are not known, no modules where none reads it. */
std::string finding_line(const finding &f);

struct finding_counts {
    size_t errors = 0, warnings = 0;
};
finding_counts count_findings(const std::vector<finding> &findings);

/* The findings as an array of objects, every member present ("" and 0 when not known). */
picojson::value findings_json(const std::vector<finding> &findings);

}  // namespace isp_case

#endif
