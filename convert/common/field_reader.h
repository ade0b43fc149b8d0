/* The one way a converter reads a register field from a register file. */
#ifndef ISP_CONVERT_FIELD_READER_H
#define ISP_CONVERT_FIELD_READER_H

#include <stddef.h>
#include <stdint.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>

#include <picojson.h>

#include "convert/common/fixed_format.h"
#include "convert/common/saturate.h"

namespace isp {

/* A register path as a register table writes it, below the block's top key, taken apart:
 * "wb_gain0.val1", "grp0[0..6].lin_lut_x.high" (register groups held in an array),
 * "lower_lut[3].sat_mit_lower_lut" (array elements that hold the field directly),
 * "rr_mesh[0..4095]" (a table of raw numbers, indexed in its last key). */
struct register_keys {
    std::string_view array; /* the indexed array of a field; empty when none */
    uint32_t first;         /* indices read: first to first + count - 1 */
    uint32_t count;         /* 1 when the path names no range */
    std::string_view reg;   /* empty for elements that hold the field, and for top-level tables */
    std::string_view field; /* the field, or a table's key */
};

/* Looks every field up afresh from the root of one register file, through the block's top key:
 * top / register / field, or top / group [index] / register / field for register groups held in
 * arrays. Each step uses the map's inserting subscript, so a missing key is left in the file's
 * object as null, and picojson's checked access rejects it. Any failure of one field prints
 * "read json_obj failed: <register>.<field>" on standard error and yields the encoding of 0;
 * the next field is read as if nothing happened. */
class field_reader {
  public:
    using key = std::string_view;

    field_reader(picojson::object &root, const char *top_key) : root_(root), top_(top_key) {}

    /* top / reg / field */
    uint32_t read(key reg, key field, const fixed_format &format) const {
        try {
            return encode(field_of(top(), reg, field), format);
        } catch (const std::exception &) {
            return fail(reg, field, format);
        }
    }

    /* top / group [index] / reg / field; the message names only register and field. */
    uint32_t read(key group, size_t index, key reg, key field, const fixed_format &format) const {
        try {
            return encode(field_of(object_of(item(array_in(top(), group), index)), reg, field),
                          format);
        } catch (const std::exception &) {
            return fail(reg, field, format);
        }
    }

    /* top / array [index] / field, for arrays whose elements hold the field directly; the
     * message names the array and the field. */
    uint32_t read_element(key array, size_t index, key field, const fixed_format &format) const {
        try {
            return encode(object_of(item(array_in(top(), array), index))[std::string(field)],
                          format);
        } catch (const std::exception &) {
            return fail(array, field, format);
        }
    }

    /* Index `index` of a path: whichever of the three shapes above the path has. */
    uint32_t read(const register_keys &keys, size_t index, const fixed_format &format) const {
        if (keys.array.empty()) return read(keys.reg, keys.field, format);
        if (keys.reg.empty()) return read_element(keys.array, index, keys.field, format);
        return read(keys.array, index, keys.reg, keys.field, format);
    }

    /* The same with the format as text, parsed at the call. */
    uint32_t read(key reg, key field, const char *format) const {
        return read(reg, field, parse_format(format));
    }
    uint32_t read(key group, size_t index, key reg, key field, const char *format) const {
        return read(group, index, reg, field, parse_format(format));
    }
    uint32_t read_element(key array, size_t index, key field, const char *format) const {
        return read_element(array, index, field, parse_format(format));
    }

    /* top / key [index] as a raw number of a table, saturated into an unsigned code. Not
     * caught: a missing key, a short array or a non-number raises picojson's type error to the
     * caller. */
    uint32_t raw_number(key table_key, size_t index) const {
        return saturate_to_uint32(number_of(item(table({}, table_key), index)));
    }

    /* top / reg / key [index] as a raw number, saturated into an unsigned code; not caught. */
    uint32_t raw_number(key reg, key table_key, size_t index) const {
        return saturate_to_uint32(number_of(item(table(reg, table_key), index)));
    }

    /* Index `index` of a table path; not caught. */
    uint32_t raw_number(const register_keys &keys, size_t index) const {
        return raw_number(keys.reg, keys.field, index);
    }

  private:
    picojson::object &top() const { return object_of(root_[top_]); }

    static picojson::array &array_in(picojson::object &parent, key name) {
        return parent[std::string(name)].get<picojson::array>();
    }

    /* A table of raw numbers (curve, mesh) is looked up once and then read element by element;
     * a look-up that fails raises and is not kept. Fields, by contrast, are looked up afresh
     * from the root every time. */
    picojson::array &table(key reg, key name) const {
        if (table_ && table_reg_ == reg && table_key_ == name) return *table_;
        picojson::array &items =
            array_in(reg.empty() ? top() : object_of(top()[std::string(reg)]), name);
        table_     = &items;
        table_reg_ = reg;
        table_key_ = name;
        return items;
    }

    /* An index past the end counts as a missing key: it yields the reader's own null value,
     * which fails every checked access as a missing key does. */
    picojson::value &item(picojson::array &items, size_t index) const {
        return index < items.size() ? items[index] : missing_;
    }

    static picojson::object &object_of(picojson::value &value) {
        return value.get<picojson::object>();
    }

    static picojson::value &field_of(picojson::object &parent, key reg, key field) {
        return object_of(parent[std::string(reg)])[std::string(field)];
    }

    static double number_of(picojson::value &value) { return value.get<double>(); }

    static uint32_t encode(picojson::value &value, const fixed_format &format) {
        return isp::encode(saturate_to_int32(number_of(value)), format);
    }

    static uint32_t fail(key reg, key field, const fixed_format &format) {
        std::string line = "read json_obj failed: ";
        line += reg;
        line += '.';
        line += field;
        line += '\n';
        std::fputs(line.c_str(), stderr);
        std::fflush(stderr);
        return isp::encode(0, format);
    }

    picojson::object &root_;
    const char *top_;
    mutable picojson::array *table_ = nullptr;
    mutable key table_reg_;
    mutable key table_key_;
    mutable picojson::value missing_;  // never written: every access to it is a checked one
};

}  // namespace isp

#endif
