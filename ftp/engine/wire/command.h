#pragma once
// Commands of the control connection (RFC 959 section 4.1): building and masking.

#include <string>
#include <string_view>

#include "ftp/engine/wire/failure.h"

namespace ftp {

/// One command line ready to be sent and its form for the trace.
struct Command {
    std::string line;   // with CR LF; IAC (0xFF) bytes of the argument doubled (RFC 854, RFC 2640 3.1)
    std::string trace;  // without CR LF; the argument of PASS and ACCT is "****"
};

/// Builds verb + blank + argument, or the verb alone when the argument is empty.
/// Refuses CR, LF and NUL in the argument and arguments over 8 KiB (BadArgument, with the argument's
/// beginning as detail, except for PASS and ACCT).
Result<Command> MakeCommand(std::string_view verb, std::string_view argument = {});

}  // namespace ftp
