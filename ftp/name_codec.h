#pragma once
// Names and lines between the server's bytes and the screen's text, without loss.

#include <QByteArray>
#include <QHash>
#include <QString>
#include <string>
#include <string_view>

namespace ftp {

/// One per session. Lines that are valid UTF-8 are read as UTF-8, all others as Windows-1252 (undefined bytes
/// become the C1 control of the same number). What was shown is what is sent back: the last name of a listing
/// line goes back as the very bytes it came from; names that the user types are sent as UTF-8, or as
/// Windows-1252 where the server has shown names that are not UTF-8 (and the name can be written so).
class NameCodec {
 public:
    void Reset();       // a new session
    void NewListing();  // what was shown before is gone
    QString DecodeListing(std::string_view line);
    QString Decode(std::string_view text) const;  // replies and commands of the trace
    std::string Encode(const QString& name) const;

 private:
    bool legacy_ = false;               // a name that is not UTF-8 has been seen in this session
    QHash<QString, QByteArray> exact_;  // names whose bytes are not what Encode would make of them
};

}  // namespace ftp
