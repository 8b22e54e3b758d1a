#include "tests/support/scripted_manners.h"

#include "tests/support/scripted_session.h"

namespace ftp_test {
namespace {

const std::string kLineEnd = "\r\n";

std::string CodeOf(const std::string& reply) {
    return reply.substr(0, 3);
}

}  // namespace

Manner InPlaceOf(std::string bytes) {
    return [bytes = std::move(bytes)](ScriptedSession& session, const std::string&) {
        return session.Send(bytes);
    };
}

Manner Late(std::chrono::milliseconds after) {
    return [after](ScriptedSession& session, const std::string& reply) {
        const Next next = session.Pause(after);
        return next == Next::Go ? session.Send(reply) : next;
    };
}

Manner ByteByByte() {
    return [](ScriptedSession& session, const std::string& reply) {
        Next next = Next::Go;
        for (std::size_t i = 0; i < reply.size() && next == Next::Go; ++i)
            next = session.Send(reply.substr(i, 1));
        return next;
    };
}

Manner Lost() {
    return [](ScriptedSession&, const std::string&) { return Next::Go; };
}

Manner Doubled() {
    return [](ScriptedSession& session, const std::string& reply) { return session.Send(reply + reply); };
}

Manner Unterminated() {
    return [](ScriptedSession& session, const std::string& reply) {
        const Next next = session.Send(reply.substr(0, reply.size() - kLineEnd.size()));
        return next == Next::Go ? session.Stall() : next;
    };
}

Manner Decorated(std::string bytes) {
    return [bytes = std::move(bytes)](ScriptedSession& session, std::string reply) {
        for (std::size_t end = 0; (end = reply.find(kLineEnd, end)) != std::string::npos;) {
            reply.insert(end, bytes);
            end += bytes.size() + kLineEnd.size();
        }
        return session.Send(reply);
    };
}

Manner AfterLines(int count) {
    return [count](ScriptedSession& session, const std::string& reply) {
        std::string lines;
        for (int i = 0; i < count; ++i) lines += CodeOf(reply) + "-" + std::string(56, 'x') + kLineEnd;
        return session.Send(lines + reply);
    };
}

Manner OfLength(std::size_t length) {
    return [length](ScriptedSession& session, const std::string& reply) {
        return session.Send(CodeOf(reply) + " " + std::string(length - 4, 'x') + kLineEnd);
    };
}

Manner Endless() {
    return [](ScriptedSession& session, const std::string& reply) {
        const std::string line = CodeOf(reply) + "-" + std::string(56, 'x') + kLineEnd;
        Next next;
        while ((next = session.Send(line)) == Next::Go) {
        }
        return next;
    };
}

Manner ClosedBefore() {
    return [](ScriptedSession& session, const std::string&) { return session.Close(); };
}
Manner ResetBefore() {
    return [](ScriptedSession& session, const std::string&) { return session.Reset(); };
}
Manner ClosedAfter() {
    return [](ScriptedSession& session, const std::string& reply) {
        session.Send(reply);
        return session.Close();
    };
}
Manner ResetAfter() {
    return [](ScriptedSession& session, const std::string& reply) {
        session.Send(reply);
        return session.Reset();
    };
}

}  // namespace ftp_test
