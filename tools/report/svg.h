/* Inline SVG pictures for the report page: line charts with labelled axes, heat maps with their
 * colour scale, and partition grids. Every picture is a self-contained <svg> element styled by
 * attributes only, so that it reads the same in any browser and as plain XML. */
#ifndef ISP_CASE_REPORT_SVG_H
#define ISP_CASE_REPORT_SVG_H

#include <string>
#include <vector>

namespace isp_case {
namespace report {

/* A number as a short label: integers without a fraction, others with at most `decimals`
 * fraction digits and no trailing zeros. */
std::string number_label(double value, int decimals = 4);

/* Ticks at 1, 2 or 5 times a power of ten, the first at or below lo, the last at or above hi;
 * `decimals` is what the step needs to print exactly. */
struct ticks {
    std::vector<double> values;
    int decimals = 0;
};
ticks nice_ticks(double lo, double hi, int target = 6);

/* The colours every picture shares. */
namespace palette {
extern const char *const run_a; /* the dump shown, or the first of two */
extern const char *const run_b; /* the --against dump */
extern const char *const changed;
/* Bayer channels in register order: r, gr, gb, b. */
extern const char *const channel[4];
}  // namespace palette

struct series {
    std::string name;
    std::vector<double> x, y;
    std::string colour;
    bool dashed  = false;
    bool markers = false; /* a dot on every point: for knot tables of a few points */
};

struct line_chart {
    std::string title, x_label, y_label;
    std::vector<series> lines;
    int width = 480, height = 300;
};
std::string render(const line_chart &chart);

/* A rows x cols mesh of values in row-major order. */
struct heat_map {
    std::string title, unit;
    int cols = 0, rows = 0;
    std::vector<double> values;
    /* diverging: blue below zero, white at zero, red above, over -limit..limit; sequential
     * otherwise, over lo..hi (both taken from the values when equal). */
    bool diverging = false;
    double lo = 0, hi = 0;
    int cell = 16; /* pixels per mesh node */
};
std::string render(const heat_map &map);

/* One small cell per picture partition, laid out like the partitions (part_h columns, part_v
 * rows, partition p at column p % part_h of row p / part_h), each labelled with its text;
 * marked cells are outlined in the change colour. */
struct partition_grid {
    std::string title;
    int part_h = 0, part_v = 0;
    std::vector<std::string> cells;
    std::vector<bool> marked;
};
std::string render(const partition_grid &grid);

}  // namespace report
}  // namespace isp_case

#endif
