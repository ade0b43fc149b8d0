/* The object store: SHA-256 keys, a pack appended under a lock, an index of lines. */
#include "tools/dump/store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <fmt/core.h>

#include "tools/dump/manifest.h"
#include "tools/dump/reader.h"

namespace isp_case {
namespace {

/* ---- SHA-256 (FIPS 180-4) ------------------------------------------------------------------ */

constexpr uint32_t k_rounds[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

uint32_t rotr(uint32_t x, int n) {
    return (x >> n) | (x << (32 - n));
}

void compress(std::array<uint32_t, 8> &h, const uint8_t *block) {
    uint32_t w[64];
    for (int i = 0; i < 16; ++i)
        w[i] = uint32_t(block[4 * i]) << 24 | uint32_t(block[4 * i + 1]) << 16 |
               uint32_t(block[4 * i + 2]) << 8 | block[4 * i + 3];
    for (int i = 16; i < 64; ++i) {
        const uint32_t s0 = rotr(w[i - 15], 7) ^ rotr(w[i - 15], 18) ^ (w[i - 15] >> 3);
        const uint32_t s1 = rotr(w[i - 2], 17) ^ rotr(w[i - 2], 19) ^ (w[i - 2] >> 10);
        w[i]              = w[i - 16] + s0 + w[i - 7] + s1;
    }
    uint32_t a = h[0], b = h[1], c = h[2], d = h[3], e = h[4], f = h[5], g = h[6], k = h[7];
    for (int i = 0; i < 64; ++i) {
        const uint32_t t1 = k + (rotr(e, 6) ^ rotr(e, 11) ^ rotr(e, 25)) + ((e & f) ^ (~e & g)) +
                            k_rounds[i] + w[i];
        const uint32_t t2 =
            (rotr(a, 2) ^ rotr(a, 13) ^ rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        k = g, g = f, f = e, e = d + t1, d = c, c = b, b = a, a = t1 + t2;
    }
    h[0] += a, h[1] += b, h[2] += c, h[3] += d, h[4] += e, h[5] += f, h[6] += g, h[7] += k;
}

/* ---- files ------------------------------------------------------------------------------------
 */

std::string os_problem(const std::string &path, const char *what) {
    return fmt::format("{}: cannot be {}: {}", path, what, std::strerror(errno ? errno : EIO));
}

bool write_all(int fd, const char *data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        data += n, size -= size_t(n);
    }
    return true;
}

/* "<key> <offset> <size>": false for anything else */
bool parse_index_line(const std::string &line, std::string &key, object_place &place) {
    const size_t a = line.find(' '), b = a == std::string::npos ? a : line.find(' ', a + 1);
    if (a != 64 || b == std::string::npos) return false;
    key = line.substr(0, 64);
    if (key.find_first_not_of("0123456789abcdef") != std::string::npos) return false;
    const std::string offset = line.substr(a + 1, b - a - 1), size = line.substr(b + 1);
    for (const std::string *n : {&offset, &size})
        if (n->empty() || n->size() > 19 || n->find_first_not_of("0123456789") != std::string::npos)
            return false;
    place.offset = std::stoull(offset);
    place.size   = std::stoull(size);
    return true;
}

/* Releases the index lock on every way out. */
struct index_lock {
    int fd;
    bool held;
    explicit index_lock(int f) : fd(f), held(::flock(f, LOCK_EX) == 0) {}
    ~index_lock() {
        if (held) ::flock(fd, LOCK_UN);
    }
};

}  // namespace

std::string sha256_hex(const void *data, size_t size) {
    std::array<uint32_t, 8> h = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    const auto *bytes         = static_cast<const uint8_t *>(data);
    size_t whole              = size - size % 64;
    for (size_t at = 0; at < whole; at += 64) compress(h, bytes + at);
    /* the tail, a one bit, zeros, and the length in bits as a big-endian 64-bit number */
    uint8_t last[128] = {};
    const size_t tail = size - whole;
    if (tail) std::memcpy(last, bytes + whole, tail);
    last[tail]          = 0x80;
    const size_t blocks = tail < 56 ? 1 : 2;
    const uint64_t bits = uint64_t(size) * 8;
    for (int i = 0; i < 8; ++i) last[64 * blocks - 1 - i] = uint8_t(bits >> (8 * i));
    for (size_t b = 0; b < blocks; ++b) compress(h, last + 64 * b);
    std::string out;
    for (uint32_t word : h) out += fmt::format("{:08x}", word);
    return out;
}

store_writer::store_writer(const std::string &dir) : dir_(dir) {
    std::error_code error;
    std::filesystem::create_directories(dir, error);
    errno                   = 0;
    const std::string pack  = dir + "/" + k_pack_file;
    const std::string index = dir + "/" + k_index_file;
    pack_                   = ::open(pack.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    index_                  = ::open(index.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (pack_ < 0)
        open_problem_ = os_problem(pack, "opened");
    else if (index_ < 0)
        open_problem_ = os_problem(index, "opened");
}

store_writer::~store_writer() {
    if (pack_ >= 0) ::close(pack_);
    if (index_ >= 0) ::close(index_);
}

bool store_writer::catch_up(std::string &error) {
    char buffer[1 << 14];
    for (;;) {
        const ssize_t n = ::pread(index_, buffer, sizeof buffer, off_t(index_read_));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            error = os_problem(dir_ + "/" + k_index_file, "read");
            return false;
        }
        if (n == 0) return true;
        index_read_ += uint64_t(n);
        partial_.append(buffer, size_t(n));
        size_t start = 0;
        for (size_t end; (end = partial_.find('\n', start)) != std::string::npos; start = end + 1)
            known_.insert(partial_.substr(start, 64));
        partial_.erase(0, start);
    }
}

std::string store_writer::put(const std::vector<uint8_t> &bytes, std::string &error) {
    const std::string key = sha256_hex(bytes.data(), bytes.size());
    if (known_.count(key)) return key;
    if (!open_problem_.empty()) {
        error = open_problem_;
        return "";
    }
    errno = 0;
    const index_lock lock(index_);
    if (!lock.held) {
        error = os_problem(dir_ + "/" + k_index_file, "locked");
        return "";
    }
    if (!catch_up(error)) return "";
    if (known_.count(key)) return key;
    struct stat pack_stat;
    if (::fstat(pack_, &pack_stat) != 0 ||
        !write_all(pack_, reinterpret_cast<const char *>(bytes.data()), bytes.size())) {
        error = os_problem(dir_ + "/" + k_pack_file, "written");
        return "";
    }
    const std::string line = fmt::format("{} {} {}\n", key, pack_stat.st_size, bytes.size());
    if (!write_all(index_, line.data(), line.size())) {
        error = os_problem(dir_ + "/" + k_index_file, "written");
        return "";
    }
    index_read_ += line.size();
    known_.insert(key);
    ++added_;
    return key;
}

store_reader::store_reader(const std::string &dir) : dir_(dir) {
    const std::string index = dir + "/" + k_index_file, pack = dir + "/" + k_pack_file;
    std::string text, error;
    if (!read_file_bytes(index, text, error)) throw dump_error(error);
    struct stat pack_stat;
    if (::stat(pack.c_str(), &pack_stat) != 0) throw dump_error(pack + ": cannot be read");
    if (!S_ISREG(pack_stat.st_mode))
        throw dump_error(pack + ": cannot be read: not a regular file");
    size_t line_number = 0, start = 0;
    for (size_t end; start < text.size(); start = end + 1) {
        ++line_number;
        end = text.find('\n', start);
        if (end == std::string::npos)
            throw dump_error(fmt::format("{}:{}: a line without its end", index, line_number));
        std::string key;
        object_place place;
        if (!parse_index_line(text.substr(start, end - start), key, place))
            throw dump_error(
                fmt::format("{}:{}: not \"<sha-256> <offset> <size>\"", index, line_number));
        if (place.offset > uint64_t(pack_stat.st_size) ||
            place.size > uint64_t(pack_stat.st_size) - place.offset)
            throw dump_error(
                fmt::format("{}: {} bytes, too short for object {} ({} bytes at {}) that {} lists",
                            pack, pack_stat.st_size, key, place.size, place.offset, index));
        places_.emplace(key, place);
    }
}

const object_place *store_reader::find(const std::string &key) const {
    const auto it = places_.find(key);
    return it == places_.end() ? nullptr : &it->second;
}

std::string store_reader::read(const std::string &key) const {
    const std::string pack    = dir_ + "/" + k_pack_file;
    const object_place *place = find(key);
    if (!place) throw dump_error(dir_ + "/" + k_index_file + ": no object " + key);
    std::string bytes(size_t(place->size), '\0');
    errno        = 0;
    const int fd = ::open(pack.c_str(), O_RDONLY | O_CLOEXEC);
    size_t got   = 0;
    while (fd >= 0 && got < bytes.size()) {
        const ssize_t n =
            ::pread(fd, bytes.data() + got, bytes.size() - got, off_t(place->offset + got));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        got += size_t(n);
    }
    if (fd >= 0) ::close(fd);
    if (got < bytes.size())
        throw dump_error(fmt::format("{}: object {} cannot be read ({} of {} bytes at {})", pack,
                                     key, got, place->size, place->offset));
    if (sha256_hex(bytes.data(), bytes.size()) != key)
        throw dump_error(fmt::format("{}: object {} ({} bytes at {}) does not match its hash", pack,
                                     key, place->size, place->offset));
    return bytes;
}

}  // namespace isp_case
