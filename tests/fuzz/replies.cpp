// The reply parser, and the readers of what replies say.

#include <string>
#include <vector>

#include "ftp/engine/wire/address.h"
#include "ftp/engine/wire/directory.h"
#include "ftp/engine/wire/features.h"
#include "ftp/engine/wire/reply.h"
#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::Require;

struct Outcome {
    std::string text;  // every line of every reply, each with LF
    std::vector<int> codes;
    bool failed = false;
    bool in_the_middle = false;
    bool operator==(const Outcome&) const = default;
};

void CheckReply(const ftp::Reply& reply) {
    Require(reply.code >= 100 && reply.code <= 599, "a code is 100..599");
    Require(!reply.lines.empty() && reply.lines.size() <= ftp::ReplyParser::kMaxLines, "lines are bounded");
    std::size_t bytes = 0;
    for (const std::string& line : reply.lines) {
        Require(line.size() <= ftp::ReplyParser::kMaxLine, "a line is bounded");
        Require(line.find('\n') == line.npos, "a line has no line end");
        bytes += line.size();
    }
    Require(bytes <= ftp::ReplyParser::kMaxReply, "a reply is bounded");
    Require(reply.lines.back().starts_with(std::to_string(reply.code)), "a reply ends with its code");
    Require(reply.lines.back().ends_with(reply.Text()), "the text ends the last line");
}

void CheckReaders(const ftp::Reply& reply) {
    ftp::ParseFeatures(reply);
    Require(ftp::ParseSizeReply(reply).value_or(0) >= 0, "a size is not negative");
    Require(ftp::ParseTransferSize(reply).value_or(0) >= 0, "a transfer size is not negative");
    Require(ftp::ParsePasv(reply).value_or(1) != 0, "a PASV port is not 0");
    Require(ftp::ParseEpsv(reply).value_or(1) != 0, "an EPSV port is not 0");
    const std::string directory = ftp::ParseDirectory(reply).value_or("/");
    Require(directory.starts_with('/') && directory.find('"') == directory.npos,
            "a directory is absolute, and surely the one that was meant");
}

class Reader {
 public:
    void Feed(std::string_view bytes) {
        outcome_.failed = !parser_.Feed(bytes).has_value();
        while (const auto reply = parser_.Take()) {
            CheckReply(*reply);
            CheckReaders(*reply);
            for (const std::string& line : reply->lines) outcome_.text += line + '\n';
            outcome_.codes.push_back(reply->code);
        }
    }

    Outcome End() {
        outcome_.in_the_middle = !outcome_.failed && parser_.InTheMiddle();
        return outcome_;
    }

 private:
    ftp::ReplyParser parser_;
    Outcome outcome_;
};

Outcome ReadInPieces(std::string_view bytes, std::size_t piece) {
    Reader reader;
    for (; bytes.size() > piece; bytes.remove_prefix(piece)) reader.Feed(bytes.substr(0, piece));
    reader.Feed(bytes);
    return reader.End();
}

std::string WithBareLineFeeds(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        if (c == '\n' && text.ends_with('\r')) text.pop_back();
        text += c;
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::AsText(data, size);
    const Outcome whole = ReadInPieces(bytes, size + 1);
    Require(whole == ReadInPieces(bytes, 1), "single bytes are read as the whole is");
    Require(whole == ReadInPieces(bytes, size == 0 ? 1 : 1 + data[0] % 16),
            "pieces are read as the whole is");

    const std::string text = WithBareLineFeeds(bytes);
    Require(text.starts_with(whole.text), "replies hold the bytes received");
    if (!whole.failed && !whole.in_the_middle) Require(text == whole.text, "no byte is lost");
    return 0;
}
