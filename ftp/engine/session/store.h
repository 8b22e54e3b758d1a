#pragma once
#include "ftp/engine/session/transfer.h"

namespace ftp {

/// STOR of a local file; its bytes leave as soon as the data connection stands.
Task<> StoreFile(Session& session, TransferMode mode, std::string local_path, std::string remote);

}  // namespace ftp
