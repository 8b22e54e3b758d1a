#include "ftp/engine/session/login.h"

#include "ftp/engine/net/deadline.h"

namespace ftp {
namespace {

/// The commands of a login, sent ahead or each in its turn; the sequence that uses it reads the same.
class Conversation {
 public:
    Conversation(Session& session, bool ahead) : session_(session), ahead_(ahead) {}

    Task<> SendAhead(std::vector<Command> commands) {
        if (!ahead_) co_return Result<>{};
        co_return co_await session_.control->Send(std::move(commands));
    }
    /// The answer to a command that was sent ahead, or that is sent now.
    Task<Reply> Answer(Command command) {
        if (ahead_) co_return co_await session_.ReceiveFinal(session_.deadlines.early_login);
        std::vector<Command> commands;
        commands.push_back(std::move(command));
        const auto sent = co_await session_.control->Send(std::move(commands));
        if (!sent) co_return Fail(sent.error());
        co_return co_await session_.ReceiveFinal(session_.deadlines.reply);
    }
    bool Ahead() const { return ahead_; }

 private:
    Session& session_;
    bool ahead_;
};

/// Whether TLS is asked for, and begins after the answer.
bool Asks(Security security) {
    return security == Security::IfOffered || security == Security::Explicit;
}

struct Commands {
    Command user, pass;
    Command auth = *MakeCommand("AUTH", "TLS");
    Command buffer = *MakeCommand("PBSZ", "0");
    Command protect = *MakeCommand("PROT", "P");
    Command feat = *MakeCommand("FEAT");
    Command utf8 = *MakeCommand("OPTS", "UTF8 ON");
    Command type = *MakeCommand("TYPE", "I");

