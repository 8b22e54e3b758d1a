#pragma once
// Operations on the server's files and folders that need no data connection (RFC 959 section 4.1.3).
// Each returns Refused with the server's words when it says no. Names are bytes as the server knows them.
//
// Where a step leads to is asked for with it (PWD), so that a further connection can go there.
//
// In a run the first three are put off: they leave, in their order, together with what is asked next, and
// what the server refuses of them is told as trouble then.

#include <string>

#include "ftp/engine/session/session.h"

namespace ftp {

Task<> ChangeDirectoryTo(Session& session, std::string name);
Task<> ChangeToParentDirectory(Session& session);
Task<> MakeDirectoryNamed(Session& session, std::string name);
/// The absolute name of the current directory (PWD), as it is after all that has been put off. Empty where
/// the server does not tell, or not so that it can be relied on.
Task<std::string> CurrentDirectory(Session& session);
Task<> RemoveDirectoryNamed(Session& session, std::string name);
Task<> DeleteFileNamed(Session& session, std::string name);
Task<> Rename(Session& session, std::string from, std::string to);

}  // namespace ftp
