/* The one comparison of two runs, behind diff and report --against: pushes paired by step,
 * module, channel, command and occurrence, then member by member and element by element. Codes
 * are what reaches the hardware, so codes that differ always differ; the tolerance applies to
 * real values only. A member's format and register path are compared too. */
#ifndef ISP_CASE_COMPARE_ENGINE_H
#define ISP_CASE_COMPARE_ENGINE_H

#include <stddef.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/dump/reader.h"

namespace isp_case {

/* Each kind of difference with the name the JSON output gives it. */
#define ISP_CASE_DIFFERENCE_KINDS(X)                                                       \
    X(push_only_in_a, "push_only_in_a")     /* a push B lacks */                           \
    X(push_only_in_b, "push_only_in_b")     /* a push A lacks */                           \
    X(member_only_in_a, "member_only_in_a") /* a member B's structure lacks */             \
    X(member_only_in_b, "member_only_in_b")                                                \
    X(format, "format")     /* the member's fixed-point format */                          \
    X(location, "register") /* the member's register path */                               \
    X(code, "code")         /* an element's code: what the hardware gets */                \
    X(value, "value")       /* same codes, real values apart by more than the tolerance */ \
    X(bytes, "bytes")       /* structures without a member layout: their raw bytes */

enum class difference_kind {
#define ISP_CASE_KIND_ID(id, name) id,
    ISP_CASE_DIFFERENCE_KINDS(ISP_CASE_KIND_ID)
#undef ISP_CASE_KIND_ID
};

/* "push_only_in_a", "code", ...: the names the JSON output uses. */
const char *kind_name(difference_kind kind);

/* One element, or one member, as one side has it. */
struct element_side {
    bool present = false;
    double code  = 0;
    double value = 0; /* NaN without a finite real value */
    std::string format, location;
};

/* One difference in register terms: in_a.location and in_b.location are the register path of
 * the row that fills this element (a member's rows differ element by element: the colour
 * matrix's second row, a curve's last point), the member's first row for member-wide kinds;
 * files are the register files the element came from, relative to the case: the partition's
 * own file for an element of a per-partition member, every file the push was converted from
 * otherwise, A's first and then those only B names. */
struct difference {
    difference_kind kind = difference_kind::code;
    /* the paired pushes, each with its own step; one is null for only_in */
    std::shared_ptr<const dump_push> a, b;
    size_t push_a = 0, push_b = 0; /* their indices in the dumps' pushes */
    std::string member;            /* empty for push and byte differences */
    long index   = -1;             /* element; -1 for a scalar and for member-wide differences */
    size_t count = 0;              /* elements of the member, on the side that has more */
    element_side in_a, in_b;
    std::vector<std::string> files; /* "cfgs/f2/rtl_wbc_p0.json"; none for teardown's pushes */

    const dump_push &push() const { return a ? *a : *b; }
};

struct compare_options {
    double tolerance = 0.0;
    std::optional<int> frame; /* the step that read cfgs/fN only (is_frame_step) */
    size_t limit = 0;         /* stop reading after this many differences; 0: read all */
};

struct comparison_summary {
    size_t pushes_a = 0, pushes_b = 0; /* compared: within the step asked for, if any */
    size_t differing = 0, only_a = 0, only_b = 0, differences = 0;
    bool identical() const { return differing == 0 && only_a == 0 && only_b == 0; }
};

/* Why a tolerance cannot be used ("not a finite number", "negative"); empty when it can. */
std::string tolerance_problem(double tolerance);

/* The facts of the two manifests that differ, as "grid differs: 2x2 | 4x2". */
std::vector<std::string> header_notes(const dump &a, const dump &b);

/* Hands every difference to sink in the order of the runs (step, then module), pushes paired
 * and read one step at a time (a structure read once while the steps that push it follow one
 * another; a pair of structures found equal once is not compared again); throws dump_error for a
 * push that cannot be read. With a limit, the pushes after the one that reached it are not read and
 * the summary counts what was read. */
using difference_sink = std::function<void(const difference &)>;
comparison_summary compare_dumps(const dump &a, const dump &b, const compare_options &options,
                                 const difference_sink &sink);

/* The differences of one pair of structures, as compare_dumps finds them. */
void compare_structures(const decoded_push &a, const decoded_push &b, double tolerance,
                        difference prototype, const difference_sink &sink);

/* The paired pushes: for each of a's pushes (in order) the index of b's push it pairs with,
 * npos for none; b's pushes no push of a pairs with are in b_alone. */
struct push_pairs {
    std::vector<size_t> b_of_a, b_alone;
    static constexpr size_t npos = size_t(-1);
};
push_pairs pair_pushes(const dump &a, const dump &b);

}  // namespace isp_case

#endif
