#pragma once
// Ways for a scripted server to send a reply other than as it is:
//
//     server.At("RETR", {Replies(Doubled(), 2), Proper()});  // the 226 comes twice

#include <chrono>
#include <string>

#include "tests/support/scripted_server.h"

namespace ftp_test {

Manner InPlaceOf(std::string bytes);  // just these bytes, line ends included
Manner Late(std::chrono::milliseconds after);
Manner ByteByByte();  // every byte in a packet of its own
Manner Lost();        // never sent
Manner Doubled();
Manner Unterminated();  // without its line end, and nothing after it
/// `bytes` at the end of every line of the reply, before its line end.
Manner Decorated(std::string bytes);
/// So many lines of 60 characters with the code of the reply in front of it.
Manner AfterLines(int count);
/// A line of so many characters.
Manner OfLength(std::size_t length);
Manner Endless();  // lines of one reply, until the client has gone
Manner ClosedBefore();
Manner ResetBefore();
Manner ClosedAfter();
Manner ResetAfter();

}  // namespace ftp_test
