/* Decoding pushed structures through the member layouts and register rows of the library. */
#include "tools/dump/decode.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "convert/common/register_map.h"
#include "isp_json_utils.h"
#include "tools/regmap/regmap.h"

namespace isp_case {
namespace {

using picojson::value;

/* An element as its raw code, zero-extended from its width as the exporters read it. Pointers
 * and 64-bit words (addresses the module fills in) are read whole. */
uint64_t raw_code(const uint8_t *at, unsigned elem_size) {
    uint64_t code = 0;
    for (unsigned i = 0; i < elem_size && i < 8; ++i) code |= uint64_t{at[i]} << (8 * i);
    return code;
}

value number(uint64_t code) {
    return value(static_cast<double>(code));
}

/* A real value; null for a code the format cannot turn into a finite number (a fraction of 32
 * bits or more). */
value real(uint64_t code, const char *format) {
    const double v = regval_to_float(static_cast<int32_t>(static_cast<uint32_t>(code)), format);
    return std::isfinite(v) ? value(v) : value();
}

value text_or_null(const char *text) {
    return text ? value(std::string(text)) : value();
}

picojson::object member_json(const isp::member_desc &m, const isp::block_map *map,
                             const isp::field_row *row) {
    picojson::object o;
    o["name"]          = value(std::string(m.name));
    o["offset"]        = number(m.offset);
    o["elem_size"]     = number(m.elem_size);
    o["count"]         = number(m.count);
    o["signed"]        = value(m.is_signed);
    o["per_partition"] = value(m.per_partition);
    o["pointer"]       = value(m.pointer);
    o["format"]        = text_or_null(row ? row->format : nullptr);
    o["register"]      = row ? value(isp::register_path(*map, *row)) : value();
    return o;
}

value pointer_target(const pointee &p, int partitions) {
    picojson::object t;
    const size_t available = p.elem_size ? p.bytes.size() / p.elem_size : 0;
    const size_t count =
        p.per_partition ? std::min(available, static_cast<size_t>(partitions)) : available;
    picojson::array codes;
    for (size_t k = 0; k < count; ++k)
        codes.push_back(number(raw_code(p.bytes.data() + k * p.elem_size, p.elem_size)));
    t["elem_size"]     = number(p.elem_size);
    t["per_partition"] = value(p.per_partition);
    t["codes"]         = value(codes);
    return value(t);
}

}  // namespace

picojson::value decode_structure(const decode_input &input) {
    picojson::object out;
    out["block"]                 = text_or_null(input.block);
    out["type"]                  = text_or_null(input.type);
    out["size"]                  = number(input.bytes ? input.bytes->size() : 0);
    out["members"]               = value(picojson::array());
    const isp::struct_desc *type = input.type ? isp::find_struct(input.type) : nullptr;
    out["group"]                 = text_or_null(type ? type->group : nullptr);
    if (!type) {
        out["problem"] = value(std::string("no member layout for this structure"));
        return value(out);
    }
    if (!input.bytes || input.bytes->size() != type->size) {
        out["problem"] = value("the structure has " + std::to_string(type->size) + " bytes");
        return value(out);
    }
    const isp::block_map *map = input.block ? isp::find_block_map(input.block) : nullptr;
    const uint8_t *base       = input.bytes->data();
    picojson::array members;
    for (uint32_t i = 0; i < type->member_count; ++i) {
        const isp::member_desc &m = type->members[i];
        const isp::field_row *row = map ? isp::member_row(*map, *type, m) : nullptr;
        const char *format        = row ? row->format : nullptr;
        picojson::object o        = member_json(m, map, row);
        if (m.pointer) {
            /* the host address changes from run to run and from build to build */
            o["code"] = number(0);
            auto it   = input.pointees.find(m.name);
            if (it != input.pointees.end())
                o["target"] = pointer_target(it->second, input.partitions);
            members.push_back(value(o));
            continue;
        }
        const uint32_t shown =
            m.per_partition ? std::min<uint32_t>(m.count, static_cast<uint32_t>(input.partitions))
                            : m.count;
        picojson::array codes, values, registers;
        /* every element names the row that fills it: a member's rows differ element by element
         * (the colour matrix, the gamma curve's last point) */
        const std::vector<std::string> paths =
            row ? isp_case::element_paths(*map, *type, m) : std::vector<std::string>();
        for (uint32_t k = 0; k < shown; ++k) {
            if (row)
                registers.push_back(k < paths.size() && !paths[k].empty() ? value(paths[k])
                                                                          : value());
            const uint64_t code = raw_code(base + m.offset + size_t{k} * m.stride, m.elem_size);
            codes.push_back(number(code));
            if (format) values.push_back(real(code, format));
        }
        if (m.count == 1 && !m.per_partition) {
            o["code"] = codes.front();
            if (format) o["value"] = values.front();
        } else {
            o["codes"] = value(codes);
            if (format) o["values"] = value(values);
            if (row) o["registers"] = value(registers);
        }
        members.push_back(value(o));
    }
    out["members"] = value(members);
    return value(out);
}

std::vector<uint8_t> without_pointers(const char *type, const std::vector<uint8_t> &bytes) {
    std::vector<uint8_t> out       = bytes;
    const isp::struct_desc *layout = type ? isp::find_struct(type) : nullptr;
    if (!layout || layout->size != bytes.size()) return out;
    for (uint32_t i = 0; i < layout->member_count; ++i) {
        const isp::member_desc &m = layout->members[i];
        if (!m.pointer) continue;
        for (uint32_t k = 0; k < m.count; ++k)
            std::memset(out.data() + m.offset + size_t{k} * m.stride, 0, m.elem_size);
    }
    return out;
}

std::vector<uint8_t> with_host_pointers(const char *type, const std::vector<uint8_t> &bytes,
                                        unsigned pointer_bytes) {
    const isp::struct_desc *layout = type ? isp::find_struct(type) : nullptr;
    if (pointer_bytes == sizeof(void *) || !layout || pointer_bytes == 0) return bytes;
    std::vector<uint8_t> out(layout->size, 0);
    /* the members in order, each at the next offset its alignment allows: natural alignment,
     * as both ABIs give plain integer arrays and pointers */
    size_t at = 0, widest = 1;
    for (uint32_t i = 0; i < layout->member_count; ++i) {
        const isp::member_desc &m = layout->members[i];
        const size_t align        = m.pointer ? pointer_bytes : m.elem_size;
        const size_t size         = m.pointer ? pointer_bytes * m.count : m.elem_size * m.count;
        if (!m.pointer && m.stride != m.elem_size) return {};
        at     = (at + align - 1) / align * align;
        widest = std::max(widest, align);
        if (at + size > bytes.size()) return {};
        if (!m.pointer) std::memcpy(out.data() + m.offset, bytes.data() + at, size);
        at += size;
    }
    if ((at + widest - 1) / widest * widest != bytes.size()) return {};
    return out;
}

}  // namespace isp_case
