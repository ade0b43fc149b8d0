/* Views of the register map: text (one field per line), JSON and CSV for scripts, and one
 * offline HTML page to keep beside the hardware's register reference. */
#ifndef ISP_CASE_REGMAP_PRINT_H
#define ISP_CASE_REGMAP_PRINT_H

#include <cstdio>
#include <string>
#include <vector>

#include "tools/regmap/regmap.h"

namespace isp_case {

/* The fields of one block, or none for a block without a register map. */
struct regmap_block {
    const isp::block_map *map = nullptr;
    std::vector<regmap_field> fields;
};

void print_regmap_text(std::FILE *out, const std::vector<regmap_block> &blocks);
void print_regmap_json(std::FILE *out, const std::vector<regmap_block> &blocks);
void print_regmap_csv(std::FILE *out, const std::vector<regmap_block> &blocks);
std::string regmap_page(const std::vector<regmap_block> &blocks);

/* "u8.4: unsigned, 8 integer and 4 fraction bits" */
std::string format_words(const isp::fixed_format &format, const char *text);
/* "0 .. 255.9375 step 0.0625": the real values a field carries */
std::string range_words(const regmap_field &f);
/* "gamma lut cmd 3": the modules that push the field's structure, with their commands */
std::string users_words(const regmap_field &f);

/* A CSV cell: quoted when it holds a separator, a quote or a line break. */
std::string csv_cell(const std::string &text);

/* One `where` answer: the register path, the element with module and group, the format. */
void print_where_text(std::FILE *out, const where_answer &a);
void print_where_json(std::FILE *out, const std::vector<where_answer> &answers);

}  // namespace isp_case

#endif
