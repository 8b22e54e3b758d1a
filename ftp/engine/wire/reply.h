#pragma once
// Replies of the control connection (RFC 959 section 4.2), from bytes to values, with bounds.

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ftp/engine/wire/failure.h"

namespace ftp {

/// One complete reply. `lines` holds it as received, one element a line, line ends removed;
/// bytes are untouched otherwise (NUL and other controls included). Never empty.
struct Reply {
    int code = 0;  // 100..599
    std::vector<std::string> lines;

    bool Preliminary() const { return code / 100 == 1; }
    bool Completed() const { return code / 100 == 2; }
    bool Intermediate() const { return code / 100 == 3; }
    bool Refused() const { return code >= 400; }
    /// The last line without its code and separator.
    std::string_view Text() const;
};

/// The Failure that a refusing reply stands for.
Failure RefusalOf(const Reply& reply);

/// Cuts a stream of bytes into replies. Feed any split of the stream; take what is complete.
/// A line ends at LF, a CR before it is dropped (servers with bare LF exist). Multi-line replies
/// end at a line with the first line's code and a blank (RFC 959 4.2), or the code alone, which is
/// what remains where a server trims its lines; lines within may start with anything else. After a
/// failure the parser stays failed, since the session cannot be trusted further; replies that were
/// complete before it can still be taken.
class ReplyParser {
 public:
    static constexpr std::size_t kMaxLine = 16 * 1024;    // bytes of one line without its end
    static constexpr std::size_t kMaxLines = 2000;        // lines of one reply
    static constexpr std::size_t kMaxReply = 256 * 1024;  // bytes of one reply

    /// Adds bytes. Fails with Protocol when a bound is passed or a first line has no code 100..599.
    Result<> Feed(std::string_view bytes);

    /// The oldest complete reply, or nothing yet.
    std::optional<Reply> Take();

    /// Whether bytes of an unfinished reply are held.
    bool InTheMiddle() const;

 private:
    Result<> TakeLine(std::string line);
    Result<> Stop(std::string detail);

    std::string partial_line_;
    Reply current_;
    std::size_t current_bytes_ = 0;
    std::deque<Reply> complete_;
    std::optional<Failure> failed_;
};

}  // namespace ftp
