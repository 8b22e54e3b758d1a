#pragma once
// What the server has kept of an upload: 226 is a word, SIZE is a number.
//
// In a run the question for one file leaves with what follows it, and costs no round trip. Where the server
// says another number than was sent it is asked once more, as some write behind; everything but a plain
// number says nothing.

#include <string>
#include <vector>

#include "ftp/engine/session/session.h"

namespace ftp {

/// Whether the size of what has been sent can be asked for; the type of the session has to be image.
bool CanCheck(const Session& session);

/// SIZE for each of `session.unchecked`, in their order.
std::vector<Command> CheckQuestions(const Session& session);

/// Whether the directory has been left when the answers come, so that relative names mean others by then.
enum class LeavesDirectory { No, Yes };

/// The answers to the first so many of the questions. Those that differ for the second time are told as
/// NotKept; what is settled is struck out.
void TakeChecks(Session& session, const std::vector<Reply>& replies,
                LeavesDirectory leaves = LeavesDirectory::No);
/// Reads so many of them first.
Task<> ReadChecks(Session& session, std::size_t count, LeavesDirectory leaves);

/// Asks for all that is left to be checked, until nothing is.
Task<> CheckAll(Session& session);
/// Asks for the one file. NotKept with its name when the server has another size for it.
Task<> CheckNow(Session& session, std::string remote, std::int64_t bytes);

}  // namespace ftp
