/* The one way a converter reads a register field from a register file. */
#ifndef ISP_CONVERT_FIELD_READER_H
#define ISP_CONVERT_FIELD_READER_H

#include <stddef.h>
#include <stdint.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>

#include <picojson.h>

#include "convert/common/saturate.h"
#include "isp_json_utils.h"

namespace isp {

/* Looks every field up afresh from the root of one register file, through the block's top key:
 * top / register / field, or top / group [index] / register / field for register groups held in
 * arrays. Each step uses the map's inserting subscript, so a missing key is left in the file's
 * object as null, and picojson's checked access rejects it. Any failure of one field prints
 * "read json_obj failed: <register>.<field>" on standard error and yields the encoding of 0;
 * the next field is read as if nothing happened. */
class field_reader {
  public:
    field_reader(picojson::object &root, const char *top_key) : root_(root), top_(top_key) {}

    /* top / reg / field */
    uint32_t read(const char *reg, const char *field, const char *format) const {
        try {
            return encode(field_of(top(), reg, field), format);
        } catch (const std::exception &) {
            return fail(reg, field, format);
        }
    }

    /* top / group [index] / reg / field; the message names only register and field. */
    uint32_t read(const char *group, size_t index, const char *reg, const char *field,
                  const char *format) const {
        try {
            return encode(field_of(object_of(item(array_in(top(), group), index)), reg, field),
                          format);
        } catch (const std::exception &) {
            return fail(reg, field, format);
        }
    }

    /* top / array [index] / field, for arrays whose elements hold the field directly; the
     * message names the array and the field. */
    uint32_t read_element(const char *array, size_t index, const char *field,
                          const char *format) const {
        try {
            return encode(object_of(item(array_in(top(), array), index))[field], format);
        } catch (const std::exception &) {
            return fail(array, field, format);
        }
    }

    /* top / key [index] as a raw number of a table, saturated into an unsigned code. Not
     * caught: a missing key, a short array or a non-number raises picojson's type error to the
     * caller. */
    uint32_t raw_number(const char *key, size_t index) const {
        return saturate_to_uint32(number_of(item(table(nullptr, key), index)));
    }

    /* top / reg / key [index] as a raw number, saturated into an unsigned code; not caught. */
    uint32_t raw_number(const char *reg, const char *key, size_t index) const {
        return saturate_to_uint32(number_of(item(table(reg, key), index)));
    }

  private:
    picojson::object &top() const { return object_of(root_[top_]); }

    static picojson::array &array_in(picojson::object &parent, const char *key) {
        return parent[key].get<picojson::array>();
    }

    /* A table of raw numbers (curve, mesh) is looked up once and then read element by element;
     * a look-up that fails raises and is not kept. Fields, by contrast, are looked up afresh
     * from the root every time. */
    picojson::array &table(const char *reg, const char *key) const {
        if (table_ && same(table_reg_, reg) && same(table_key_, key)) return *table_;
        picojson::array &items = array_in(reg ? object_of(top()[reg]) : top(), key);
        table_                 = &items;
        table_reg_             = reg;
        table_key_             = key;
        return items;
    }

    static bool same(const char *a, const char *b) {
        return a == b || (a && b && std::strcmp(a, b) == 0);
    }

    /* An index past the end counts as a missing key: it yields the reader's own null value,
     * which fails every checked access as a missing key does. */
    picojson::value &item(picojson::array &items, size_t index) const {
        return index < items.size() ? items[index] : missing_;
    }

    static picojson::object &object_of(picojson::value &value) {
        return value.get<picojson::object>();
    }

    static picojson::value &field_of(picojson::object &parent, const char *reg, const char *field) {
        return object_of(parent[reg])[field];
    }

    static double number_of(picojson::value &value) { return value.get<double>(); }

    static uint32_t encode(picojson::value &value, const char *format) {
        return sign_to_regval(saturate_to_int32(number_of(value)), format);
    }

    static uint32_t fail(const char *reg, const char *field, const char *format) {
        std::string line = "read json_obj failed: ";
        line += reg;
        line += '.';
        line += field;
        line += '\n';
        std::fputs(line.c_str(), stderr);
        std::fflush(stderr);
        return sign_to_regval(0, format);
    }

    picojson::object &root_;
    const char *top_;
    mutable picojson::array *table_ = nullptr;
    mutable const char *table_reg_  = nullptr;
    mutable const char *table_key_  = nullptr;
    mutable picojson::value missing_;  // never written: every access to it is a checked one
};

}  // namespace isp

#endif
