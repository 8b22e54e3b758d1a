#include "ftp/secret_mask.h"

#include <QString>
#include <algorithm>
#include <string_view>

#include "ftp/name_codec.h"

namespace ftp {
namespace {

constexpr std::string_view kMask = "****";

/// The length of the code that the line begins with, with the blank or the hyphen after it, or 0.
std::size_t CodeLength(const std::string& line) {
    constexpr std::size_t kCode = 3;
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    if (line.size() < kCode || !std::all_of(line.begin(), line.begin() + kCode, is_digit)) return 0;
    if (line.size() == kCode) return kCode;
    return line[kCode] == ' ' || line[kCode] == '-' ? kCode + 1 : 0;
}

}  // namespace

void SecretMask::Set(const std::string& user, const std::vector<std::string>& secrets) {
    Clear();
    for (const std::string& secret : secrets) {
        if (secret.empty() || secret == user) continue;
        secrets_.push_back(secret);
        // A lone byte order mark is nothing as text.
        auto legacy = NameCodec::Legacy(QString::fromStdString(secret));
        if (legacy && !legacy->empty() && *legacy != secret) secrets_.push_back(*std::move(legacy));
    }
    std::ranges::sort(secrets_, std::ranges::greater(), &std::string::size);
}

void SecretMask::Clear() {
    secrets_.clear();
}

std::string SecretMask::Reply(const std::string& line) const {
    return Masked(line, CodeLength(line));
}

std::string SecretMask::Command(const std::string& line) const {
    // The engine has masked these two already.
    if (line.starts_with("PASS ") || line.starts_with("ACCT ")) return line;
    return Masked(line, std::min(line.find(' '), line.size() - 1) + 1);
}

std::string SecretMask::Words(const std::string& text) const {
    return Masked(text, 0);
}

/// The first `fixed` bytes stay, also where a secret begins in them.
std::string SecretMask::Masked(const std::string& text, std::size_t fixed) const {
    if (secrets_.empty()) return text;
    std::string masked;
    for (std::size_t i = 0; i < text.size();) {
        const std::string_view rest = std::string_view(text).substr(i);
        const auto found = std::ranges::find_if(secrets_, [&](const std::string& secret) {
            return rest.starts_with(secret) && i + secret.size() > fixed;
        });
        if (found == secrets_.end()) {
            masked += text[i++];
        } else {
            if (i < fixed) masked += text.substr(i, fixed - i);
            masked += kMask;
            i += found->size();
        }
    }
    return masked;
}

}  // namespace ftp
