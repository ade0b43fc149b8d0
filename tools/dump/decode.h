/* Pushed structures as JSON, member by member, from the member layouts of the library: the one
 * decoder behind the dump, export and diff. */
#ifndef ISP_CASE_DECODE_H
#define ISP_CASE_DECODE_H

#include <stddef.h>
#include <stdint.h>

#include <map>
#include <string>
#include <vector>

#include <picojson.h>

namespace isp_case {

/* An array a pointer member leads to, copied while the push was under way. */
struct pointee {
    std::vector<uint8_t> bytes;
    unsigned elem_size = 2;
    bool per_partition = true; /* one element per partition of the grid */
};

struct decode_input {
    const char *block = nullptr; /* "wbc" */
    const char *type  = nullptr; /* C type name; null for a command the tool does not know */
    const std::vector<uint8_t> *bytes = nullptr;
    int partitions                    = 1;   /* of the grid: the per-partition elements shown */
    std::map<std::string, pointee> pointees; /* by pointer member name */
};

/* {"type", "block", "group", "size", "members": [...]}, every member in memory order with its
 * name, offset, elem_size, count, signed, per_partition, pointer, format and register (null when
 * no register row reads it), and its raw codes ("code" for a scalar, "codes" for an array; the
 * grid's partitions only for a per-partition member) and real values ("value" / "values", only
 * where it has a format), with, for an array a register row reads, "registers": the register
 * path that fills each element shown (null for one no row fills). Pointers are written as 0, with
 * the array they lead to under "target" when it was recorded. A structure the layouts do not know,
 * or whose recorded size is not its size, gets "members": [] and a "problem". */
picojson::value decode_structure(const decode_input &input);

/* The recorded bytes with every pointer member cleared, so that a dump does not depend on where
 * the host placed the arrays. */
std::vector<uint8_t> without_pointers(const char *type, const std::vector<uint8_t> &bytes);

/* The bytes of a structure laid out with pointers of another width (a recording of the 32-bit
 * target read on a 64-bit workstation) moved to this build's layout, pointers 0; the bytes as
 * they are when the widths agree, and empty when the structure cannot be laid out so. */
std::vector<uint8_t> with_host_pointers(const char *type, const std::vector<uint8_t> &bytes,
                                        unsigned pointer_bytes);

}  // namespace isp_case

#endif
