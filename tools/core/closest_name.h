/* "Did you mean": the known name closest to one that is not, for the lint's unknown keys and
 * the command line's unknown list entries. */
#ifndef ISP_CASE_CLOSEST_NAME_H
#define ISP_CASE_CLOSEST_NAME_H

#include <stddef.h>

#include <string>
#include <vector>

namespace isp_case {

/* Insertions, deletions and substitutions that turn a into b. */
size_t edit_distance(const std::string &a, const std::string &b);

/* The first of the names closest to `name` within two edits, and fewer edits than `name` has
 * characters; "" when none is that close. */
std::string closest_name(const std::string &name, const std::vector<std::string> &names);

}  // namespace isp_case

#endif
