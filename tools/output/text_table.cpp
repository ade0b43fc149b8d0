/* Plain-text tables. */
#include "tools/output/text_table.h"

#include <algorithm>

#include <fmt/core.h>

namespace isp_case {
namespace {

/* however narrow the terminal, the last column keeps this much room */
const size_t k_min_last_width = 32;

}  // namespace

void text_table::add(std::vector<std::string> cells, std::vector<item_run> last,
                     std::vector<std::string> details) {
    rows_.push_back({std::move(cells), std::move(last), std::move(details)});
}

void text_table::print(std::FILE *out, const std::string &indent) const {
    std::vector<size_t> widths(header_.size() - 1, 0);
    for (size_t c = 0; c < widths.size(); ++c) widths[c] = header_[c].size();
    for (const row &r : rows_)
        for (size_t c = 0; c < r.cells.size() && c < widths.size(); ++c)
            widths[c] = std::max(widths[c], r.cells[c].size());
    size_t lead = indent.size();
    for (size_t w : widths) lead += w + 2;
    const size_t last_width = std::max(width_ > lead ? width_ - lead : 0, k_min_last_width);

    auto line = [&](const std::vector<std::string> &cells, const std::string &last) {
        std::string text = indent;
        for (size_t c = 0; c < widths.size(); ++c)
            text += fmt::format("{:<{}}  ", c < cells.size() ? cells[c] : "", widths[c]);
        text += last;
        while (!text.empty() && text.back() == ' ') text.pop_back();
        fmt::print(out, "{}\n", text);
    };
    line(header_, header_.back());
    for (const row &r : rows_) {
        std::vector<std::string> last_lines;
        for (const item_run &run : r.last) {
            const std::string blank(run.prefix.size(), ' ');
            const std::vector<std::string> wrapped =
                wrap(run.items, last_width - run.prefix.size());
            for (size_t i = 0; i < wrapped.size(); ++i)
                last_lines.push_back((i == 0 ? run.prefix : blank) + wrapped[i]);
        }
        line(r.cells, last_lines.empty() ? "" : last_lines.front());
        for (size_t i = 1; i < last_lines.size(); ++i) line({}, last_lines[i]);
        for (const std::string &detail : r.details) fmt::print(out, "{}    {}\n", indent, detail);
    }
}

std::vector<std::string> wrap(const std::vector<std::string> &items, size_t width) {
    std::vector<std::string> lines;
    std::string current;
    for (size_t i = 0; i < items.size(); ++i) {
        const std::string item = items[i] + (i + 1 < items.size() ? "," : "");
        if (!current.empty() && current.size() + 1 + item.size() > width) {
            lines.push_back(current);
            current.clear();
        }
        current += (current.empty() ? "" : " ") + item;
    }
    if (!current.empty()) lines.push_back(current);
    return lines;
}

}  // namespace isp_case
