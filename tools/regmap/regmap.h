/* The register map of a block as the tool shows it: every field a register file holds for the
 * block, one per index of a path's range, in the order the converters read them, with the
 * structure element it lands in. Built from the library's register rows and member layouts
 * (convert/<blk>/<blk>.def) and its module table; nothing here names a register. */
#ifndef ISP_CASE_REGMAP_H
#define ISP_CASE_REGMAP_H

#include <stdint.h>

#include <string>
#include <vector>

#include <picojson.h>

#include "convert/common/register_map.h"

namespace isp_case {

/* A module that pushes (or keeps) a structure, with the command it pushes it with (0: kept). */
struct regmap_user {
    std::string module, group; /* "cc", "clc": the frame member the module keeps it in */
    uint32_t command = 0;
};

/* One field of a register file: one index of one register row. */
struct regmap_field {
    const isp::block_map *map      = nullptr;
    const isp::field_row *row      = nullptr;
    const isp::struct_desc *type   = nullptr;
    const isp::member_desc *member = nullptr; /* the member the row writes, null if none */
    uint32_t index                 = 0;       /* of the path's array; 0 for a path without one */
    std::string path;                         /* "isp_clc.matrix_list[1].matrix_list0.val1" */
    std::string field;                        /* "val1"; a table's key for a raw number */
    uint32_t element = 0; /* the row's element for partition 0 (for a pointer: of its array) */
    uint32_t member_element = 0; /* the member's element holding it, partition 0 */
    std::string element_text; /* "matrix_list[0][7]", "part_size_h[p]", "hdrc_lut[3] bits 16-31" */
    std::string cmodel_key;   /* where an exporter writes the member under a key of the table */
    const char *hand = nullptr; /* what a hand-written reader does, when one reads the field */
    std::vector<regmap_user> users;

    bool per_partition() const { return row->part_step != 0; }
    bool raw_number() const { return row->kind == isp::row_kind::table; }
};

/* The real values a field can carry, as the register file writes them (the register's integer
 * before encoding) and as they decode. Unsigned fields from 0 to all ones; signed fields from
 * minus to plus all ones below the sign bit (the code of the sign bit alone decodes as 0). The
 * member the field is stored in may keep fewer bits than the format: then its width counts. */
struct field_range {
    int64_t min = 0, max = 0; /* integers in the register file */
    double step = 1;          /* real value of one integer */
    int bits    = 0;          /* kept by the register: sign, integer and fraction bits */
};
field_range range_of(const regmap_field &f);

/* Every field of a block in read order; empty for a block without a register map. */
std::vector<regmap_field> block_fields(const isp::block_map &map);

/* The names of the blocks, in the order of the library's maps; whether a block has rows. */
std::vector<std::string> block_names();
bool has_register_map(const isp::block_map &map);

/* A field's element for partition p (-1: "p", the file's), as written in driver-element text
 * (no module or group). */
std::string element_for_partition(const regmap_field &f, int partition);

/* The register path that fills each element of a member (flattened index, all partitions);
 * empty strings for elements no row writes. */
std::vector<std::string> element_paths(const isp::block_map &map, const isp::struct_desc &type,
                                       const isp::member_desc &member);

/* Answers of `where`. */
struct where_answer {
    const regmap_field *field = nullptr;
    int partition             = -1; /* the partition an element query named; -1: the file's */
};
/* From a register path ("isp_clc.matrix_list[1].matrix_list0.val1") or a driver element
 * ("wbc.ctrl.wb_gain[3]", "cc.clc.matrix_list[0][7]", a block name for the module too) to the
 * fields; `problem` says why there is none. */
std::vector<where_answer> where(const std::vector<regmap_field> &all, const std::string &query,
                                std::string &problem);

/* Every field of every block. */
std::vector<regmap_field> all_fields();

/* A register file of the block holding every field its rows read, each set to zero, the
 * smallest or the largest value its range allows. */
enum class template_value { zero, min, max };
picojson::value register_template(const isp::block_map &map, template_value value);

}  // namespace isp_case

#endif
