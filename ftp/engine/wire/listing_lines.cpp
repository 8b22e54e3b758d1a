#include "ftp/engine/wire/listing_lines.h"

#include <utility>

namespace ftp {

void ListingLines::Feed(std::string_view bytes, std::vector<std::string>& lines) {
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        partial_ += bytes.substr(0, end);
        // One byte more than a line may have is held, since it may turn out to be the CR of the line end.
        if (partial_.size() > kMaxLine + 1) {
            too_long_ = true;
            partial_ = {};
        }
        if (end == std::string_view::npos) return;
        bytes.remove_prefix(end + 1);
        End(lines);
    }
}

void ListingLines::Finish(std::vector<std::string>& lines) {
    End(lines);
}

void ListingLines::End(std::vector<std::string>& lines) {
    std::string line = std::exchange(partial_, {});
    if (line.ends_with('\r')) line.pop_back();
    if (std::exchange(too_long_, false) || line.size() > kMaxLine)
        ++dropped_;
    else if (!line.empty())
        lines.push_back(std::move(line));
}

}  // namespace ftp
