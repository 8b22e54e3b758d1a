#pragma once
#include "ftp/engine/session/transfer.h"

namespace ftp {

/// RETR into a temporary file beside `local_path`, which takes its place when the file is whole: the data
/// ended, the server confirmed it, and no fewer bytes came than it had stated (else CutShort). Otherwise an
/// old file stays as it was. Where it breaks in the middle it goes on from there (REST) as long as the server
/// still says the same size, if there is a way back (Tries); else from the beginning.
Task<> RetrieveFile(Session& session, TransferMode mode, std::string remote, std::string local_path);

}  // namespace ftp
