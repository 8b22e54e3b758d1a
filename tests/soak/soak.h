#pragma once
// One long session of a client with its servers, in which much goes wrong and nothing may be lost.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/ftp/engine/worker_client.h"
#include "tests/soak/faulty_proxy.h"
#include "tests/support/ftp_server.h"

namespace soak {

struct Options {
    unsigned seed = 1;
    bool cuts_uploads = false;
    bool tells = false;  // each operation, on standard error
    std::vector<ftp_test::Make> makes;
};

class Soak {
 public:
    explicit Soak(const Options& options);
    ~Soak();

    /// To any of the servers.
    void Connect();
    /// One operation, and all that has to hold after it; a run counts with each of its files.
    void Step();
    /// Says goodbye, and returns when no connection is left; Connect is next.
    void Rest();

    int Operations() const { return operations_; }
    int Failed() const { return failed_; }
    int Reconnected() const { return reconnected_; }
    /// Operations that a server was late for, though nothing had been done to the connection.
    int Late() const { return late_; }
    std::uint64_t Faults() const;
    std::chrono::milliseconds Longest() const { return longest_; }
    /// What did not hold.
    int Violations() const { return violations_; }

 private:
    using Path = std::filesystem::path;
    using Versions = std::map<std::string, std::uint64_t>;
    struct Site {
        Site(ftp_test::Make make, const Options& options);
        std::string HostField() const { return "ftp://127.0.0.1:" + std::to_string(proxy.Port()); }

        ftp_test::Server server;
        FaultyProxy proxy;
        Versions files;                 // whole, by their path below the home folder
        std::set<std::string> folders;  // made on the way, and empty
    };
    /// A file of a run, of which is known only at its end how it went.
    struct Moving {
        bool up;
        std::string remote;  // path below the home folder
        std::string local;   // name
        std::uint64_t version;
        bool doubtful = false;
    };

    void List();
    void ChangeFolder();
    void Upload();
    void Download();
    void Rename();
    void Delete();
    void MakeFolder();
    void RemoveFolder();
    void Run();
    Moving MoveInRun(std::size_t number);
    void CheckRun(const std::vector<Moving>& moving);
    void LoseConnections();

    /// Carries an operation out, at times calls it off, and leaves a session that works.
    worker_test::Told Do(const std::string& what, ftp::Operation operation, bool may_be_called_off = false);
    enum class Call { None, Abort, Drop };
    Call CallOff();
    void Tell(const std::string& what, Call call, const worker_test::Told& told,
              std::chrono::milliseconds took) const;
    void Recover(const std::string& what);
    void CheckUpload(const std::string& what, const Moving& file, bool well);
    void CheckDownload(const std::string& what, const Moving& file, bool well);
    void CheckLitter(const std::string& what);
    void Unexplained(const std::string& what);
    void Violation(const std::string& what);

    void Forget(const std::string& remote);
    std::string NewName() { return "fil" + std::to_string(++names_) + ".dat"; }
    std::string AnyFile();
    std::string NewSource(std::uint64_t& version, bool small);
    std::string As(const std::string& remote) const;
    std::size_t AnySize(bool small);
    std::size_t Below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }
    Site& Here() { return *sites_[site_]; }

    Options options_;
    std::mt19937 random_;
    Path folder_;
    std::vector<std::unique_ptr<Site>> sites_;
    std::size_t site_ = 0;
    worker_test::WorkerClient client_;
    worker_test::Told last_;  // told by the newest operation
    std::string current_;     // folder on the server, below the home folder
    Versions local_;          // what has been fetched
    bool in_run_ = false;
    bool run_is_well_ = true;          // nothing has failed in it
    bool run_is_disturbed_ = false;    // it was called off, or has begun without a connection
    bool lost_ = false;                // connections have been ended while nothing ran
    std::uint64_t faults_before_ = 0;  // at the beginning of the operation before
    std::uint64_t versions_ = 0;
    int names_ = 0;
    int operations_ = 0, failed_ = 0, reconnected_ = 0, late_ = 0, violations_ = 0;
    std::chrono::milliseconds longest_{0};
};

}  // namespace soak
