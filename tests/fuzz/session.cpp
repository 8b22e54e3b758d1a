// Whole sessions over connections in memory, with a server, a disk and a user that the input leads.

#include <algorithm>
#include <array>
#include <asio/co_spawn.hpp>
#include <asio/io_context.hpp>
#include <exception>
#include <optional>
#include <string>

#include "ftp/engine/session/check.h"
#include "ftp/engine/session/files.h"
#include "ftp/engine/session/list.h"
#include "ftp/engine/session/login.h"
#include "ftp/engine/session/quit.h"
#include "ftp/engine/session/retrieve.h"
#include "ftp/engine/session/session.h"
#include "ftp/engine/session/store.h"
#include "ftp/engine/wire/listing_lines.h"
#include "tests/fuzz/clock.h"
#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/input.h"
#include "tests/fuzz/memory_files.h"
#include "tests/fuzz/memory_net.h"
#include "tests/fuzz/server.h"

namespace {

using fuzz::Require;
using namespace std::chrono_literals;

constexpr std::string_view kPassword = "s3cret";

constexpr std::array<std::string_view, 30> kVerbs{
    "USER", "PASS", "ACCT", "FEAT", "OPTS", "TYPE", "SIZE", "EPSV", "PASV", "EPRT",
    "PORT", "LIST", "RETR", "STOR", "APPE", "REST", "CWD",  "MKD",  "RMD",  "DELE",
    "RNFR", "RNTO", "PWD",  "ABOR", "NOOP", "QUIT", "AUTH", "PBSZ", "PROT", "CDUP"};

struct Name {
    std::string text;
    bool can_be_sent = true;
};

/// Counts the lines that a client has written, and finds what must never leave.
class Commands {
 public:
    void See(std::string_view bytes) {
        Require(bytes.ends_with("\r\n"), "whole commands are sent");
        while (!bytes.empty()) {
            const auto end = bytes.find("\r\n");
            SeeLine(bytes.substr(0, end));
            bytes.remove_prefix(end + 2);
        }
    }
    /// Where the newest RETR was asked to begin, and whether the newest STOR or APPE was asked not to begin
    /// at 0.
    std::size_t RetrievedFrom() const { return retrieved_from_; }
    bool StoredFromWithin() const { return stored_from_within_; }

 private:
    void SeeLine(std::string_view line) {
        Require(line.find_first_of(std::string_view("\r\n\0", 3)) == line.npos, "a command is one line");
        const std::string_view verb = line.substr(0, line.find(' '));
        Require(std::ranges::find(kVerbs, verb) != kVerbs.end(), "a command is one of ours");
        Require((line.find(kPassword) == line.npos) == (verb != "PASS"), "the password is sent as such only");
        if (verb == "REST") rest_ = std::strtoull(std::string(line.substr(4)).c_str(), nullptr, 10);
        if (verb == "RETR") retrieved_from_ = std::exchange(rest_, 0);
        if (verb == "APPE") stored_from_within_ = true;
        if (verb == "STOR") stored_from_within_ = std::exchange(rest_, 0) > 0;
    }

    std::size_t rest_ = 0;
    std::size_t retrieved_from_ = 0;
    bool stored_from_within_ = false;
};

class Play : private ftp::Events {
 public:
    explicit Play(std::string_view bytes)
        : input_(bytes),
          net_(io_, [this](std::string_view written) { SeeCommands(written); }),
          server_(io_, net_, input_),
          files_([this](const auto&, const auto& file) { CheckCommit(file); }) {
        files_.files["old"] = "what was there before";
        files_.files["empty"];
        files_.files["small"].assign(40, 's');
        files_.files["large"].assign(6000, 'l');
        session_.emplace(net_, files_, static_cast<ftp::Events&>(*this), deadlines_);
    }

    void Run() {
        LogIn();
        for (int operations = 0; !input_.UsedUp() && operations < 24; ++operations) Operate();
        [[maybe_unused]] const auto left = Carry(Leave());
        session_.reset();
        RunHandlers();
        Require(io_.stopped(), "nothing is left to be done");
    }

