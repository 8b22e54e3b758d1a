#pragma once
// A worker as a test uses it: one operation at a time, each with all that it told.

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ftp/engine/worker.h"

namespace worker_test {

/// What one operation told.
struct Told {
    std::vector<std::string> trace;  // commands and replies
    std::vector<std::string> lines;  // of the listing
    std::vector<ftp::Failure> problems;
    std::optional<bool> connected;  // where it changed
    ftp::TlsAgreed tls;             // where it was agreed on

    bool Well() const { return problems.empty(); }
    /// The kind of the only problem.
    std::optional<ftp::FailureKind> Kind() const;
    int Code() const { return problems.empty() ? 0 : problems.front().code; }
};
std::ostream& operator<<(std::ostream& out, const Told& told);

class WorkerClient {
 public:
    explicit WorkerClient(ftp::Deadlines deadlines = {});

    /// What belonged to no request: told by files of a run that were on their way over other connections.
    struct Aside {
        std::vector<std::string> trace;
        std::vector<ftp::FileProblem> problems;
        std::vector<ftp::Failure> faults;  // of the worker itself
    };
    Aside TakeAside();

    /// Runs an operation to its end. An operation that hangs ends the process.
    Told Run(ftp::Operation operation);
    Told Connect(const std::string& host_field, const std::string& password = "demo");
    void Start(ftp::Operation operation);
    Told Finish();
    /// Waits until `count` notifications of the running operation have come, or all that will.
    void AwaitNotification(std::size_t count);
    /// Waits until so many bytes have moved, or the operation has ended.
    void AwaitBytes(std::int64_t bytes);
    void AwaitBatches(int batches);
    /// Waits until the server's session is known to be there, or not to be; told by whom it may be.
    void AwaitConnected(bool connected);
    bool Connected();
    /// Waits until so many replies of the running operation begin so, or it has ended.
    void AwaitReply(const std::string& beginning, int count);
    int Batches() const { return batches_; }

    ftp::Worker& TheWorker() { return *worker_; }
    /// Ends the worker, whatever it does.
    void Destroy() { worker_.reset(); }
    bool passive = true;
    bool image = true;
    bool keep_alive = false;
    bool takes_batches = true;
    /// Hearing of such a command throws, once: a fault in the worker's own house.
    std::string fails_at;

 private:
    void Hear(ftp::Notification notification);
    void HearAside(const ftp::Notification& notification);
    void Await(const std::function<bool()>& condition);

    std::mutex mutex_;
    std::condition_variable heard_;
    Told told_;
    Aside aside_;
    bool in_run_ = false;
    bool ends_run_ = false;
    std::size_t notifications_ = 0;
    int batches_ = 0;
    bool connected_ = false;
    bool finished_ = true;
    std::uint64_t request_ = 0;
    std::unique_ptr<ftp::Worker> worker_;
};

}  // namespace worker_test
