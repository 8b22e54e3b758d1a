#pragma once
// Operations on the server's files and folders that need no data connection (RFC 959 section 4.1.3).
// Each returns Refused with the server's words when it says no. Names are bytes as the server knows them.

#include <string>

#include "ftp/engine/session/session.h"

namespace ftp {

Task<> ChangeDirectoryTo(Session& session, std::string name);
Task<> ChangeToParentDirectory(Session& session);
Task<> MakeDirectoryNamed(Session& session, std::string name);
Task<> RemoveDirectoryNamed(Session& session, std::string name);
Task<> DeleteFileNamed(Session& session, std::string name);
Task<> Rename(Session& session, std::string from, std::string to);

}  // namespace ftp
