#pragma once
// A user's session with a server that takes orders to misbehave, and what must hold whatever it does.

#include <QTemporaryDir>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "tests/ftp/component_fixture.h"
#include "tests/support/scripted_server.h"

namespace ftp {

/// What the user asks for. Each makes its own preparations, so that none depends on those before it.
enum class Work { Connect, List, Enter, Get, Put, Rename, Delete, Make, Remove, Leave, Quit };

/// Silence ends soon, for faults that are waited for.
constexpr Deadlines kImpatient{.connect = std::chrono::milliseconds(500),
                               .reply = std::chrono::milliseconds(200),
                               .data = std::chrono::milliseconds(200),
                               .early_login = std::chrono::milliseconds(200),
                               .ahead = std::chrono::milliseconds(200),
                               .idle = std::chrono::milliseconds(1000),
                               .abort = std::chrono::milliseconds(200),
                               .quit = std::chrono::milliseconds(200)};
/// What depends on no deadline is tried with those of the program.
constexpr Deadlines kPatient{};

class FaultStage : public ComponentTest {
 protected:
    static constexpr const char* kPassword = "hemligt-ord";

    explicit FaultStage(const std::string& address = "127.0.0.1");

    void UseDeadlines(const Deadlines& deadlines);

    /// Does one thing, over an older local file where it is a download, and checks what must hold whether it
    /// succeeds or not:
    /// - it is over in time, and the user is told of a failure
    /// - a download that failed has left the old file as it was, one that succeeded the whole new one
    /// - the chosen folder holds the user's files and nothing else, and nothing has appeared beside it
    /// - what has succeeded has been done, unless the server `lies`
    /// - the server has received no command but ours
    /// - no text that is shown holds the password, or what could rule a terminal or turn a line around
    /// Returns whether it succeeded.
    bool Do(Work work);
    /// The same, after a connect where the session has ended; that one must succeed.
    bool DoInSession(Work work);

    /// Orders the script for the next command with the prefix, and counts when it is done.
    void StrikeNext(const std::string& prefix, const ftp_test::Script& script);
    void StrikeEach(const std::string& prefix, const ftp_test::Script& script);
    int Struck() const { return struck_; }

    QString Local(const QString& name) const;
    /// Native names in the folder that the user has chosen.
    std::vector<std::string> Names() const;
    /// What has appeared around that folder, up to two levels above.
    std::vector<std::string> NamesOutside() const;
    std::string Told() const;  // everything that was raised, for messages

    ftp_test::ScriptedServer server;
    bool lies = false;
    std::string whole;                  // the file that is fetched, as it is on the server
    std::string source;                 // the file that is sent
    std::vector<std::string> expected;  // further commands that the server may receive

 private:
    void Prepare(Work work);
    void Perform(Work work);
    void CheckFolder(Work work, bool succeeded);
    void CheckEffect(Work work);
    void CheckCommands();
    void CheckWords();
    ftp_test::Script Counted(ftp_test::Script script);

    QTemporaryDir room_;  // holds the chosen folder, two levels down, and nothing else
    std::atomic<int> struck_ = 0;
};

/// So many bytes of which no two neighbouring pieces are alike.
std::string Pattern(std::size_t size);

/// "Get", for messages and names of cases.
std::string NameOf(Work work);

}  // namespace ftp
