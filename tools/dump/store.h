/* The store of a dump's raw structures: every distinct byte string once, keyed by its SHA-256,
 * packed into two files of the store directory:
 *   objects.pack  the objects' bytes, one after the other
 *   objects.idx   one line per object: "<sha-256 in hex> <offset in the pack> <size>\n"
 * Several dumps may share one store, written at the same time by several processes: a writer
 * appends under an exclusive lock of the index, after reading what the others appended. The
 * pack is never rewritten, so that a reader of a finished dump needs no lock. */
#ifndef ISP_CASE_DUMP_STORE_H
#define ISP_CASE_DUMP_STORE_H

#include <stddef.h>
#include <stdint.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace isp_case {

constexpr char k_pack_file[]  = "objects.pack";
constexpr char k_index_file[] = "objects.idx";

/* The SHA-256 of bytes, 64 lowercase hex digits. */
std::string sha256_hex(const void *data, size_t size);

/* Adds objects to a store directory (created when missing). */
class store_writer {
  public:
    explicit store_writer(const std::string &dir);
    ~store_writer();
    store_writer(const store_writer &)            = delete;
    store_writer &operator=(const store_writer &) = delete;

    /* The key of bytes, stored unless the store has them already; empty with error set when the
     * store cannot be written. */
    std::string put(const std::vector<uint8_t> &bytes, std::string &error);
    /* Objects this writer added (not those it found). */
    size_t added() const { return added_; }

  private:
    bool catch_up(std::string &error); /* reads the index lines others appended */

    std::string dir_;
    int pack_ = -1, index_ = -1;
    std::string open_problem_;
    std::set<std::string> known_;
    uint64_t index_read_ = 0; /* bytes of the index already read */
    std::string partial_;     /* a line still being read */
    size_t added_ = 0;
};

/* Where an object lies in the pack. */
struct object_place {
    uint64_t offset = 0, size = 0;
};

/* A store read back: its index in memory (a line per distinct object), objects read from the
 * pack one at a time when asked for. Errors throw dump_error naming the file and the reason. */
class store_reader {
  public:
    store_reader() = default;
    /* Reads dir/objects.idx and checks every object lies inside dir/objects.pack. */
    explicit store_reader(const std::string &dir);

    const std::string &dir() const { return dir_; }
    const object_place *find(const std::string &key) const;
    /* The bytes of an object, checked against its key. */
    std::string read(const std::string &key) const;

  private:
    std::string dir_;
    std::map<std::string, object_place> places_;
};

}  // namespace isp_case

#endif
