#pragma once
// What lives on the worker's thread. One class in two files: worker.cpp carries the operations out,
// worker_run.cpp says where the files of a run go.

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <thread>
#include <utility>

#include "ftp/engine/idling.h"
#include "ftp/engine/lanes.h"
#include "ftp/engine/net/local_files.h"
#include "ftp/engine/net/stream.h"
#include "ftp/engine/session/login.h"
#include "ftp/engine/session/session.h"
#include "ftp/engine/worker.h"

namespace ftp {

class Worker::Core : private Events, private LaneEvents {
 public:
    Core(Sink sink, const Deadlines& deadlines, std::shared_ptr<std::atomic<std::int64_t>> bytes);
    ~Core() override;

    template <class Action>
    void Post(Action action) {
        asio::post(io_, std::move(action));
    }

    /// From any thread.
    void Start(Request request);

    // On the worker's own.
    void AbortTransfer();
    void DropSession();
    void BatchTaken();

 private:
    using Clock = std::chrono::steady_clock;

    // Operations
    asio::awaitable<void> Carry(Request request);
    asio::awaitable<Result<>> CarryOut(Request request);
    asio::awaitable<Result<>> CarryOutOnce(Request request);
    asio::awaitable<Result<>> Connect(ftp::Connect connect);
    bool NeedsServer(const Operation& operation) const;
    bool MayRepeat(const Failure& failure) const;
    bool CalledOff() const { return abort_wanted_ || session_.dropped; }

    // The session's beginning and end
    asio::awaitable<Result<>> OpenAgain();
    void Lose();
    void LeaveServer();
    void IdlingEnded(bool by_itself, const std::string& fault);

    // Files, and the run that they belong to (worker_run.cpp)
    Result<> BeginRun(std::size_t lanes);
    void EndRun();
    asio::awaitable<Result<>> Settle();
    asio::awaitable<Result<>> Move(FileToMove file, std::optional<std::int64_t> size);
    asio::awaitable<Result<>> MoveOverSession(const FileToMove& file);
    asio::awaitable<void> AwaitTurn(const FileToMove& file);
    bool LanesAreReady();
    asio::awaitable<Result<>> Give(FileToMove file);
    asio::awaitable<void> SendReturned();
    std::optional<std::int64_t> SizeOf(const std::string& path);

    // What the other thread is told
    template <class What>
    void Tell(What what) {
        sink_(Notification{request_, std::move(what)});
    }
    void TellWhetherConnected();
    void Sent(const std::string& line) override;
    void Received(const std::string& line) override { Tell(ReplyLine{line}); }
    void TransferStarted(std::optional<std::int64_t> size) override;
    void Moved(std::int64_t bytes) override;
    void Secured(const std::string& version, const Certificate& certificate) override;
    void Trouble(const Failure& failure) override { Tell(Problem{failure, false}); }
    void NotMade(const Failure& failure) override { Tell(Problem{failure, true}); }
    void NotKept(const std::string& label, const Failure& failure) override;
    asio::awaitable<void> Listed(std::vector<std::string> lines) override;
    void LaneSent(const std::string& line) override { sink_({0, CommandSent{line}}); }
    void LaneReceived(const std::string& line) override { sink_({0, ReplyLine{line}}); }
    void LaneFailed(const FileToMove& file, const Failure& failure) override;

    Sink sink_;
    std::shared_ptr<std::atomic<std::int64_t>> bytes_;
    Deadlines deadlines_;
    asio::io_context io_{1};
    asio::executor_work_guard<asio::io_context::executor_type> work_{io_.get_executor()};
    std::unique_ptr<Transport> transport_;
    std::unique_ptr<LocalFiles> files_;
    asio::steady_timer room_;  // cancelled when a batch has been taken
    Session session_;
    Idling idling_;
    Lanes lanes_;
    Access access_;             // of the session, for its lanes
    Clock::time_point spoken_;  // when it last sent something
    std::size_t lanes_wanted_ = 0;
    bool lanes_opened_ = false;
    int small_files_ = 0;  // of the run
    bool aside_ = false;   // what moves is not the request's own file
    bool abort_wanted_ = false;
    std::uint64_t request_ = 0;
    int batches_ = 0;
    bool carrying_ = false;
    bool is_listing_ = false;
    bool has_listed_ = false;  // lines have been handed over
    bool is_download_ = false;
    bool has_fetched_ = false;       // bytes of the file
    bool reopening_failed_ = false;  // and is not tried a second time
    bool connected_ = false;
    std::string told_tls_;  // the version that was told last
    bool closing_ = false;
    std::thread thread_;  // last: starts when all the rest is there
};

}  // namespace ftp
