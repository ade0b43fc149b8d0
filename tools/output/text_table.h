/* Plain-text tables for the terminal: left-aligned columns sized to their contents, a last
 * column of items wrapped to the table's width, and indented detail lines under a row. */
#ifndef ISP_CASE_TEXT_TABLE_H
#define ISP_CASE_TEXT_TABLE_H

#include <cstdio>
#include <string>
#include <vector>

namespace isp_case {

/* Items of the last column that belong together, printed after a prefix ("c0: ") and wrapped
 * under it. */
struct item_run {
    std::string prefix;
    std::vector<std::string> items;
};

class text_table {
  public:
    explicit text_table(std::vector<std::string> header, size_t width = 100)
        : header_(std::move(header)), width_(width) {}

    /* cells for every column but the last; the last column's runs of items; lines printed under
     * the row, indented. */
    void add(std::vector<std::string> cells, std::vector<item_run> last = {},
             std::vector<std::string> details = {});
    void print(std::FILE *out, const std::string &indent = "  ") const;

  private:
    struct row {
        std::vector<std::string> cells;
        std::vector<item_run> last;
        std::vector<std::string> details;
    };
    std::vector<std::string> header_;
    size_t width_;
    std::vector<row> rows_;
};

/* Items joined by ", " and broken into lines of at most width characters (an item longer than
 * that gets a line of its own). */
std::vector<std::string> wrap(const std::vector<std::string> &items, size_t width);

}  // namespace isp_case

#endif
