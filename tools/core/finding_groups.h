/* Findings as a person acts on them: one entry per fault. The same finding in several partitions,
 * channels or frame directories (or steps of a replay) is one entry with the list of its places;
 * a missing key beside an unknown key that is probably its misspelling is one finding; a run's
 * "read json_obj failed" that a lint finding already explains is a place of that finding, not a
 * second one. check, replay, batch and the dump's manifest all count and print these entries. */
#ifndef ISP_CASE_FINDING_GROUPS_H
#define ISP_CASE_FINDING_GROUPS_H

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tools/core/findings.h"

namespace isp_case {

/* The findings of a whole run grouped into entries, counted in full and kept up to a limit, so
 * that a long run holds the same memory after its millionth finding as after its hundredth: the
 * entries' places are kept up to a limit too, and a frame that repeats a fault adds no entry. */
class finding_tally {
  public:
    explicit finding_tally(size_t kept = 20) : limit_(kept) {}
    void add(const finding &f);
    /* A batch of findings, its near misses paired first (pair_near_misses). */
    void add(const std::vector<finding> &findings);
    const finding_counts &counts() const { return counts_; }
    const std::vector<finding> &kept() const { return kept_; }
    size_t not_kept() const { return counts_.errors + counts_.warnings - kept_.size(); }

  private:
    size_t limit_;
    finding_counts counts_;
    std::vector<finding> kept_;
    std::map<std::string, size_t> entries_;    /* by what makes findings the same: kept_ index */
    std::map<std::string, size_t> explainers_; /* "module|register|field" of unreadable values */
};

/* Each missing field paired with the unknown key of its file that is probably its misspelling:
 * one finding at the unknown key's place, as severe as the missing field, which says what the
 * field reads as instead. Unpaired findings stay as they are, in order. */
std::vector<finding> pair_near_misses(const std::vector<finding> &findings);

/* "p0-p3", "f0-f1 p0,p2", "; at setup", "; at 8 steps, setup to frame 7": what varies over the
 * places of a group; "" for a finding found in one place. */
std::string places_text(const finding &f);

}  // namespace isp_case

#endif