 private:
    void LogIn();
    void Operate();
    void Simple(unsigned operation);
    ftp::Task<> SimpleSequence(unsigned operation, Name name, Name other);
    void Retrieve();
    void Store();
    void BeginOrEndRun();
    ftp::Task<> Settle();
    ftp::Task<> Leave();

    ftp::Result<> Carry(ftp::Task<> sequence);
    asio::awaitable<void> Follow(ftp::Task<> sequence);
    void RunHandlers();
    void Turn();
    void SeeCommands(std::string_view written);
    bool Served(const ftp::Result<>& outcome) const;
    void CheckCommit(const std::string& file);

    Name AnyName();
    ftp::TransferMode AnyMode();

    // What the sequences tell.
    void Sent(const std::string& line) override {
        Require(line.find(kPassword) == line.npos, "the trace hides the password");
    }
    void Received(const std::string&) override {}
    void TransferStarted(std::optional<std::int64_t> size) override {
        Require(size.value_or(0) >= 0, "a size is not negative");
    }
    void Moved(std::int64_t) override {}
    asio::awaitable<void> Listed(std::vector<std::string> lines) override {
        for (const std::string& line : lines)
            Require(!line.empty() && line.size() <= ftp::ListingLines::kMaxLine, "a line is bounded");
        co_return;
    }
    void Secured(const std::string&, const ftp::Certificate&) override {}
    void NotKept(const std::string&, const ftp::Failure&) override {
        Require(!server_.Proper(), "a proper server keeps what it is sent");
    }
    void Trouble(const ftp::Failure&) override {}

    fuzz::Input input_;
    asio::io_context io_;
    Commands commands_;
    fuzz::MemoryTransport net_;
    fuzz::Server server_;
    fuzz::MemoryFiles files_;
    ftp::Deadlines deadlines_;
    std::optional<ftp::Session> session_;

