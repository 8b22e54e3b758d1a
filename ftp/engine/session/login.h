#pragma once
// From a host to a session that is ready for use.

#include <string>

#include "ftp/engine/session/session.h"
#include "ftp/engine/wire/address.h"

namespace ftp {

struct Credentials {
    std::string user, password, account;
};

/// Connects and logs in (RFC 959 section 5.4). Everything that need not wait for an answer leaves together,
/// before the greeting even; a server that minds is connected to again and asked one step at a time. A
/// refused login is Refused with the server's words and leaves no session.
Task<> Login(Session& session, HostAndPort where, Credentials who);

}  // namespace ftp
