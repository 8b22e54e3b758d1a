#include "tests/fuzz/server.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "tests/fuzz/clock.h"

namespace fuzz {
namespace {

using namespace std::chrono_literals;

constexpr const char* kOtherWords[] = {
    "421 Goodbye\r\n",
    "550 No such file\r\n",
    "500 Cannot\r\n",
    "502 Not implemented\r\n",
    "530 Not logged in\r\n",
    "425 No data connection\r\n",
    "426 Aborted\r\n",
    "450 Busy\r\n",
    "503 Bad sequence\r\n",
    "120 In a minute\r\n",
    "150 Here it comes (40 bytes)\r\n",
    "150 Here it comes (99999999999999999999 bytes)\r\n",
    "125 Already open\r\n",
    "200 Fine\r\n",
    "202 Superfluous\r\n",
    "213 0\r\n",
    "213 9223372036854775807\r\n",
    "213 -1\r\n",
    "220 Hello again\r\n",
    "226 Done\r\n",
    "227 Passive (10,0,0,1,19,137).\r\n",
    "227 Passive (10,0,0,1,0,0).\r\n",
    "229 Extended (|||5002|)\r\n",
    "229 Extended (|||0|)\r\n",
    "230 Welcome\r\n",
    "250 Fine\r\n",
    "257 \"/\"\r\n",
    "257 \"/a \"\"b\"\" c\" is it\r\n",
    "331 Password\r\n",
    "332 Account\r\n",
    "350 Go on\r\n",
    "211-Features\r\n SIZE\r\n UTF8\r\n REST STREAM\r\n AUTH TLS\r\n211 End\r\n",
    "230-Welcome\r\n230-to this\r\n 226 trap\r\n230 server\r\n",
    "150 one\r\n226 two\r\n",
    "226 one\r\n226 two\r\n",
    "999 What\r\n",
    "\r\n",
    "226\n",
    "226-never ends\r\n",
};

constexpr unsigned kRightSteps = 176;  // of Server::kSteps; without most being right nothing gets far

constexpr std::chrono::milliseconds kWaits[] = {1ms, 900ms, 2s, 5s, 11s, 21s, 31s, 61s};

/// "STOR a b" is "STOR" and "a b".
std::pair<std::string, std::string> Parted(const std::string& line) {
    const auto blank = line.find(' ');
    if (blank == line.npos) return {line, {}};
    return {line.substr(0, blank), line.substr(blank + 1)};
}

std::string Listing() {
    return "total 3\r\n"
           "drwxr-xr-x   2 demo demo     4096 Jan  1 10:00 bilder\r\n"
           "-rw-r--r--   1 demo demo       40 Jan  1 10:00 index.html\r\n"
           "lrwxrwxrwx   1 demo demo        4 Jan  1 10:00 hem -> home\r\n";
}

/// What a command that moves no data is answered with, where all is well.
std::string PlainAnswer(const std::string& verb) {
    static const std::map<std::string, std::string> answers{
        {"USER", "331 Password"},   {"PASS", "230 Welcome"},   {"ACCT", "230 Welcome"},
        {"OPTS", "200 Fine"},       {"TYPE", "200 Fine"},      {"MODE", "200 Fine"},
        {"NOOP", "200 Fine"},       {"CWD", "250 Fine"},       {"CDUP", "250 Fine"},
        {"MKD", "257 Made"},        {"RMD", "250 Fine"},       {"DELE", "250 Fine"},
        {"RNFR", "350 Go on"},      {"RNTO", "250 Fine"},      {"PWD", "257 \"/webb\" is it"},
        {"EPSV", "229 (|||5002|)"}, {"EPRT", "200 Fine"},      {"PORT", "200 Fine"},
        {"ABOR", "226 Nothing"},    {"QUIT", "221 Goodbye"},   {"PASV", "227 (127,0,0,1,19,138)"},
        {"PBSZ", "200 PBSZ=0"},     {"AUTH", "502 Not known"}, {"PROT", "536 Not here"}};
    if (verb == "FEAT") return "211-Features\r\n SIZE\r\n UTF8\r\n REST STREAM\r\n EPSV\r\n211 End\r\n";
    const auto answer = answers.find(verb);
    return (answer == answers.end() ? "500 Cannot" : answer->second) + "\r\n";
}

}  // namespace

std::string Server::FileNamed(const std::string& name) const {
    const auto kept = kept_.find(name);
    if (kept != kept_.end()) return kept->second;
    static constexpr std::array<std::size_t, 4> kSizes{40, 0, 700, 5000};
    std::string bytes;
    for (const std::size_t size = kSizes[name.size() % kSizes.size()]; bytes.size() < size;)
        bytes += name + " has many bytes, number " + std::to_string(bytes.size()) + '\n';
    return bytes;
}

void Server::Move(unsigned step) {
    if (step >= kRightSteps) return DoWrong();
    if (DoRight()) return;
    LetTimePass();  // the client waits for nothing that a server could do
}

void Server::GoAway() {
    proper_words_ = proper_data_ = false;
    net_.GoAway();
}

/// What a proper server does next. False when there is nothing to be done.
bool Server::DoRight() {
    if (net_.Connecting()) {
        transfer_ = Way::None;
        rest_of_reply_.clear();
        greeted_ = net_.Control();
        used_ = net_.Data();
        proper_words_ = proper_data_ = true;
        net_.Accept(*net_.Control());
        Say("220 Ready\r\n");
        return true;
    }
    const auto& data = net_.Data();
    const bool expected = data && !data->stands && !MemoryTransport::Gone(*data);
    if (expected && (transfer_ != Way::None || !HasCommand())) {
        net_.Accept(*data);
        return true;
    }
    if (ShakeHands()) return true;
    if (!rest_of_reply_.empty()) {
        Say(std::exchange(rest_of_reply_, {}));
        return true;
    }
    if (transfer_ != Way::None) return CarryTransferOn();
    if (!HasCommand()) return false;
    Say(RightAnswer(TakeCommand()));
    return true;
}

bool Server::ShakeHands() {
    for (const auto& pipe : {net_.Control(), net_.Data()}) {
        const bool waits = pipe && pipe->secured && !pipe->shaken_hands && !pipe->handshake_fails;
        if (!waits || MemoryTransport::Gone(*pipe)) continue;
        net_.ShakeHands(*pipe, true);
        return true;
    }
    return false;
}

std::string Server::RightAnswer(const std::string& line) {
    const auto [verb, argument] = Parted(line);
    if (verb == "SIZE") return "213 " + std::to_string(FileNamed(argument).size()) + "\r\n";
    if (verb == "REST") {
        offset_ = static_cast<std::size_t>(std::strtoull(argument.c_str(), nullptr, 10));
        return "350 Go on\r\n";
    }
    if (verb == "LIST" || verb == "RETR" || verb == "STOR" || verb == "APPE")
        return BeginTransfer(verb, argument);
    if (verb == "AUTH" && offers_tls_) return "234 Go on\r\n";
    if (verb == "PROT" && offers_tls_) return "200 Private\r\n";
    return PlainAnswer(verb);
}

std::string Server::BeginTransfer(const std::string& verb, const std::string& name) {
    said_.clear();
    name_ = name;
    transfer_ = verb == "LIST" || verb == "RETR" ? Way::Down : Way::Up;
    if (transfer_ == Way::Down) {
        outgoing_ = verb == "LIST" ? Listing() : FileNamed(name);
        outgoing_.erase(0, std::min(offset_, outgoing_.size()));
    } else {
        std::string& file = kept_[name];
        if (verb == "STOR") file.resize(std::min(offset_, file.size()));
    }
    offset_ = 0;
    return "150 Opening\r\n";
}

/// Some more bytes, or the end.
bool Server::CarryTransferOn() {
    const auto& data = net_.Data();
    if (!data || data == used_) return false;  // it has not been opened yet
    if (data->client_reset || data->server_crashed || data->server_ended) {
        EndTransfer("426 Broken off\r\n");
    } else if (transfer_ == Way::Down && data->client_closed) {
        EndTransfer("426 Broken off\r\n");
    } else if (net_.Control()->shaken_hands && !data->shaken_hands) {
        return false;  // the client has not asked for it yet
    } else if (transfer_ == Way::Down) {
        const std::string piece = outgoing_.substr(0, 3000);
        outgoing_.erase(0, piece.size());
        data->to_client += piece;
        data->sent += piece;
        data->moved.cancel();
        if (!outgoing_.empty()) return true;
        net_.End(*data);
        EndTransfer("226 Done\r\n");
    } else if (!data->to_server.empty()) {
        kept_[name_] += data->to_server;
        data->taken += std::exchange(data->to_server, {});
        data->moved.cancel();
    } else if (data->client_ended || data->client_closed) {
        net_.End(*data);
        EndTransfer("226 Done\r\n");
    } else {
        return false;
    }
    return true;
}

void Server::EndTransfer(const std::string& reply) {
    transfer_ = Way::None;
    used_ = net_.Data();
    Say(reply);
}

void Server::DoWrong() {
    switch (input_.Choice(8)) {
        case 0:  // nothing wrong: what the client has begun is not waited for
            net_.Control() ? net_.Control()->piece = 1 + input_.Choice(32) : input_.Byte();
            return;
        case 1:
            if (net_.Data()) {
                net_.Data()->piece = 16 + 16 * input_.Choice(32);
                net_.Data()->window = 16 + 16 * input_.Choice(32);
            }
            return;
        case 2:
        case 3:
        case 4:
            proper_words_ = false;
            return WrongWords();
        case 5:
        case 6:
            proper_data_ = false;
            return WrongData();
        default:
            return LetTimePass();
    }
}

void Server::WrongWords() {
    if (!net_.Control() || !net_.Control()->stands) {
        if (net_.Connecting()) net_.Crash(*net_.Control());
        return;
    }
    switch (input_.Choice(11)) {
        case 0:
        case 1:
        case 2:
            if (HasCommand()) TakeCommand();
            [[fallthrough]];
        case 3:
            return Say(kOtherWords[input_.Choice(std::size(kOtherWords))]);
        case 4:  // a reply in pieces
            if (HasCommand()) rest_of_reply_ += RightAnswer(TakeCommand());
            Say(rest_of_reply_.substr(0, input_.Choice(16)));
            rest_of_reply_.erase(0, std::min(last_.size(), rest_of_reply_.size()));
            return;
        case 5:  // swallowed
            if (HasCommand()) TakeCommand();
            return;
        case 6:  // answered in the middle of a transfer
            if (HasCommand()) Say(RightAnswer(TakeCommand()));
            return;
        case 7:
            return Say(std::string(input_.Take(input_.Byte())));
        case 8:
            return net_.ShakeHands(*net_.Control(), false);
        case 9:
            return net_.End(*net_.Control());
        default:
            return net_.Crash(*net_.Control());
    }
}

void Server::WrongData() {
    const auto& data = net_.Data();
    if (!data || MemoryTransport::Gone(*data)) return;
    switch (input_.Choice(6)) {
        case 0:
            return net_.Accept(*data);
        case 4:
            return net_.ShakeHands(*data, input_.Choice(2) == 0);
        case 1:
            return net_.End(*data);
        case 2:
            return net_.Crash(*data);
        case 3: {
            if (!data->stands) return;
            const std::string_view bytes = input_.Take(input_.Byte());
            data->to_client += bytes;
            data->sent += bytes;
            return void(data->moved.cancel());
        }
        default:  // ended with not a word about it, and perhaps short
            outgoing_.resize(std::min<std::size_t>(outgoing_.size(), input_.Byte()));
            return;
    }
}

void Server::LetTimePass() {
    proper_words_ = proper_data_ = false;
    PassTime(context_, kWaits[input_.Choice(std::size(kWaits))]);
}

bool Server::HasCommand() const {
    return net_.Control() && net_.Control() == greeted_ &&
           net_.Control()->to_server.find('\n') != std::string::npos;
}

std::string Server::TakeCommand() {
    std::string& bytes = net_.Control()->to_server;
    const auto end = bytes.find('\n');
    std::string line = bytes.substr(0, end);
    if (line.ends_with('\r')) line.pop_back();
    bytes.erase(0, end + 1);
    for (auto iac = line.find("\xff\xff"); iac != line.npos; iac = line.find("\xff\xff", iac + 1))
        line.erase(iac, 1);  // doubled on the way (RFC 854)
    return line;
}

void Server::Say(const std::string& bytes) {
    last_ = bytes;
    Pipe& control = *net_.Control();
    if (MemoryTransport::Gone(control)) return;
    control.to_client += bytes;
    said_ += bytes;
    control.moved.cancel();
}

}  // namespace fuzz
