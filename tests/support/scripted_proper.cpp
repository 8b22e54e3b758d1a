// What a scripted server does with each command when it behaves.

#include <cstdio>
#include <map>
#include <sstream>

#include "tests/support/scripted_session.h"

namespace ftp_test {

struct ScriptedSession::Proceedings {
    static inline const std::map<std::string, std::string> kWords{
        {kConnect, "220 Ready."},   {"USER", "331 Password, please."},
        {"PASS", "230 Logged in."}, {"ACCT", "230 Logged in."},
        {"OPTS", "200 Done."},      {"TYPE", "200 Done."},
        {"NOOP", "200 Done."},      {"CWD", "250 Done."},
        {"CDUP", "250 Done."},      {"PWD", "257 \"/\" is the current folder."},
        {"RMD", "250 Done."},       {"PBSZ", "200 Done."},
    };
    static inline const std::map<std::string, Next (ScriptedSession::*)()> kDeeds{
        {"FEAT", &ScriptedSession::Feat}, {"PORT", &ScriptedSession::Port}, {"EPRT", &ScriptedSession::Eprt},
        {"EPSV", &ScriptedSession::Epsv}, {"PASV", &ScriptedSession::Pasv}, {"LIST", &ScriptedSession::List},
        {"RETR", &ScriptedSession::Retr}, {"STOR", &ScriptedSession::Stor}, {"SIZE", &ScriptedSession::Size},
        {"REST", &ScriptedSession::Rest}, {"AUTH", &ScriptedSession::Auth}, {"PROT", &ScriptedSession::Prot},
        {"APPE", &ScriptedSession::Stor}, {"DELE", &ScriptedSession::Dele}, {"RNFR", &ScriptedSession::Rnfr},
        {"RNTO", &ScriptedSession::Rnto}, {"MKD", &ScriptedSession::Mkd},   {"ABOR", &ScriptedSession::Abor},
        {"QUIT", &ScriptedSession::Quit},
    };
};

Next ScriptedSession::Proper() {
    if (const auto word = Proceedings::kWords.find(verb_); word != Proceedings::kWords.end())
        return Say(word->second);
    if (const auto deed = Proceedings::kDeeds.find(verb_); deed != Proceedings::kDeeds.end())
        return (this->*deed->second)();
    return Say("502 " + verb_ + " is not known here.");
}

Next ScriptedSession::Feat() {
    return Raw("211-Features:\r\n UTF8\r\n EPSV\r\n SIZE\r\n211 End\r\n");
}

Next ScriptedSession::Auth() {
    if (!world_.Identity()) return Say("502 " + verb_ + " is not known here.");
    const Next next = Say("234 Go ahead.");
    return next == Next::Go ? StartTls() : next;
}

Next ScriptedSession::Prot() {
    protects_data_ = argument_ == "P";
    return Say("200 Done.");
}

Next ScriptedSession::Port() {
    unsigned h1, h2, h3, h4, p1, p2;
    if (std::sscanf(argument_.c_str(), "%u,%u,%u,%u,%u,%u", &h1, &h2, &h3, &h4, &p1, &p2) != 6)
        return Say("501 Not an address.");
    std::ostringstream address;
    address << h1 << '.' << h2 << '.' << h3 << '.' << h4;
    active_ = Endpoint(address.str(), static_cast<std::uint16_t>(p1 * 256 + p2));
    return Say("200 Done.");
}

Next ScriptedSession::Eprt() {
    char address[64];
    unsigned family, port;
    if (std::sscanf(argument_.c_str(), "|%u|%63[0-9a-fA-F:.]|%u|", &family, address, &port) != 3)
        return Say("501 Not an address.");
    active_ = Endpoint(address, static_cast<std::uint16_t>(port));
    return Say("200 Done.");
}

Next ScriptedSession::Epsv() {
    ListenData();
    return Say("229 Entering extended passive mode (|||%p|)");
}

Next ScriptedSession::Pasv() {
    if (control_.Local().IsV6()) return Say("522 Use EPSV.");
    ListenData();
    return Say("227 Entering passive mode (127,0,0,1,%P)");
}

Next ScriptedSession::Transfer(const std::string& bytes) {
    if (const Next next = Say("150 Here it comes."); next != Next::Go) return next;
    if (const Next next = SendData(bytes); next != Next::Go) return next;
    CloseData();
    return Say("226 Done.");
}

Next ScriptedSession::List() {
    return Transfer(world_.Listing());
}

Next ScriptedSession::Retr() {
    const auto bytes = world_.File(argument_);
    if (!bytes || restart_ > bytes->size()) return Say("550 No such file.");
    return Transfer(bytes->substr(restart_));
}

Next ScriptedSession::Rest() {
    if (std::sscanf(argument_.c_str(), "%zu", &restart_) != 1) return Say("501 Not a number.");
    return Say("350 From there.");
}

Next ScriptedSession::Stor() {
    if (const Next next = Say("150 Give it to me."); next != Next::Go) return next;
    if (const Next next = KeepData(kAll); next != Next::Go) return next;
    CloseData();
    return Say("226 Done.");
}

Next ScriptedSession::Size() {
    const auto bytes = world_.File(argument_);
    return Say(bytes ? "213 " + std::to_string(bytes->size()) : "550 No such file.");
}

Next ScriptedSession::Dele() {
    if (!world_.File(argument_)) return Say("550 No such file.");
    world_.SetFile(argument_, std::nullopt);
    return Say("250 Done.");
}

Next ScriptedSession::Rnfr() {
    if (!world_.File(argument_)) return Say("550 No such file.");
    rename_from_ = argument_;
    return Say("350 And its new name?");
}

Next ScriptedSession::Rnto() {
    world_.SetFile(argument_, world_.File(rename_from_));
    world_.SetFile(rename_from_, std::nullopt);
    return Say("250 Done.");
}

Next ScriptedSession::Mkd() {
    return Say("257 \"" + argument_ + "\" is there.");
}

Next ScriptedSession::Abor() {
    CloseData();
    if (!std::exchange(in_transfer_, false)) return Say("225 Nothing to abort.");
    return Raw("426 Transfer aborted.\r\n226 Abort successful.\r\n");
}

Next ScriptedSession::Quit() {
    Say("221 Bye.");
    return Close();
}

}  // namespace ftp_test
