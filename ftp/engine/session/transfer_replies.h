#pragma once
// Which reply is whose, where several commands around a transfer left together.

#include <cstddef>
#include <optional>
#include <vector>

#include "ftp/engine/wire/reply.h"

namespace ftp {

/// A transfer command, SIZE before it (for files that went before, and for its own) and EPSV or PASV behind
/// it if they left with it. Servers that take one command after the other answer in that order. Others answer
/// what stands behind a running transfer while it runs, or refuse it then; a refusal that comes first may
/// mean either, unless only a transfer that has begun can end so, and the reply after it tells.
class TransferReplies {
 public:
    /// What is due; before the first Take.
    void Expect(std::size_t checks, bool size, bool port);
    /// One reply, in the order of their arrival. What nobody has asked for is passed over.
    void Take(const Reply& reply);
    /// A refusal that might have meant either was the transfer's, since nothing has followed it.
    void Close();

    bool Begun() const { return begun_; }  // a 1xx has come
    /// About the files that went before.
    const std::vector<Reply>& Checks() const { return checks_; }
    const std::optional<Reply>& Size() const { return size_; }
    const std::optional<Reply>& Final() const { return final_; }  // how the transfer ended
    const std::optional<Reply>& Port() const { return port_; }
    bool PortDue() const { return port_due_; }
    bool Unclear() const { return unclear_.has_value(); }
    /// A port was opened before the transfer had ended: this server does not take one command after the
    /// other.
    bool Overtaken() const { return overtaken_; }

 private:
    void TakeFirstOfTwo(const Reply& reply);
    void TakeSecondOfTwo(const Reply& reply);
    void SetPort(const Reply& reply);

    std::size_t checks_due_ = 0;
    bool size_due_ = false;
    bool port_due_ = false;
    bool begun_ = false;
    bool overtaken_ = false;
    std::vector<Reply> checks_;
    std::optional<Reply> size_, final_, port_;
    std::optional<Reply> unclear_;  // refuses the transfer or the port
};

}  // namespace ftp
