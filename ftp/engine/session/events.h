#pragma once
// What the sequences tell while they run. Worker's thread.

#include <asio/awaitable.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ftp/engine/wire/certificate.h"
#include "ftp/engine/wire/failure.h"

namespace ftp {

class Events {
 public:
    virtual ~Events() = default;
    virtual void Sent(const std::string& line) = 0;      // a command, secrets masked
    virtual void Received(const std::string& line) = 0;  // one line of a reply
    virtual void TransferStarted(std::optional<std::int64_t> size) = 0;
    virtual void Moved(std::int64_t bytes) = 0;  // bytes of the running transfer so far
    /// Ends when there is room for more lines.
    virtual asio::awaitable<void> Listed(std::vector<std::string> lines) = 0;
    /// TLS stands, with this certificate of the server, which has not been judged yet.
    virtual void Secured(const std::string& version, const Certificate& certificate) = 0;
    /// A failure beside the operation's own outcome (listing lines that were dropped).
    virtual void Trouble(const Failure& failure) = 0;
    /// A step that was put off: the directory is there already, or cannot be made. Entering it tells which.
    virtual void NotMade(const Failure& failure) { Trouble(failure); }
    /// An upload that was over and well, and that the server has not kept whole. `label`: the one it was
    /// given.
    virtual void NotKept(const std::string& label, const Failure& failure) = 0;
};

}  // namespace ftp
