/* Register values set from the command line: "--set f3-5:p1:isp_wbc.d_gain.val=1.5" resolved
 * through the register map, encoded in the field's format, and written into the register files
 * of a copy of the case, number by number, every other byte of the files kept. The case itself is
 * never written: a run reads an overlay of it (the changed files rewritten, every other file
 * linked) and still names the case's own files. */
#ifndef ISP_CASE_OVERRIDES_H
#define ISP_CASE_OVERRIDES_H

#include <stdint.h>

#include <map>
#include <string>
#include <vector>

#include "tools/core/case_layout.h"
#include "tools/regmap/regmap.h"

namespace isp_case {

/* One value to set: [fA[-B]:][pN:]REGISTER.FIELD=VALUE, VALUE a real value or raw:N. */
struct value_override {
    std::string text;                      /* as given */
    int first_frame = -1, last_frame = -1; /* frame directories; -1: every one */
    int partition             = -1;        /* -1: every partition's file */
    const regmap_field *field = nullptr;
    int64_t raw               = 0; /* the integer the register file holds */
    double value              = 0; /* its real value in the field's format */
};

/* "" when text is a valid --set, else why not (an unknown register with the closest known one,
 * a value out of the format's range with the range). */
std::string parse_override(const std::string &text, value_override &out);

/* REGISTER.FIELD=START:STOP:COUNT: COUNT values evenly spaced from START to STOP inclusive, each
 * a --set of the register; "" or why not (two values that the format holds as one integer). */
std::string parse_sweep(const std::string &text, std::vector<value_override> &out);

/* A case's register files with the overrides written into them: relative path to new text. */
struct case_edit {
    std::map<std::string, std::string> changed;
    std::vector<applied_override> applied;
};
/* "" or why the overrides cannot be applied: a frame directory or partition the case does not
 * have, a register no selected file holds. */
std::string plan_edit(const std::string &case_path, const std::vector<value_override> &overrides,
                      case_edit &edit);

/* Fills dir (which exists and is empty) with the case: changed files written, every other file
 * hard-linked, or where the filesystem refuses, a symbolic link (`copies` false) or a copy. */
std::string write_case_copy(const std::string &case_path, const std::string &dir,
                            const case_edit &edit, bool copies);

/* A temporary overlay of a case that holds the overrides, removed when dropped. */
class case_overlay {
  public:
    case_overlay() = default;
    ~case_overlay();
    case_overlay(const case_overlay &)            = delete;
    case_overlay &operator=(const case_overlay &) = delete;

    /* For replay and check: with --set values, the settings read an overlay and list them. */
    std::string apply(const std::vector<std::string> &sets, run_settings &settings);

  private:
    std::string dir_;
};

/* "isp_wbc.d_gain.val=1.5 (value 1.5, raw 384) in 3 files", as every text view lists an
 * override, and the JSON form: [{"set": ..., "value": 1.5, "raw": 384, "files": 3}, ...]. */
std::string override_line(const applied_override &o);
picojson::value overrides_json(const std::vector<applied_override> &overrides);

}  // namespace isp_case

#endif
