/* Writes the register-file dictionary of the fuzz harnesses: the tokens of fuzz/register_file.dict
 * (JSON structure, numbers at the edges of the conversions), then every key a register row reads:
 * the blocks' top keys, the arrays of register groups, the registers and the fields. The keys
 * come from the library's rows, so a block that gains a register gains its tokens.
 *   make_dict TOKENS_FILE > register_file.dict */
#include <stdio.h>

#include <fstream>
#include <iostream>
#include <set>
#include <string>

#include "convert/common/register_map.h"

int main(int argc, char **argv) {
    if (argc != 2) {
        fputs("usage: make_dict TOKENS_FILE\n", stderr);
        return 2;
    }
    std::ifstream tokens(argv[1]);
    if (!tokens) {
        fprintf(stderr, "make_dict: cannot read %s\n", argv[1]);
        return 1;
    }
    std::cout << tokens.rdbuf();
    std::set<std::string> keys;
    size_t count                      = 0;
    const isp::block_map *const *maps = isp::block_maps(&count);
    for (size_t b = 0; b < count; ++b) {
        keys.insert(maps[b]->top_key);
        for (size_t r = 0; r < maps[b]->row_count; ++r) {
            const isp::field_row &row = maps[b]->rows[r];
            if (!row.path) continue; /* brackets */
            for (std::string_view key : {row.keys.array, row.keys.reg, row.keys.field})
                if (!key.empty()) keys.insert(std::string(key));
        }
    }
    std::cout << "# every key of the register rows\n";
    for (const std::string &key : keys) std::cout << "\"\\\"" << key << "\\\"\"\n";
    return std::cout.good() ? 0 : 1;
}