    /// What leads from a connection that is safe enough for a password to a session.
    std::vector<Command> Rest(bool encrypted) const {
        std::vector<Command> rest{user, pass, feat, utf8, type};
        if (encrypted) rest.insert(rest.begin(), {buffer, protect});
        return rest;
    }
    /// What leaves before the greeting has come.
    std::vector<Command> First(Security security) const {
        if (Asks(security)) return {auth};
        return Rest(security == Security::Implicit);
    }
};

Result<Commands> MakeCommands(const Access& who) {
    auto user = MakeCommand("USER", who.user);
    if (!user) return Fail(user.error());
    auto pass = MakeCommand("PASS", who.password);
    if (!pass) return Fail(pass.error());
    return Commands{*user, *pass};
}

Control::Reading ReadingFor(Security security) {
    switch (security) {
        case Security::None:
            return Control::Reading::Freely;
        case Security::Implicit:
            return Control::Reading::NotYet;
        default:
            return Control::Reading::WhatIsAsked;
    }
}

Task<> Connect(Session& session, const Access& who) {
    if (session.dropped) co_return Fail(FailureKind::Cancelled);
    const Deadline deadline(session.transport.Executor(), session.deadlines.connect,
                            [&session] { session.transport.CancelConnect(); });
    const auto& [host, port] = who.server.where;
    HostAndPort where{who.address.empty() ? host : who.address, port};
    auto stream = co_await session.transport.ConnectControl(std::move(where));
    if (session.dropped) co_return Fail(FailureKind::Cancelled);
    if (deadline.Expired()) co_return Fail(FailureKind::TimedOut);
    if (!stream) co_return Fail(stream.error());
    session.control =
        std::make_unique<Control>(session.transport.Executor(), std::move(*stream), session.events,
                                  session.deadlines.reply, ReadingFor(who.server.security));
    co_return Result<>{};
}

/// The handshake, and whether this is the server that the user means. Nothing secret has been said yet.
Task<> Secure(Session& session, const Access& who) {
    Control& control = *session.control;
    SecureStream* secured = nullptr;
    const auto wrap = [&](std::unique_ptr<Stream> plain) {
        auto stream = session.transport.SecureControl(std::move(plain), who.server.where.host);
        secured = stream.get();
        return std::unique_ptr<Stream>(std::move(stream));
    };
    const Deadline deadline(session.transport.Executor(), session.deadlines.connect,
                            [&control] { control.Close(); });
    const auto stands = co_await control.Secure(wrap);
    if (session.dropped) co_return Fail(FailureKind::Cancelled);
    if (deadline.Expired()) co_return Fail(FailureKind::TimedOut);
    if (!stands) co_return stands;
    session.tls_version = secured->Version();
    const Certificate& certificate = secured->PeerCertificate();
    session.events.Secured(session.tls_version, certificate);
    const bool trusted = !who.trusted.empty() && certificate.fingerprint == who.trusted;
    if (!certificate.Valid() && !trusted) co_return Fail(FailureKind::NotTrusted);
    co_return Result<>{};
}

/// AUTH TLS (RFC 4217 section 4). A server that knows nothing of it is spoken to in plain text, where that
/// has not been ruled out.
Task<> AskForTls(Session& session, Conversation& talk, const Commands& commands, Access& who) {
    const auto answer = co_await talk.Answer(commands.auth);
    if (!answer) co_return Fail(answer.error());
    if (answer->code == 234) {
        who.had_tls = true;  // whatever becomes of it: a second attempt does not do with less
        co_return co_await Secure(session, who);
    }
    const bool unknown = answer->code / 100 == 5;  // anything else is from a server that has it, but not now
    const bool demanded = who.server.security == Security::Explicit || who.had_tls;
    if (demanded || !unknown) co_return Fail(FailureKind::NotEncrypted, RefusalOf(*answer).detail);
    session.control->ReadFreely();
    co_return Result<>{};
}

/// PBSZ, PROT P: files and listings are protected, too, or there is no session.
/// A server that wants to know first who asks is asked once more, in the other order.
Task<> ProtectData(Conversation& talk, const Commands& commands) {
    const auto buffer = co_await talk.Answer(commands.buffer);
    if (!buffer) co_return Fail(buffer.error());
    const auto protect = co_await talk.Answer(commands.protect);
    if (!protect) co_return Fail(protect.error());
    const bool too_early = talk.Ahead() && (protect->code == 503 || protect->code == 530);
    if (too_early) co_return Fail(FailureKind::Protocol);
    if (!protect->Completed()) co_return Fail(RefusalOf(*protect));
    co_return Result<>{};
}

/// 220, after any number of 120.
Task<> Greeting(Session& session) {
    const auto greeting = co_await session.ReceiveFinal(session.deadlines.reply);
    if (!greeting) co_return Fail(greeting.error());
    if (!greeting->Completed()) co_return Fail(RefusalOf(*greeting));
    co_return Result<>{};
}

/// Whether the answer to a USER or PASS that was sent ahead can be one. Where a server ponders over a
/// password and answers what follows it meanwhile, the next answer is not to be taken for a welcome.
bool MayBeAboutLogin(const Reply& reply) {
    return !reply.Completed() || reply.code == 230 || reply.code == 202;
}

/// USER, PASS where it is asked for, ACCT where it is asked for.
Task<> Identify(Session& session, Conversation& talk, const Commands& commands, const Access& who) {
    auto reply = co_await talk.Answer(commands.user);
    if (!reply) co_return Fail(reply.error());
    const bool no_password = reply->Completed() || reply->code == 332;
    if (reply->Refused()) co_return Fail(RefusalOf(*reply));
    if (!no_password || talk.Ahead()) {
        auto answer = co_await talk.Answer(commands.pass);
        if (!answer) co_return Fail(answer.error());
        if (talk.Ahead() && !no_password && !MayBeAboutLogin(*answer)) co_return Fail(FailureKind::Protocol);
        if (!no_password) reply = std::move(answer);
    }
    if (reply->code == 332) {
        for (int sent_ahead = 0; talk.Ahead() && session.control->Owes() && sent_ahead < 3; ++sent_ahead) {
            const auto too_early = co_await session.ReceiveFinal(session.deadlines.early_login);
            if (!too_early) co_return Fail(too_early.error());
        }
        reply = co_await session.Ask("ACCT", who.account);
        if (!reply) co_return Fail(reply.error());
    }
    if (!reply->Completed()) co_return Fail(RefusalOf(*reply));
    co_return Result<>{};
}

/// FEAT, OPTS, TYPE: none of them has to succeed.
Task<> Prepare(Session& session, Conversation& talk, const Commands& commands) {
    // Behind an ACCT the ones that left ahead have been answered, too early.
    Conversation in_turn(session, false);
    Conversation& asking = talk.Ahead() && session.control->Owes() ? talk : in_turn;
    const auto features = co_await asking.Answer(commands.feat);
    if (!features) co_return Fail(features.error());
    session.features = ParseFeatures(*features);
    const auto utf8 = co_await asking.Answer(commands.utf8);
    if (!utf8) co_return Fail(utf8.error());
    const auto type = co_await asking.Answer(commands.type);
    if (!type) co_return Fail(type.error());
    session.type = type->Completed() ? 'I' : '\0';
    co_return Result<>{};
}

Task<> Attempt(Session& session, Access& who, const Commands& commands, bool ahead) {
    session.Forget();
    session.habits.one_at_a_time = !ahead;
    const auto connected = co_await Connect(session, who);
    if (!connected) co_return connected;
    Conversation talk(session, ahead);
    const Security security = who.server.security;
    if (security == Security::Implicit) {
        const auto secured = co_await Secure(session, who);
        if (!secured) co_return secured;
    }
    auto sent = co_await talk.SendAhead(commands.First(security));
    if (!sent) co_return sent;
    const auto greeted = co_await Greeting(session);
    if (!greeted) co_return greeted;
    if (Asks(security)) {
        const auto agreed = co_await AskForTls(session, talk, commands, who);
        if (!agreed) co_return agreed;
        sent = co_await talk.SendAhead(commands.Rest(session.Encrypted()));
        if (!sent) co_return sent;
    }
    // Some servers want to know first who asks, others have no use for it afterwards: the second attempt goes
    // the other way round.
    if (session.Encrypted() && ahead) {
        const auto protects = co_await ProtectData(talk, commands);
        if (!protects) co_return protects;
    }
    const auto identified = co_await Identify(session, talk, commands, who);
    if (!identified) co_return identified;
    if (session.Encrypted() && !ahead) {
        const auto protects = co_await ProtectData(talk, commands);
        if (!protects) co_return protects;
    }
    co_return co_await Prepare(session, talk, commands);
}

/// Whether a login that was sent ahead failed in a way that one step at a time may not. A server that has
/// read the password and does not like it is not asked twice.
bool MayMindCommandsAhead(const Failure& failure) {
    switch (failure.kind) {
        case FailureKind::ConnectionLost:
        case FailureKind::Protocol:
            return true;
        case FailureKind::Refused:
            return failure.code == 500 || failure.code == 501 || failure.code == 503;
        default:
            return false;
    }
}

}  // namespace

Task<> Login(Session& session, Access who) {
    const auto commands = MakeCommands(who);
    if (!commands) co_return Fail(commands.error());
    auto outcome = co_await Attempt(session, who, *commands, true);
    const bool connected = session.control != nullptr;
    const bool slow = !outcome && outcome.error().kind == FailureKind::TimedOut;
    if (!outcome && connected && !session.dropped && (slow || MayMindCommandsAhead(outcome.error()))) {
        outcome = co_await Attempt(session, who, *commands, false);
    }
    if (session.dropped) outcome = Fail(FailureKind::Cancelled);
    session.logged_in = outcome.has_value();
    if (!outcome) session.control.reset();
    co_return outcome;
}

}  // namespace ftp
