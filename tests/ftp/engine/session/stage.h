#pragma once
// Where a script is played: a session over it, the real disk, and a record of what was told.

#include <asio/io_context.hpp>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "ftp/engine/net/local_files.h"
#include "ftp/engine/session/session.h"
#include "tests/ftp/engine/session/script.h"

namespace ftp_script {

/// A folder of its own, removed with what is in it.
class Scratch {
 public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string Path(const std::string& name) const { return (folder_ / name).native(); }
    void Write(const std::string& name, const std::string& bytes) const;
    std::string Read(const std::string& name) const;
    /// The names of all that is there, sorted.
    std::vector<std::string> Names() const;

 private:
    std::filesystem::path folder_;
};

class Record : public ftp::Events {
 public:
    void Sent(const std::string& line) override { trace.push_back("> " + line); }
    void Received(const std::string& line) override { trace.push_back("< " + line); }
    void TransferStarted(std::optional<std::int64_t> size) override { sizes.push_back(size.value_or(-1)); }
    void Moved(std::int64_t bytes) override { moved.push_back(bytes); }
    asio::awaitable<void> Listed(std::vector<std::string> batch) override {
        lines.insert(lines.end(), batch.begin(), batch.end());
        co_return;
    }
    void Secured(const std::string& version, const ftp::Certificate& certificate) override {
        secured.push_back(version + " " + certificate.fingerprint);
    }
    void Trouble(const ftp::Failure& failure) override { troubles.push_back(failure); }

    void NotKept(const std::string& label, const ftp::Failure& failure) override {
        not_kept.push_back(label);
        troubles.push_back(failure);
    }

    std::vector<std::string> trace, lines, secured, not_kept;
    std::vector<std::int64_t> sizes, moved;
    std::vector<ftp::Failure> troubles;
};

/// Limits that no run on a busy machine comes near, and such that a silent server is soon given up.
ftp::Deadlines Patient();
ftp::Deadlines Impatient(std::chrono::milliseconds patience);

class Stage {
 public:
    explicit Stage(Steps steps);
    ~Stage();

    using Sequence = std::function<ftp::Task<>(Stage&)>;
    /// Runs the sequence to its end. A sequence that hangs fails the test.
    ftp::Result<> Run(const Sequence& sequence);
    /// Connects and reads the greeting; what comes after that finds a session that is logged in.
    ftp::Result<> LogIn();
    /// Whether the next command gets its own reply; or the session is over, which it then says at once.
    void ExpectInStepOrClosed();
    bool Open() const { return session.control && session.control->Open(); }

    asio::io_context context;
    ftp::Deadlines deadlines = Patient();
    Scratch scratch;
    Script script;
    Record record;
    std::unique_ptr<ftp::LocalFiles> files = ftp::MakeLocalFiles();
    ftp::Session session;
};

}  // namespace ftp_script
