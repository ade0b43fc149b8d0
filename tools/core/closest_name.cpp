/* Edit distance and the closest known name. */
#include "tools/core/closest_name.h"

#include <algorithm>

namespace isp_case {

size_t edit_distance(const std::string &a, const std::string &b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0]          = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t up = row[j];
            row[j]   = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = up;
        }
    }
    return row[b.size()];
}

std::string closest_name(const std::string &name, const std::vector<std::string> &names) {
    std::string best;
    size_t best_distance = 3;
    for (const std::string &candidate : names) {
        const size_t d = edit_distance(name, candidate);
        if (d < best_distance && d < name.size()) {
            best          = candidate;
            best_distance = d;
        }
    }
    return best;
}

}  // namespace isp_case
