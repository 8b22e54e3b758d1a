#pragma once
// Cuts the bytes of a LIST data connection into lines, with a bound.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ftp {

/// Lines end at LF; one CR before it is dropped; a last line without an end counts. Empty lines are kept
/// out. A line longer than kMaxLine bytes is dropped whole and counted, the lines after it are kept.
class ListingLines {
 public:
    static constexpr std::size_t kMaxLine = 8 * 1024;

    /// Adds bytes and appends every line completed by them to `lines`.
    void Feed(std::string_view bytes, std::vector<std::string>& lines);
    /// The end of the data: appends a last line without line end, if there is one.
    void Finish(std::vector<std::string>& lines);
    /// How many lines were dropped so far.
    std::size_t Dropped() const { return dropped_; }

 private:
    void End(std::vector<std::string>& lines);

    std::string partial_;
    bool too_long_ = false;
    std::size_t dropped_ = 0;
};

}  // namespace ftp
