#pragma once
#include "ftp/engine/session/session.h"

namespace ftp {

/// QUIT, a moment's wait for the goodbye, and the end of the connection. Never fails: without a session it is
/// over.
asio::awaitable<void> QuitSession(Session& session);

}  // namespace ftp
