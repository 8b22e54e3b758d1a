#pragma once
// What a server shows to prove who it is (X.509, RFC 5280), as a value.

#include <cstdint>
#include <string>
#include <vector>

namespace ftp {

struct Certificate {
    std::string fingerprint;  // SHA-256 of the whole: 32 pairs of capital hex digits, set apart by colons
    std::vector<std::string> names;  // the hosts that it is for, as bytes from outside
    std::string subject, issuer;     // "CN=ftp.example.se, O=Exempel"; bytes from outside
    std::int64_t not_before = 0;     // seconds since 1970, UTC
    std::int64_t not_after = 0;

    // What is wrong with it:
    bool unknown_issuer = false;  // nobody whom the system trusts vouches for it
    bool self_signed = false;     // nobody but itself does; then unknown_issuer holds, too
    bool expired = false;
    bool not_yet_valid = false;
    bool wrong_host = false;  // it is for other hosts than the one that was asked for
    std::string other;        // any other fault, in OpenSSL's words

    bool Valid() const {
        return !unknown_issuer && !expired && !not_yet_valid && !wrong_host && other.empty();
    }
};

}  // namespace ftp
