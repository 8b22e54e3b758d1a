#pragma once
#include "ftp/engine/session/session.h"

namespace ftp {

/// Whether it is known how to get back to where the session was.
bool CanReopen(const Session& session);

/// Logs in again to a server that has ended the session, and goes back to the directory; what a run has put
/// off and has still to check stays. A server that refuses either is not asked a second time: nothing must
/// happen in another folder. AbortTransfer and Drop end it as Cancelled. NotConnected without a way back.
Task<> Reopen(Session& session);

/// What the server has said at last, before it ended the connection, is told.
asio::awaitable<void> HearOut(Session& session);

}  // namespace ftp
