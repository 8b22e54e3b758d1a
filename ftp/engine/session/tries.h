#pragma once
#include "ftp/engine/session/session.h"

namespace ftp {

/// A transfer that has broken in the middle is tried again, three times at most, over a session that knows
/// the way back: where that has gone it is opened again first.
class Tries {
 public:
    explicit Tries(Session& session) : session_(session) { session_.called_off = false; }

    /// Whether it is worth while: the failure is a break, not a refusal, and bytes have moved, in this try or
    /// in one before.
    bool IsWorth(const Failure& failure, bool moved);
    /// Whether there has been one besides the first.
    bool Begun() const { return count_ > 0; }
    /// Ends when the next try may begin. Otherwise what is to be told: `why`, when there is none left or no
    /// way back; Cancelled; or the server's refusal to let us in again.
    Task<> Next(Failure why);
    /// SIZE between two tries, which AbortTransfer ends, too.
    Task<Reply> AskSize(std::string remote);

 private:
    Task<> Pause();

    Session& session_;
    int count_ = 0;
    bool has_moved_ = false;
};

}  // namespace ftp
