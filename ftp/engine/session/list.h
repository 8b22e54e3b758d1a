#pragma once
#include "ftp/engine/session/transfer.h"

namespace ftp {

/// LIST of the current directory (RFC 959 section 4.1.3): each line as the server sent it, in batches, to
/// Events::Listed. Lines over the bound are left out and told as one Trouble (Protocol) at the end.
Task<> ListDirectory(Session& session, TransferMode mode);

}  // namespace ftp
