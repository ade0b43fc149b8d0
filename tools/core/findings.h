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

namespace isp_case {

/* error: the library would abort or raise, an operation failed, a value cannot be read;
 * warning: a value reaches the hardware changed, a key is ignored, partitions disagree, the
 * library logged a warning. --strict fails on both. */
enum class severity { error, warning };
const char *severity_name(severity level);

enum class finding_kind {
    /* the lint of a case, before anything runs */
    frame_directory, /* cfgs/f0 missing, or frame directories after a gap */
    frames,          /* more frames asked for than the case holds */
    grid,            /* an empty grid, or one past the 8-bit partition index */
    channels,        /* a channel count the channelled modules reject or ignore */
    module_order,    /* modules sharing a wrapper in an order that breaks it */
    missing_file,
    path_too_long, /* the library would cut the file's path */
    unreadable_file,
    byte_order_mark,
    syntax,
    non_finite, /* picojson raises overflow_error while parsing */
    not_object,
    trailing_content, /* text after the root value, which picojson ignores */
    duplicate_key,
    unknown_key,
    missing_field,
    type,
    sign_dropped,
    too_wide,
    wrapped,
    truncated,
    saturated,
    underflow, /* a number written non-zero that reads as 0 */
    partitions_disagree,
    field_not_read, /* a converter printed "read json_obj failed: ...": in the lint, one the rows
                       do not explain; in a replay, every such line */
    converter_raises,
    /* what an operation of a replay did */
    operation_failed, /* returned a status other than 0 */
    operation_raised, /* an exception left it */
    library_warning,  /* a log line at warning level or below from an operation that did not fail */
};
const char *kind_name(finding_kind kind); /* "sign-dropped" */

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
};

/* "FILE:LINE:COLUMN: warning: MODULES: MESSAGE [kind]"; the step instead of the file for what an
 * operation did, "settings" for findings without either, no line and column where they are not
 * known, no modules where none reads it. */
std::string finding_line(const finding &f);

struct finding_counts {
    size_t errors = 0, warnings = 0;
    bool passed(bool strict) const { return errors == 0 && (!strict || warnings == 0); }
};
finding_counts count_findings(const std::vector<finding> &findings);

/* A finding as a JSON object, every member present ("" and 0 when not known). */
picojson::value finding_json(const finding &f);
picojson::value findings_json(const std::vector<finding> &findings);

/* How a run is to be shown. */
enum class output_format { text, json };
enum class verbosity { quiet, normal, verbose };

/* One step as it ends: counts in the order they are shown, and what it found. */
struct step_outcome {
    std::string name;
    std::vector<std::pair<std::string, size_t>> counts;
    std::vector<finding> findings;
};

/* The findings of a whole run, counted in full and kept up to a limit, so that a long run holds
 * the same memory after its millionth finding as after its hundredth. */
class finding_tally {
  public:
    explicit finding_tally(size_t kept = 20) : limit_(kept) {}
    void add(const finding &f);
    const finding_counts &counts() const { return counts_; }
    const std::vector<finding> &kept() const { return kept_; }
    size_t not_kept() const { return counts_.errors + counts_.warnings - kept_.size(); }

  private:
    size_t limit_;
    finding_counts counts_;
    std::vector<finding> kept_;
};

/* 85674 as "85,674". */
std::string grouped(size_t value);

/* The text with every byte that does not start a well-formed UTF-8 sequence replaced by U+FFFD,
 * so that every JSON and XML reader accepts it. */
std::string utf8_clean(const std::string &text);

/* A JSON string, quotes included, of any bytes: control characters escaped, as utf8_clean. */
std::string json_string(const std::string &text);

/* One JSON object written member by member on one line: {"a":1,"b":"x"}. */
class json_object {
  public:
    json_object &add(const char *key, const std::string &value);
    json_object &add(const char *key, const char *value) { return add(key, std::string(value)); }
    json_object &add(const char *key, size_t value);
    json_object &add(const char *key, int value);
    json_object &add(const char *key, bool value);
    json_object &add(const char *key, double value);
    json_object &add_null(const char *key);
    /* value: JSON text written as it is (an object, an array) */
    json_object &add_raw(const char *key, const std::string &value);
    std::string text() const { return body_.empty() ? "{}" : body_ + "}"; }

  private:
    json_object &key(const char *name);
    std::string body_;
};

/* Elements already in JSON form, as one array. */
std::string json_array(const std::vector<std::string> &elements);

/* A step's counts and findings as the members of a JSON object. */
json_object json_step(const step_outcome &step);

}  // namespace isp_case

#endif
