#pragma once
// From a host to a session that is ready for use.

#include <string>

#include "ftp/engine/session/session.h"
#include "ftp/engine/wire/address.h"

namespace ftp {

/// All that it takes to log in, once more too.
struct Access {
    ServerAddress server;
    std::string user, password, account;
    /// The numeric address to connect to; empty: the server's name is looked up.
    std::string address = {};
    /// The server has been reached with TLS before: plain text is refused as NotEncrypted.
    bool had_tls = false;
    /// The fingerprint of a certificate that the user trusts though it is not valid; empty: none.
    std::string trusted = {};
};

/// Connects and logs in (RFC 959 section 5.4). Everything that need not wait for an answer leaves together,
/// before the greeting even; a server that minds is connected to again and asked one step at a time. A
/// refused login is Refused with the server's words and leaves no session. Neither user name nor password
/// leave before TLS stands and the certificate is valid or trusted (else NotTrusted), or plain text is what
/// is wanted (else NotEncrypted).
Task<> Login(Session& session, Access access);

}  // namespace ftp
