#pragma once
// What the sessions of a scripted server share: its orders, its files and its memory. Any thread.

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/scripted_server.h"
#include "tests/support/scripted_tls.h"
#include "tests/support/socket.h"

namespace ftp_test {

class ScriptedWorld {
 public:
    void Order(const std::string& prefix, int occurrence, Script script);
    void OrderNext(const std::string& prefix, Script script);
    /// Takes note of a command. What is to be done at it.
    Script Record(const std::string& command);
    std::vector<std::string> Commands() const;
    bool WaitFor(const std::string& prefix, int occurrence) const;

    void SetFile(const std::string& name, std::optional<std::string> bytes);
    std::optional<std::string> File(const std::string& name) const;
    void SetListing(const std::vector<std::string>& lines);
    std::string Listing() const;

    void PutTls(TlsIdentity identity);
    std::optional<TlsIdentity> Identity() const;

    const Event stop{0};      // raised when the server goes
    const Event released{1};  // counts what Release() has let through

 private:
    struct Deviation {
        std::string prefix;
        int occurrence;
        Script script;
    };
    int CountOf(const std::string& prefix) const;

    mutable std::mutex mutex_;
    mutable std::condition_variable recorded_;
    std::vector<Deviation> deviations_;
    std::vector<std::string> commands_;
    std::map<std::string, std::string> files_;
    std::optional<std::string> listing_;
    std::optional<TlsIdentity> identity_;
};

}  // namespace ftp_test
