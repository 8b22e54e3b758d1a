#pragma once
#include "ftp/engine/session/transfer.h"

namespace ftp {

/// STOR of a local file; its bytes leave as soon as the data connection stands. The server's size for it has
/// to be what was sent (NotKept); in a run that is asked with what follows and told by the label. Where it
/// breaks in the middle it goes on from what the server has (APPE), if there is a way back (Tries).
Task<> StoreFile(Session& session, TransferMode mode, std::string local_path, std::string remote,
                 std::string label = {});

}  // namespace ftp
