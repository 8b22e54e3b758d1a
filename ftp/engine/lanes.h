#pragma once
// Further connections beside the session's own, for the small files of a run. Worker's thread.

#include <asio/any_io_executor.hpp>
#include <asio/steady_timer.hpp>
#include <memory>
#include <string>
#include <vector>

#include "ftp/engine/session/login.h"
#include "ftp/engine/session/transfer.h"

namespace ftp {

/// A file on its way, in either direction.
struct FileToMove {
    bool up = true;
    std::string remote;      // name on the server; absolute for a lane
    std::string local_path;  // native
    std::string label;       // what the user knows it by
    TransferMode mode;
};

/// Whether the one would write where the other writes, or may: names on the server are known to differ only
/// where both are absolute, or end in another name.
bool HaveOneTarget(const FileToMove& a, const FileToMove& b);

/// The file takes the place of what the session has still to check: nothing can be said about that any more.
void ForgetCheckOf(Session& session, const FileToMove& file);

/// Sends or fetches the file over the session.
Task<> MoveFile(Session& session, const FileToMove& file);

/// What lanes tell, as it happens, until Rest has returned.
class LaneEvents {
 public:
    virtual ~LaneEvents() = default;
    virtual void LaneSent(const std::string& line) = 0;
    virtual void LaneReceived(const std::string& line) = 0;
    virtual void LaneFailed(const FileToMove& file, const Failure& failure) = 0;
};

class Lanes {
 public:
    /// `files`, `deadlines` and `events` outlive the object and what runs on the executor.
    Lanes(asio::any_io_executor executor, LocalFiles& files, const Deadlines& deadlines, LaneEvents& events);
    ~Lanes();
    Lanes(const Lanes&) = delete;
    Lanes& operator=(const Lanes&) = delete;

    /// Begins to open so many lanes and returns at once. A lane that cannot log in is not had, without a
    /// word.
    void Open(std::size_t count, const Access& access, const Habits& habits);
    /// Whether at least one lane has logged in and lives.
    bool Ready() const;
    /// Ends when a lane has taken the file. NotConnected when there is none any more, Cancelled after Abort
    /// or Drop.
    Task<> Give(FileToMove file);
    /// Ends when no lane has a file with the same target any more.
    asio::awaitable<void> AwaitTarget(const FileToMove& file);
    /// Ends when no lane has a file any more, and the server has been asked for the sizes of all.
    asio::awaitable<void> Rest();
    /// The files so far that failed for want of a lane: its connection broke, or the server would not let it
    /// in further, or could not be asked any more for what it has confirmed. They are worth sending over
    /// another connection.
    std::vector<FileToMove> TakeReturned();

    /// Ends the transfers under way, and a Give that waits.
    void Abort();
    /// Closes everything at once.
    void Drop();
    /// Says goodbye on all lanes and returns at once.
    void End();
    /// When they rest, says goodbye on all lanes; ends when they are gone.
    asio::awaitable<void> Leave();
    bool None() const { return lanes_.empty(); }

 private:
    struct Lane;

    static asio::awaitable<void> LogIn(std::shared_ptr<Lane> lane, Access access, Habits habits);
    asio::awaitable<void> Carry(std::shared_ptr<Lane> lane);
    asio::awaitable<void> Check(std::shared_ptr<Lane> lane);
    void ReturnUnchecked(Lane& lane);
    template <class Coroutine>
    void Spawn(const std::shared_ptr<Lane>& lane, Coroutine coroutine);
    asio::awaitable<void> Moved();
    void DropDead();

    asio::any_io_executor executor_;
    LocalFiles& files_;
    const Deadlines& deadlines_;
    LaneEvents& events_;
    asio::steady_timer moved_;  // cancelled when a lane has changed, or somebody calls off
    std::vector<std::shared_ptr<Lane>> lanes_;
    std::vector<FileToMove> returned_;
    bool called_off_ = false;
};

}  // namespace ftp
