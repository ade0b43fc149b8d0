/* What every subcommand reports, whatever the output: findings with a severity, the outcome of
 * each step as it ends, and a summary; and the pieces the text and JSON outputs share. */
#ifndef ISP_CASE_REPORT_H
#define ISP_CASE_REPORT_H

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace isp_case {

/* error: the library would abort or raise, an operation failed, a value cannot be read;
 * warning: the run goes on as asked but something deserves a look. --strict fails on both. */
enum class severity { error, warning };
const char *severity_name(severity level);

struct finding {
    severity level = severity::error;
    std::string step;  /* "frame 17"; empty when the finding belongs to no step */
    std::string where; /* what it concerns: "csc process", a file */
    std::string text;
};

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
    size_t errors() const { return errors_; }
    size_t warnings() const { return warnings_; }
    const std::vector<finding> &kept() const { return kept_; }
    size_t not_kept() const { return errors_ + warnings_ - kept_.size(); }
    bool passed(bool strict) const { return errors_ == 0 && (!strict || warnings_ == 0); }

  private:
    size_t limit_, errors_ = 0, warnings_ = 0;
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
std::string json_finding(const finding &f);

/* A step's counts and findings as the members of a JSON object. */
json_object json_step(const step_outcome &step);

}  // namespace isp_case

#endif
