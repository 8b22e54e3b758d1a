#include "ftp/engine/wire/reply.h"

#include <utility>

namespace ftp {
namespace {

constexpr std::size_t kCodeLength = 3;
constexpr std::size_t kMaxDetail = 200;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The code that `line` begins with, or 0. A fourth digit means that the number is no reply code.
int CodeOf(std::string_view line) {
    if (line.size() < kCodeLength || line[0] < '1' || line[0] > '5') return 0;
    if (!IsDigit(line[1]) || !IsDigit(line[2])) return 0;
    if (line.size() > kCodeLength && IsDigit(line[kCodeLength])) return 0;
    return (line[0] - '0') * 100 + (line[1] - '0') * 10 + (line[2] - '0');
}

bool Opens(std::string_view line) {
    return line.size() > kCodeLength && line[kCodeLength] == '-';
}

bool Closes(std::string_view line, int code) {
    return CodeOf(line) == code && (line.size() == kCodeLength || line[kCodeLength] == ' ');
}

}  // namespace

std::string_view Reply::Text() const {
    std::string_view text = lines.back();
    text.remove_prefix(kCodeLength);
    if (text.starts_with(' ') || text.starts_with('-')) text.remove_prefix(1);
    return text;
}

Failure RefusalOf(const Reply& reply) {
    return {FailureKind::Refused, reply.code, std::string(reply.Text())};
}

Result<> ReplyParser::Feed(std::string_view bytes) {
    if (failed_) return Fail(*failed_);
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        partial_line_ += bytes.substr(0, end);
        // The CR of a line end may be the last byte held; it does not count against the line.
        const bool ends_in_cr = partial_line_.ends_with('\r');
        if (partial_line_.size() - (ends_in_cr ? 1 : 0) > kMaxLine) return Stop({});
        if (end == std::string_view::npos) break;
        bytes.remove_prefix(end + 1);
        if (ends_in_cr) partial_line_.pop_back();
        if (auto taken = TakeLine(std::exchange(partial_line_, {})); !taken) return taken;
    }
    return {};
}

Result<> ReplyParser::TakeLine(std::string line) {
    const bool first = current_.lines.empty();
    if (first) current_.code = CodeOf(line);
    if (current_.code == 0) return Stop(line.substr(0, kMaxDetail));
    current_bytes_ += line.size();
    if (current_bytes_ > kMaxReply || current_.lines.size() == kMaxLines) return Stop({});

    const bool last = first ? !Opens(line) : Closes(line, current_.code);
    current_.lines.push_back(std::move(line));
    if (last) {
        complete_.push_back(std::exchange(current_, {}));
        current_bytes_ = 0;
    }
    return {};
}

Result<> ReplyParser::Stop(std::string detail) {
    failed_ = Failure{FailureKind::Protocol, 0, std::move(detail)};
    return Fail(*failed_);
}

std::optional<Reply> ReplyParser::Take() {
    if (complete_.empty()) return std::nullopt;
    Reply reply = std::move(complete_.front());
    complete_.pop_front();
    return reply;
}

bool ReplyParser::InTheMiddle() const {
    return !partial_line_.empty() || !current_.lines.empty();
}

}  // namespace ftp
