/* Inline SVG pictures of the report page. Coordinates are written with one decimal: finer steps
 * add bytes and nothing a screen can show. */
#include "tools/report/svg.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <fmt/core.h>

#include "tools/output/escape.h"

namespace isp_case {
namespace report {

namespace palette {
const char *const run_a      = "#1f6fb4";
const char *const run_b      = "#e8710a";
const char *const changed    = "#c2185b";
const char *const channel[4] = {"#d62728", "#2ca02c", "#17becf", "#1f3fbf"};
}  // namespace palette

namespace {

std::string coord(double v) {
    return number_label(v, 1);
}

struct rgb {
    double r, g, b;
};

rgb from_hex(const char *hex) {
    const unsigned value = unsigned(std::stoul(hex + 1, nullptr, 16));
    return {double(value >> 16 & 0xFF), double(value >> 8 & 0xFF), double(value & 0xFF)};
}

/* The colour at t (0..1) along evenly spaced anchors. */
std::string along(const std::vector<const char *> &anchors, double t) {
    if (!std::isfinite(t)) t = 0;
    t              = std::clamp(t, 0.0, 1.0) * double(anchors.size() - 1);
    const size_t i = std::min(size_t(t), anchors.size() - 2);
    const double f = t - double(i);
    const rgb a = from_hex(anchors[i]), b = from_hex(anchors[i + 1]);
    const auto blend = [f](double x, double y) { return int(std::lround(x + (y - x) * f)); };
    return fmt::format("#{:02x}{:02x}{:02x}", blend(a.r, b.r), blend(a.g, b.g), blend(a.b, b.b));
}

/* Perceptually even from dark blue to yellow, readable in grey as well. */
const std::vector<const char *> k_sequential = {"#440154", "#482878", "#3e4989", "#31688e",
                                                "#26828e", "#1f9e89", "#35b779", "#6ece58",
                                                "#b5de2b", "#fde725"};
/* Blue for less, white for no change, red for more. */
const std::vector<const char *> k_diverging = {"#2166ac", "#67a9cf", "#d1e5f0", "#f7f7f7",
                                               "#fddbc7", "#ef8a62", "#b2182b"};

/* Places values between a and b (pixels) for a tick range. */
struct scale {
    double lo, hi, a, b;
    double operator()(double v) const { return hi == lo ? a : a + (v - lo) * (b - a) / (hi - lo); }
};

void text(std::string &out, double x, double y, const std::string &cls, const std::string &anchor,
          const std::string &content, const std::string &extra = "") {
    out += fmt::format("<text x=\"{}\" y=\"{}\" class=\"{}\"", coord(x), coord(y), cls);
    if (!anchor.empty()) out += " text-anchor=\"" + anchor + "\"";
    out += extra + ">" + markup_escape(content) + "</text>";
}

std::string svg_open(int width, int height, const std::string &cls, const std::string &label) {
    return fmt::format(
        "<svg class=\"{}\" width=\"{}\" height=\"{}\" viewBox=\"0 0 {} {}\" role=\"img\" "
        "aria-label=\"{}\">",
        cls, width, height, width, height, markup_escape(label, markup_context::attribute));
}

void min_max(const std::vector<double> &values, double &lo, double &hi) {
    for (double v : values)
        if (std::isfinite(v)) lo = std::min(lo, v), hi = std::max(hi, v);
}

/* A range that ticks can cover: a flat series still gets an axis around its value. */
void widen(double &lo, double &hi) {
    if (lo > hi) lo = 0, hi = 1;
    if (lo == hi) {
        const double pad = lo == 0 ? 1 : std::abs(lo) * 0.1;
        lo -= pad, hi += pad;
    }
}

/* The ticks within lo..hi: axes end at the data, not at the next round number. */
ticks inside(ticks t, double lo, double hi) {
    const double slack = (hi - lo) * 1e-9;
    t.values.erase(std::remove_if(t.values.begin(), t.values.end(),
                                  [&](double v) { return v < lo - slack || v > hi + slack; }),
                   t.values.end());
    return t;
}

/* Tick labels stay short: 20000 reads "20k" and 1500000 "1.5M", so that wide codes fit the
 * margin. */
std::string tick_label(double v, int decimals) {
    if (std::abs(v) >= 1e6) return number_label(v / 1e6, 3) + "M";
    if (std::abs(v) >= 1e4) return number_label(v / 1e3, 3) + "k";
    return number_label(v, decimals);
}

/* Legend entries laid out left to right from x, wrapping at width; returns the rows used. */
int legend(std::string &out, const std::vector<series> &lines, double x0, double y0, double width,
           bool draw) {
    double x = x0, y = y0;
    int rows = 1;
    for (const series &s : lines) {
        const double w = 28 + 6.5 * double(s.name.size()) + 14;
        if (x > x0 && x + w > x0 + width) x = x0, y += 16, ++rows;
        if (draw) {
            out += fmt::format(
                "<line x1=\"{}\" y1=\"{}\" x2=\"{}\" y2=\"{}\" stroke=\"{}\" "
                "stroke-width=\"2.5\"{}/>",
                coord(x), coord(y - 4), coord(x + 22), coord(y - 4), s.colour,
                s.dashed ? " stroke-dasharray=\"5 3\"" : "");
            text(out, x + 27, y, "tick", "", s.name);
        }
        x += w;
    }
    return rows;
}

}  // namespace

std::string number_label(double value, int decimals) {
    if (!std::isfinite(value)) return std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf";
    std::string s = fmt::format("{:.{}f}", value, decimals);
    if (s.find('.') != std::string::npos) {
        while (s.back() == '0') s.pop_back();
        if (s.back() == '.') s.pop_back();
    }
    if (s == "-0") s = "0";
    return s;
}

ticks nice_ticks(double lo, double hi, int target) {
    widen(lo, hi);
    const double raw   = (hi - lo) / std::max(target, 1);
    const int exponent = int(std::floor(std::log10(raw)));
    const double mag   = std::pow(10.0, exponent);
    const double norm  = raw / mag;
    const double step  = (norm <= 1 ? 1 : norm <= 2 ? 2 : norm <= 5 ? 5 : 10) * mag;
    const double first = std::floor(lo / step + 1e-9), last = std::ceil(hi / step - 1e-9);
    ticks t;
    t.decimals = std::max(0, -int(std::floor(std::log10(step) + 1e-9)));
    for (double i = first; i <= last; ++i) t.values.push_back(i * step);
    return t;
}

std::string render(const line_chart &chart) {
    const double left = 68, right = 16, top = 30;
    std::string legend_text;
    const int legend_rows = chart.lines.size() > 1
                                ? legend(legend_text, chart.lines, 0, 0, chart.width - left, false)
                                : 0;
    const double bottom   = 46 + 16 * legend_rows;
    const int height      = chart.height + 16 * legend_rows;

    double x_lo = INFINITY, x_hi = -INFINITY, y_lo = INFINITY, y_hi = -INFINITY;
    for (const series &s : chart.lines) min_max(s.x, x_lo, x_hi), min_max(s.y, y_lo, y_hi);
    widen(x_lo, x_hi), widen(y_lo, y_hi);
    const ticks xt = inside(nice_ticks(x_lo, x_hi), x_lo, x_hi);
    const ticks yt = inside(nice_ticks(y_lo, y_hi, 5), y_lo, y_hi);
    const scale sx{x_lo, x_hi, left, chart.width - right};
    const scale sy{y_lo, y_hi, height - bottom, top};

    std::string out = svg_open(chart.width, height, "chart", chart.title);
    text(out, 8, 18, "ttl", "", chart.title);
    for (double v : xt.values) {
        out += fmt::format("<line x1=\"{0}\" y1=\"{1}\" x2=\"{0}\" y2=\"{2}\" class=\"grid\"/>",
                           coord(sx(v)), coord(top), coord(height - bottom));
        text(out, sx(v), height - bottom + 15, "tick", "middle", tick_label(v, xt.decimals));
    }
    for (double v : yt.values) {
        out += fmt::format("<line x1=\"{1}\" y1=\"{0}\" x2=\"{2}\" y2=\"{0}\" class=\"grid\"/>",
                           coord(sy(v)), coord(left), coord(chart.width - right));
        text(out, left - 6, sy(v) + 4, "tick", "end", tick_label(v, yt.decimals));
    }
    out += fmt::format("<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" class=\"frame\"/>",
                       coord(left), coord(top), coord(chart.width - right - left),
                       coord(height - bottom - top));
    text(out, (left + chart.width - right) / 2, height - bottom + 33, "lbl", "middle",
         chart.x_label);
    const double mid_y = (top + height - bottom) / 2;
    text(out, 14, mid_y, "lbl", "middle", chart.y_label,
         fmt::format(" transform=\"rotate(-90 14 {})\"", coord(mid_y)));

    for (const series &s : chart.lines) {
        std::string path;
        for (size_t i = 0; i < s.x.size() && i < s.y.size(); ++i)
            path += fmt::format("{}{} {}", i ? " L" : "M", coord(sx(s.x[i])), coord(sy(s.y[i])));
        out += fmt::format("<path d=\"{}\" fill=\"none\" stroke=\"{}\" stroke-width=\"2\"{}/>",
                           path, s.colour, s.dashed ? " stroke-dasharray=\"6 4\"" : "");
        if (s.markers)
            for (size_t i = 0; i < s.x.size() && i < s.y.size(); ++i)
                out += fmt::format("<circle cx=\"{}\" cy=\"{}\" r=\"2.5\" fill=\"{}\"/>",
                                   coord(sx(s.x[i])), coord(sy(s.y[i])), s.colour);
    }
    if (legend_rows)
        legend(out, chart.lines, left, height - 10 - 16 * (legend_rows - 1),
               chart.width - left - right, true);
    return out + "</svg>";
}

std::string render(const heat_map &map) {
    const int left = 48, top = 30, bar_gap = 14, bar_w = 12, labels = 64;
    const int plot_w = map.cols * map.cell, plot_h = map.rows * map.cell;
    const int width = left + plot_w + bar_gap + bar_w + labels, height = top + plot_h + 42;

    double lo = map.lo, hi = map.hi;
    if (map.diverging) {
        double a = INFINITY, b = -INFINITY;
        min_max(map.values, a, b);
        hi = lo == hi ? std::max({std::abs(a), std::abs(b), 1.0}) : std::max(std::abs(lo), hi);
        lo = -hi;
    } else if (lo == hi) {
        lo = INFINITY, hi = -INFINITY;
        min_max(map.values, lo, hi);
        widen(lo, hi);
    }
    const std::vector<const char *> &anchors = map.diverging ? k_diverging : k_sequential;
    const auto colour = [&](double v) { return along(anchors, (v - lo) / (hi - lo)); };

    std::string out = svg_open(width, height, "heat", map.title);
    text(out, 8, 18, "ttl", "", map.title);
    for (int r = 0; r < map.rows; ++r)
        for (int c = 0; c < map.cols; ++c) {
            const size_t i = size_t(r) * size_t(map.cols) + size_t(c);
            if (i >= map.values.size()) break;
            out += fmt::format(
                "<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" fill=\"{}\"><title>row {}, "
                "column {}: {}</title></rect>",
                left + c * map.cell, top + r * map.cell, map.cell, map.cell, colour(map.values[i]),
                r, c, number_label(map.values[i]));
        }
    out += fmt::format("<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" class=\"frame\"/>", left,
                       top, plot_w, plot_h);
    /* node indices every five nodes: enough to find a node, few enough to stay apart */
    for (int c = 0; c < map.cols; c += 5)
        text(out, left + (c + 0.5) * map.cell, top + plot_h + 13, "tick", "middle",
             std::to_string(c));
    for (int r = 0; r < map.rows; r += 5)
        text(out, left - 5, top + (r + 0.5) * map.cell + 4, "tick", "end", std::to_string(r));
    text(out, left + plot_w / 2.0, top + plot_h + 30, "lbl", "middle",
         fmt::format("mesh column (0-{})", map.cols - 1));
    const double mid_y = top + plot_h / 2.0;
    text(out, 14, mid_y, "lbl", "middle", fmt::format("mesh row (0-{})", map.rows - 1),
         fmt::format(" transform=\"rotate(-90 14 {})\"", coord(mid_y)));

    /* the colour scale: stacked bands, high at the top */
    const int bar_x = left + plot_w + bar_gap, bands = 32;
    for (int b = 0; b < bands; ++b)
        out += fmt::format("<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" fill=\"{}\"/>",
                           bar_x, coord(top + plot_h * double(b) / bands), bar_w,
                           coord(plot_h / double(bands) + 0.5),
                           along(anchors, 1.0 - (b + 0.5) / bands));
    out += fmt::format("<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" class=\"frame\"/>",
                       bar_x, top, bar_w, plot_h);
    const scale sy{lo, hi, double(top + plot_h), double(top)};
    for (double v : nice_ticks(lo, hi, 5).values) {
        if (v < lo - 1e-9 * (hi - lo) || v > hi + 1e-9 * (hi - lo)) continue;
        out += fmt::format("<line x1=\"{0}\" y1=\"{1}\" x2=\"{2}\" y2=\"{1}\" class=\"axis\"/>",
                           bar_x + bar_w, coord(sy(v)), bar_x + bar_w + 4);
        text(out, bar_x + bar_w + 7, sy(v) + 4, "tick", "", tick_label(v, 4));
    }
    if (!map.unit.empty()) text(out, bar_x, top + plot_h + 30, "lbl", "", map.unit);
    return out + "</svg>";
}

std::string render(const partition_grid &grid) {
    const int cell_w = 76, cell_h = 26, left = 8, top = 28;
    const int width  = std::max(left * 2 + grid.part_h * cell_w, 160);
    const int height = top + grid.part_v * cell_h + 8;
    std::string out  = svg_open(width, height, "parts", grid.title);
    text(out, left, 18, "ttl", "", grid.title);
    for (int p = 0; p < grid.part_h * grid.part_v; ++p) {
        const int x = left + (p % grid.part_h) * cell_w, y = top + (p / grid.part_h) * cell_h;
        const bool marked = size_t(p) < grid.marked.size() && grid.marked[size_t(p)];
        out += fmt::format(
            "<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" class=\"{}\"><title>partition "
            "{}</title></rect>",
            x, y, cell_w, cell_h, marked ? "cell mark" : "cell", p);
        text(out, x + cell_w / 2.0, y + 17, "tick", "middle",
             size_t(p) < grid.cells.size() ? grid.cells[size_t(p)] : "");
    }
    return out + "</svg>";
}

}  // namespace report
}  // namespace isp_case
