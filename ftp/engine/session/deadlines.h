#pragma once
// How long the engine waits for what.

#include <chrono>

namespace ftp {

/// Every wait of the engine has one of these deadlines.
struct Deadlines {
    std::chrono::milliseconds connect{20'000};  // one connection, over all its addresses
    std::chrono::milliseconds reply{60'000};    // one reply of the control connection
    std::chrono::milliseconds data{60'000};     // a data connection on which nothing moves
    std::chrono::milliseconds early_login{
        10'000};  // a reply to a login sent ahead, before one step at a time is tried
    std::chrono::milliseconds ahead{10'000};  // the answer to what was asked ahead, once it is its turn
    std::chrono::milliseconds idle{30'000};   // a connection on which nothing is said, until it is kept awake
    std::chrono::milliseconds pause{
        2'000};  // before a transfer that broke is tried again, but for the first time
    std::chrono::milliseconds abort{3'000};  // all replies that are due after an abort
    std::chrono::milliseconds quit{1'000};   // the answer to QUIT
};

}  // namespace ftp
