#pragma once
// The engine's door: one thread, one session, one operation at a time.
//
// Requests go in, notifications come out in the order of the wire; `Finished` is always the last of a
// request. In a run, files may still be on their way over other connections when their request has finished;
// what these tell belongs to no request (0) and comes before the `Finished` of EndRun. What happens to an
// idle session belongs to none either: that it is kept awake, that the server has ended it, that it is
// dropped. A session that the server has ended is opened again by the next operation that needs it, in the
// directory where it was; what may have changed something is never asked for twice. Names are bytes as the
// server knows them; local paths are native paths. Nothing here throws.

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "ftp/engine/session/deadlines.h"
#include "ftp/engine/wire/certificate.h"
#include "ftp/engine/wire/failure.h"

namespace ftp {

struct Connect {
    std::string host_field, user, password, account;
    bool had_tls = false;      // the server has been reached with TLS before: plain text is NotEncrypted
    std::string trusted = {};  // fingerprint of a certificate that is trusted though it is not valid
};
struct List {};
struct ChangeDirectory {
    std::string name;
};
struct ChangeToParent {};
struct MakeDirectory {
    std::string name;
};
struct RemoveDirectory {
    std::string name;
};
struct DeleteFile {
    std::string name;
};
struct RenameFile {
    std::string from, to;
};
struct Retrieve {
    std::string remote;
    std::string local_path;                 // native path of the target; replaced when the file is whole
    std::string label = {};                 // what the user knows the file by
    std::optional<std::int64_t> size = {};  // bytes, where the caller knows them from a listing
};
struct Store {
    std::string local_path;  // native path of the source
    std::string remote;
    std::string label = {};  // what the user knows the file by
};
/// Transfers follow one another from here on: what the protocol allows is asked for ahead of its turn, and
/// small files go over further connections with the same login, at most so many.
struct BeginRun {
    std::size_t lanes = 4;
};
struct EndRun {};  // when everything that the run has taken on is over
struct Quit {};    // QUIT, then close; no failure without a session
struct Reset {};   // close without a word, forget everything about the server

using Operation = std::variant<Connect, List, ChangeDirectory, ChangeToParent, MakeDirectory, RemoveDirectory,
                               DeleteFile, RenameFile, Retrieve, Store, BeginRun, EndRun, Quit, Reset>;

struct Request {
    std::uint64_t id = 0;
    Operation operation;
    bool passive = true;      // data connections: EPSV/PASV first; false: EPRT/PORT only
    bool image = true;        // TYPE I; false: TYPE A
    bool keep_alive = false;  // from its end on the idle session is kept awake (NOOP)
};

struct CommandSent {
    std::string line;  // secrets masked, no line end
};
struct ReplyLine {
    std::string line;  // as received, no line end
};
struct ListingBatch {
    std::vector<std::string> lines;
};
struct TransferStarted {
    std::optional<std::int64_t> size;  // bytes, where the server (download) or the file (upload) states it
};
/// TLS stands, with this certificate. Where it is neither valid nor trusted, Problem (NotTrusted) follows.
struct TlsAgreed {
    std::string version;  // "TLSv1.3"
    Certificate certificate;
};
struct SessionChanged {
    bool connected = false;  // logged in and usable
    bool utf8 = false;       // the server said that its names are UTF-8
    std::string tls;         // "TLSv1.3"; empty: plain text
};
struct Problem {
    Failure failure;
    bool not_made = false;  // a directory was to be made, and is perhaps there already
};
struct FileProblem {  // of a file whose request has finished, or is about to
    std::string label;
    Failure failure;
};
struct Finished {};

struct Notification {
    std::uint64_t request = 0;
    std::variant<CommandSent, ReplyLine, ListingBatch, TransferStarted, TlsAgreed, SessionChanged, Problem,
                 FileProblem, Finished>
        what;
};

class Worker {
 public:
    /// Called on the worker's thread, in order; must not block.
    using Sink = std::function<void(Notification)>;

    explicit Worker(Sink sink, Deadlines deadlines = {});
    /// Drops the session and joins the thread; takes milliseconds whatever is going on.
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // All of these may be called from any thread and return at once.

    /// Starts an operation. One at a time: the caller waits for `Finished` before the next.
    void Start(Request request);
    /// Ends the running transfer (data connection, ABOR, the replies that are due) and keeps the session; so
    /// for all that a run has under way. Without a running transfer nothing happens.
    void AbortTransfer();
    /// Closes everything at once; the running operation ends as Cancelled.
    void DropSession();
    /// One ListingBatch has been taken: with several on the way the worker stops reading the listing.
    void BatchTaken();
    /// Bytes of the running transfer so far, 0 before the first. Monotonic within one transfer.
    std::int64_t BytesTransferred() const { return bytes_->load(std::memory_order_relaxed); }

 private:
    class Core;
    std::shared_ptr<std::atomic<std::int64_t>> bytes_;
    std::unique_ptr<Core> core_;
};

}  // namespace ftp
