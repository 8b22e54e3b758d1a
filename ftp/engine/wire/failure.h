#pragma once
// What can go wrong in the engine, as a value. Operations return it; nothing here is thrown.

#include <string>
#include <utility>

#include <tl/expected.hpp>

namespace ftp {

enum class FailureKind {
    Refused,            // the server answered 4xx or 5xx; `code` is the reply code
    Protocol,           // the server broke the protocol or a bound of the parsers
    NotConnected,       // an operation without a session
    HostNotFound,       // the name has no address
    ConnectionRefused,  // nobody listens there
    ConnectionLost,     // reset or closed by the peer in the middle
    Unreachable,        // no route to the host or network
    TimedOut,           // a deadline ran out
    Cancelled,          // the user aborted the transfer or dropped the session
    NotEncrypted,       // the server offers no TLS where it is demanded; no password has been sent
    TlsFailed,          // TLS could not be agreed on, or was broken; `detail` in OpenSSL's words
    NotTrusted,         // the server's certificate is not trusted; no password has been sent
    CutShort,           // the data ended before they were whole
    NotKept,            // after an upload the server has another size for the file than was sent
    BadArgument,        // a name that cannot be sent (CR, LF, NUL, empty) or not be used locally
    LocalNotFound,      // the local file is not there
    LocalDenied,        // no permission for the local file or folder
    LocalDiskFull,      // no space, or the quota is used up
    LocalPath,          // the local path does not lead to a plain file or folder
    LocalOther,         // any other local error; `code` is errno
};

struct Failure {
    FailureKind kind = FailureKind::Protocol;
    int code = 0;        // reply code or errno where `kind` says so, otherwise 0
    std::string detail;  // the server's own words or the name concerned, as bytes from outside; may be empty

    bool operator==(const Failure&) const = default;
};

/// The result of an operation: a value or a Failure. Not to be dropped.
template <class T = void>
class [[nodiscard]] Result : public tl::expected<T, Failure> {
 public:
    using tl::expected<T, Failure>::expected;
};

inline tl::unexpected<Failure> Fail(FailureKind kind, std::string detail = {}, int code = 0) {
    return tl::unexpected<Failure>(Failure{kind, code, std::move(detail)});
}
inline tl::unexpected<Failure> Fail(Failure failure) {
    return tl::unexpected<Failure>(std::move(failure));
}

}  // namespace ftp
