#include "ftp/engine/session/transfer_replies.h"

#include <utility>

namespace ftp {
namespace {

constexpr int kGoodbye = 421;

bool OpensPort(const Reply& reply) {
    return reply.code == 227 || reply.code == 229;
}

/// What only a transfer that has begun can end with.
bool BreaksOff(const Reply& reply) {
    return reply.code == 425 || reply.code == 426 || reply.code == 451 || reply.code == 452 ||
           (reply.code >= 550 && reply.code <= 553);
}

}  // namespace

void TransferReplies::Expect(std::size_t checks, bool size, bool port) {
    checks_due_ = checks;
    size_due_ = size;
    port_due_ = port;
}

void TransferReplies::Take(const Reply& reply) {
    if (reply.code == kGoodbye) {
        Close();
        if (!final_) final_ = reply;
        size_due_ = port_due_ = false;
        checks_due_ = 0;
    } else if (reply.Preliminary()) {
        begun_ = true;
        if (unclear_) SetPort(*std::exchange(unclear_, std::nullopt));  // the transfer goes on after it
    } else if (checks_due_ > 0) {
        --checks_due_;
        checks_.push_back(reply);
    } else if (size_due_) {
        size_due_ = false;
        size_ = reply;
    } else if (final_) {
        if (port_due_ && (OpensPort(reply) || reply.Refused())) SetPort(reply);
    } else if (!port_due_) {
        final_ = reply;
    } else if (unclear_) {
        TakeSecondOfTwo(reply);
    } else {
        TakeFirstOfTwo(reply);
    }
}

void TransferReplies::TakeFirstOfTwo(const Reply& reply) {
    if (OpensPort(reply)) {
        overtaken_ = true;
        SetPort(reply);
    } else if (reply.Refused() && !(begun_ && BreaksOff(reply))) {
        unclear_ = reply;
    } else {
        final_ = reply;
    }
}

void TransferReplies::TakeSecondOfTwo(const Reply& reply) {
    const Reply first = *std::exchange(unclear_, std::nullopt);
    const bool in_order = OpensPort(reply) || reply.Refused();
    final_ = in_order ? first : reply;
    SetPort(in_order ? reply : first);
}

void TransferReplies::Close() {
    if (unclear_) final_ = std::exchange(unclear_, std::nullopt);
}

void TransferReplies::SetPort(const Reply& reply) {
    port_due_ = false;
    port_ = reply;
}

}  // namespace ftp
