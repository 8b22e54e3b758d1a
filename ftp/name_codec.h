#pragma once
// Names and lines between the server's bytes and the screen's text, without loss.

#include <QByteArray>
#include <QHash>
#include <QString>
#include <optional>
#include <string>
#include <string_view>

namespace ftp {

/// One per session. Lines that are valid UTF-8 are read as UTF-8, all others as Windows-1252 (undefined bytes
/// become the C1 control of the same number). They are shown as VisibleText: what hides in a name, or would
/// turn it around, has a mark in its place. A name that would read like an earlier one of its listing, in
/// UTF-8 the one and not the other, is shown as VisibleBytes. What was shown is what is sent back: the last
/// name of a listing line goes back as the very bytes it came from, marked or not; names that the user types
/// are sent as UTF-8, or as Windows-1252 where the server has shown names that are not UTF-8 (and the name
/// can be written so). A mark in a name that was not in the listing is sent as the characters it consists of.
class NameCodec {
 public:
    void Reset();       // a new session
    void NewListing();  // what was shown before is gone
    QString DecodeListing(std::string_view line);
    QString Decode(std::string_view text) const;  // replies and commands of the trace
    std::string Encode(const QString& name) const;

    /// As Decode, without marks: not for the screen.
    static QString Text(std::string_view bytes);
    /// In Windows-1252; nothing for text that cannot be written so.
    static std::optional<std::string> Legacy(const QString& text);

 private:
    bool Keep(const QString& shown, std::string_view name);

    bool legacy_ = false;               // a name that is not UTF-8 has been seen in this session
    QHash<QString, QByteArray> exact_;  // names whose bytes are not what Encode would make of them
};

}  // namespace ftp