    // Of the operation under way:
    std::optional<ftp::Result<>> outcome_;
    bool disturbed_ = false;  // the user has called it off
    int hurry_ = 0;           // so many handlers run before the next turn; 0: all
    std::string remote_;      // the file that moves
    bool image_ = true;
    bool password_is_protected_ = false;  // or is not to leave
    int commits_ = 0;
};

// The user.

void Play::LogIn() {
    static constexpr std::array kSecurities{ftp::Security::None, ftp::Security::IfOffered,
                                            ftp::Security::Explicit, ftp::Security::Implicit};
    ftp::Access access;
    access.server.where.host = "127.0.0.1";
    access.server.security = kSecurities[std::max(input_.Choice(16), 12U) - 12];
    access.user = "demo";
    access.password = kPassword;
    const unsigned circumstances = input_.Choice(32);
    const bool offered = circumstances % 2 == 1;
    const bool trusted = circumstances < 28;
    access.had_tls = circumstances == 27;
    server_.OfferTls(offered);
    net_.certificate = {};
    net_.certificate.fingerprint = "AB:CD";
    net_.certificate.expired = !trusted;
    const bool asks = access.server.security != ftp::Security::None;
    const bool demands = asks && (access.had_tls || access.server.security != ftp::Security::IfOffered);
    const bool possible = offered ? trusted || !asks : !demands;
    password_is_protected_ = demands;
    session_->Forget();
    session_->in_run = false;
    const auto outcome = Carry(ftp::Login(*session_, access));
    Require(outcome.has_value() || !session_->LoggedIn(), "a login that failed leaves no session");
    Require(!possible || Served(outcome), "a proper server is logged in to");
    if (session_->LoggedIn() && demands) Require(session_->Encrypted(), "what is to be protected is");
    if (session_->LoggedIn() && session_->Encrypted())
        Require(trusted, "who is not trusted is not logged in to");
}

void Play::Operate() {
    const unsigned operation = input_.Choice(16);
    if (operation < 4) return Retrieve();
    if (operation < 7) return Store();
    if (operation == 7) return BeginOrEndRun();
    if (operation == 15) return LogIn();
    Simple(operation);
}

/// What needs no local file.
void Play::Simple(unsigned operation) {
    const bool waits = session_->in_run && operation <= 10;  // steps of a run are put off
    if (!waits) {
        [[maybe_unused]] const auto settled = Carry(Settle());
    }
    const Name name = AnyName();
    const Name other = AnyName();
    const bool nameless = operation == 8 || operation == 14;
    const bool possible =
        session_->LoggedIn() && (nameless || name.can_be_sent) && (operation != 13 || other.can_be_sent);
    const auto outcome = Carry(SimpleSequence(operation, name, other));
    Require(!possible || Served(outcome), "a proper server serves");
}

ftp::Task<> Play::SimpleSequence(unsigned operation, Name name, Name other) {
    switch (operation) {
        case 8:
            return ftp::ChangeToParentDirectory(*session_);
        case 9:
            return ftp::ChangeDirectoryTo(*session_, name.text);
        case 10:
            return ftp::MakeDirectoryNamed(*session_, name.text);
        case 11:
            return ftp::RemoveDirectoryNamed(*session_, name.text);
        case 12:
            return ftp::DeleteFileNamed(*session_, name.text);
        case 13:
            return ftp::Rename(*session_, name.text, other.text);
        default:
            return ftp::ListDirectory(*session_, AnyMode());
    }
}

void Play::Retrieve() {
    const Name name = AnyName();
    const ftp::TransferMode mode = AnyMode();
    const std::string path = input_.Choice(4) == 3 ? "new" : "old";
    const bool roomy = input_.Choice(16) != 15;
    files_.space = roomy ? 1'000'000 : input_.Byte();
    const auto before = files_.files;
    remote_ = name.text;
    image_ = mode.image;
    commits_ = 0;
    const bool possible = session_->LoggedIn() && name.can_be_sent && roomy;
    const auto outcome = Carry(ftp::RetrieveFile(*session_, mode, name.text, path));
    Require(!possible || Served(outcome), "a proper server's file is fetched");
    Require(commits_ == (outcome ? 1 : 0), "a file that was not fetched takes nobody's place");
    if (!outcome) Require(files_.files == before, "a download that failed leaves all as it was");
}

void Play::Store() {
    static constexpr std::array kSources{"small", "large", "empty", "not there"};
    const Name name = AnyName();
    const ftp::TransferMode mode = AnyMode();
    const std::string path = kSources[input_.Choice(4)];
    files_.cut = input_.Choice(16) == 15 ? 7 : 0;
    const bool readable = files_.files.contains(path) && (files_.cut == 0 || path == "empty");
    const bool possible = session_->LoggedIn() && name.can_be_sent && readable;
    const auto outcome = Carry(ftp::StoreFile(*session_, mode, path, name.text));
    files_.cut = 0;
    Require(!possible || Served(outcome), "a proper server is sent a file");
    if (!outcome) return;
    Require(readable, "what cannot be read whole is not sent");
    const std::string& source = files_.files[path];
    const fuzz::Pipe& data = *net_.Data();
    const std::string arrived = data.taken + data.to_server;
    Require(data.client_ended && !data.client_reset, "the end of a file is one");
    Require(source.ends_with(arrived), "the file's bytes are sent");
    Require(arrived.size() == source.size() || commands_.StoredFromWithin(), "all of them");
    if (server_.Proper()) Require(server_.FileNamed(name.text) == source, "a proper server has the file");
}

void Play::BeginOrEndRun() {
    if (session_->in_run) {
        [[maybe_unused]] const auto settled = Carry(Settle());
    }
    session_->in_run = !session_->in_run;
    session_->directory.reset();
}

/// What has to be over before something else than a file or a step follows.
ftp::Task<> Play::Settle() {
    auto outcome = co_await session_->CatchUp();
    if (outcome && session_->control) outcome = co_await ftp::CheckAll(*session_);
    session_->next_port.reset();
    co_return outcome;
}

ftp::Task<> Play::Leave() {
    co_await ftp::QuitSession(*session_);
    co_return ftp::Result<>{};
}

Name Play::AnyName() {
    const unsigned which = input_.Choice(16);
    switch (which) {
        case 15:
            return {"a\r\nDELE b", false};
        case 14:
            return {"", false};
        case 13:
            return {std::string("a\0b", 3), false};
        case 12:
            return {"line\nfeed", false};
        case 11:
            return {std::string(9000, 'n'), false};
        case 10:
            return {"\xff\xf4 y\xf6"};
        case 9:
            return {".."};
        default:
            return {std::string("index.html").substr(which)};
    }
}

ftp::TransferMode Play::AnyMode() {
    const unsigned which = input_.Choice(16);
    return {.passive = which < 14, .image = which % 8 != 7};
}

// The world.

/// Carries a sequence out while the server, and at times the user, does what the input says.
ftp::Result<> Play::Carry(ftp::Task<> sequence) {
    outcome_.reset();
    disturbed_ = session_->called_off = session_->heard = false;
    session_->risk = {};
    asio::co_spawn(io_, Follow(std::move(sequence)),
                   [](const std::exception_ptr& fault) { Require(!fault, "sequences do not throw"); });
    RunHandlers();
    while (!outcome_ && !input_.UsedUp()) {
        Turn();
        RunHandlers();
    }
    if (!outcome_) {
        server_.GoAway();
        RunHandlers();
    }
    for (int minutes = 0; !outcome_ && minutes < 10; ++minutes) fuzz::PassTime(io_, 1min);
    Require(outcome_.has_value(), "every operation ends");
    if (session_->control && !session_->control->Open()) session_->Forget();
    session_->dropped = false;
    return *outcome_;
}

asio::awaitable<void> Play::Follow(ftp::Task<> sequence) {
    outcome_ = co_await std::move(sequence);
}

void Play::RunHandlers() {
    io_.restart();
    if (hurry_ == 0) io_.poll();
    for (; hurry_ > 0; --hurry_) io_.poll_one();
}

void Play::Turn() {
    const unsigned step = input_.Byte();
    if (step < fuzz::Server::kSteps) return server_.Move(step);
    if (step < 250) {
        hurry_ = 1 + static_cast<int>(input_.Choice(8));
        return server_.Move(input_.Choice(fuzz::Server::kSteps));
    }
    disturbed_ = true;
    if (step < 254) return session_->AbortTransfer();
    session_->Drop();
}

void Play::SeeCommands(std::string_view written) {
    commands_.See(written);
    const bool secret = written.find("PASS ") != written.npos;
    if (secret && password_is_protected_)
        Require(net_.Control()->shaken_hands, "a password leaves protected");
    if (secret && net_.Control()->shaken_hands)
        Require(net_.certificate.Valid(), "a password leaves to whom is trusted");
}

/// Whether the operation went well, unless somebody is to blame for it.
bool Play::Served(const ftp::Result<>& outcome) const {
    return outcome.has_value() || disturbed_ || !server_.Proper();
}

/// A file is about to take the place of its target.
void Play::CheckCommit(const std::string& file) {
    ++commits_;
    const fuzz::Pipe& data = *net_.Data();
    Require(data.server_ended && !data.server_crashed && data.to_client.empty(), "the data have ended");
    Require(file.ends_with(data.sent), "a file holds what was sent");
    const std::size_t before = file.size() - data.sent.size();
    Require(before == 0 || before == commands_.RetrievedFrom(),
            "a file is what was sent, from its beginning");
    const bool in_step = server_.SpeaksProperly();  // otherwise an older answer may be taken for this one
    Require(!in_step || server_.Said().find("226") != std::string::npos, "the server has confirmed the file");
    if (server_.SpeaksProperly() && image_)
        Require(file.size() >= server_.FileNamed(remote_).size(), "a file is as large as was stated");
    if (server_.Proper()) Require(file == server_.FileNamed(remote_), "a proper server's file is whole");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Play(fuzz::AsText(data, size)).Run();
    return 0;
}
