#pragma once
// What listing, download and upload have in common: a data connection beside the control connection.

#include <functional>
#include <optional>
#include <string>

#include "ftp/engine/net/deadline.h"
#include "ftp/engine/session/session.h"
#include "ftp/engine/session/transfer_replies.h"

namespace ftp {

struct TransferMode {
    bool passive = true;  // EPSV, then PASV; EPRT and PORT as the last resort. False: EPRT and PORT only
    bool image = true;    // TYPE I
};

/// One transfer, from the question for a port to the final reply. Lives in the coroutine that carries it out:
///
///     Transfer transfer(session, mode);
///     started = co_await transfer.Start(command, name);
///     moved = ... bytes through transfer.Data(), transfer.Moved(count) after each piece ...
///     co_return co_await transfer.Finish(moved);
class Transfer {
 public:
    /// `offset`: the bytes of the file that a try before has moved already.
    Transfer(Session& session, TransferMode mode, std::int64_t offset = 0);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// Opens the data connection and sends the transfer command beside its SYN, without waiting for the 150.
    /// With `size_of` the size of that file is asked for on the way. In a run the question for the next
    /// transfer's port leaves in the same packet. After a failure only Finish is left to call.
    Task<> Start(Command command, std::string size_of = {});
    Stream& Data() { return *data_; }
    /// Before Start: a download goes on at the offset (REST), provided that the server says this size once
    /// more; otherwise Start fails and CannotContinue says that it has to begin at the beginning.
    void Continue(std::int64_t size) { continues_ = size; }
    bool CannotContinue() const { return cannot_continue_; }
    /// The size of an upload, before Start.
    void StateSize(std::int64_t size) {
        stated_ = size;
        uploads_ = true;
    }
    /// The size of a download that the server has stated, so far.
    std::optional<std::int64_t> StatedSize() const { return stated_; }
    /// What SIZE has said, and whether it has been asked; of an upload, what was there before.
    std::optional<std::int64_t> AskedSize() const { return asked_; }
    bool HasAskedSize() const { return has_asked_; }
    /// Whether the server has said that it begins (1xx).
    bool Begun() const { return arrived_.Begun(); }
    /// Something moved: `bytes` in all, those before the offset included.
    void Moved(std::int64_t bytes);
    /// Brings the session back in step and tells how the transfer ended. `moved`: how Start or the bytes
    /// went.
    Task<> Finish(Result<> moved);

    /// After Finish. Where something went wrong that may come from what was sent ahead of its turn, the
    /// session goes one step at a time from here on, and true is returned: the transfer is worth repeating.
    bool Retreat(const Result<>& outcome);

    /// From outside, at any time: ends the transfer; Finish then says Cancelled.
    void Abort();
    bool Aborted() const { return aborted_; }
    void CloseData();

 private:
    std::optional<std::uint16_t> ReadyPort();
    bool AsksSize(const std::string& size_of) const;
    void SetSize(const Reply& reply);
    Command AskPort() const;
    std::optional<std::uint16_t> PortOf(const Reply& reply) const;
    Task<> AskAhead(const std::string& size_of);
    Task<> AskToContinue();
    Task<> SendCommands(std::vector<Command> commands);
    Task<> AwaitBegin();
    Task<> OpenData();
    Task<> OpenActive();
    void TakeData(std::unique_ptr<Stream> data);
    Task<> Establish();
    Task<> AwaitFinal();
    asio::awaitable<void> AwaitNextPort();
    Task<> BackInStep();
    Task<int> ReadUpToNoop();
    void See(const Reply& reply);

    Session& session_;
    TransferMode mode_;
    const std::int64_t offset_;
    std::optional<std::uint16_t> port_;
    std::unique_ptr<Stream> data_;
    std::unique_ptr<Listener> listener_;
    std::optional<Control::Watch> watch_;
    std::optional<Deadline> silence_;
    std::optional<std::int64_t> stated_, asked_;
    std::optional<std::int64_t> continues_;  // the size that the file must have for that
    std::int64_t told_;                      // bytes that Moved has told of
    bool cannot_continue_ = false;
    bool between_ = false;    // REST has left, and what it is for has not
    bool has_asked_ = false;  // SIZE, and it has been answered
    bool uploads_ = false;
    std::size_t checks_ = 0;           // sizes of files that went before, whose answers are to come
    TransferReplies arrived_, taken_;  // replies as they come, and those that have been taken in turn
    bool commanded_ = false;           // the transfer command has left
    bool ahead_ = false;               // its port was asked for ahead, or the next one's is
    bool refused_ = false;             // the server has said no, or it has gone
    bool overtaken_ = false;           // the server does what stands behind the transfer command at once
    bool swallowed_ = false;           // the question for the next port will not be answered
    bool aborted_ = false;             // by the user
    bool ending_ = false;              // there is nothing left to abort
};

}  // namespace ftp
