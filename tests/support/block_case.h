/* One table-driven case per block: its register files run through every converter of the block,
 * every exporter and every module of the block, against expectations written out by hand. */
#ifndef ISP_TEST_BLOCK_CASE_H
#define ISP_TEST_BLOCK_CASE_H

#include <stdint.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <picojson.h>

#include "tests/support/test_support.h"

namespace isp_test {

/* An array of codes or of exported numbers may hold "...": the numbers before it go on by their
 * last step up to the member's length, less the numbers after it. */
struct block_case {
    std::string block;
    /* register files under tests/data, one per partition */
    std::vector<std::string> files;
    /* {"<type>": {"<member>": code or [codes]}}: what each converter of the block leaves after
     * every partition, from a zeroed structure; members not named stay 0, pointers are not
     * compared. A per-partition member's codes run from partition 0's element. */
    std::string structures;
    /* {"<type>": {exported object}}: what each exporter writes from those, for the last
     * partition; a value "*" is only checked to be there (the caller checks it). */
    std::string cmodel;
    /* each module of the block, its registration and the commands it pushes on init, the
     * default parameters first; every pushed group's bytes are checked against `structures` */
    struct module {
        std::string name;
        register_fn reg;
        std::vector<uint32_t> commands;
    };
    std::vector<module> modules;
};

/* Runs the case; returns what the exporters wrote, by type. */
std::map<std::string, picojson::object> check_block(const block_case &c);

/* A converter of the library run by name on a structure of its own filled with `fill`: the bytes
 * it leaves, the lines it prints and what it raises ("no exception" when nothing). */
struct conversion {
    std::vector<uint8_t> bytes;
    std::vector<std::string> lines;
    std::string error;
};
conversion convert_named(const std::string &converter, picojson::object root, uint8_t partition = 0,
                         uint8_t fill = 0);
/* Only the lines, of a converter that must not raise. */
std::vector<std::string> failures_of(const std::string &converter, picojson::object root,
                                     uint8_t partition = 0);

/* The report of each field of each register, in the order given. */
std::vector<std::string> failed(
    const std::vector<std::pair<std::string, std::vector<std::string>>> &registers);

}  // namespace isp_test

#endif
