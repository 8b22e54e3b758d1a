#pragma once
// The session's password and account, kept out of what is shown.

#include <cstddef>
#include <string>
#include <vector>

namespace ftp {

/// A server may say a password again, in a refusal or a welcome. Wherever the secrets stand in a line, as
/// UTF-8 or as Windows-1252, "****" takes their place. One that is broken over two lines, or told in other
/// words, is not found.
class SecretMask {
 public:
    /// An empty secret, and one that is the user name too, is none.
    void Set(const std::string& user, const std::vector<std::string>& secrets);
    void Clear();

    /// A line of a reply; its code stays, also where a secret would begin in it.
    std::string Reply(const std::string& line) const;
    /// A command as the trace shows it; its verb stays.
    std::string Command(const std::string& line) const;
    std::string Words(const std::string& text) const;

 private:
    std::string Masked(const std::string& text, std::size_t fixed) const;

    std::vector<std::string> secrets_;  // the longest first
};

}  // namespace ftp
