#include "settings/known_servers.h"

#include <limits>

#include "settings/leading_number.h"

namespace settings {
namespace {

constexpr qsizetype kPairs = 32;

const QString kTls = QStringLiteral("tls");
const QString kCertificate = QStringLiteral("certificate");

bool IsCapitalHexDigit(QChar letter) {
    return (letter >= u'0' && letter <= u'9') || (letter >= u'A' && letter <= u'F');
}

bool HadTls(const QString& value) {
    using Limits = std::numeric_limits<int>;
    return LeadingNumber(value, Limits::min(), Limits::max()).value_or(0) != 0;
}

}  // namespace

bool IsFingerprint(const QString& text) {
    if (text.size() != 3 * kPairs - 1) return false;
    for (qsizetype i = 0; i < text.size(); ++i)
        if (i % 3 == 2 ? text[i] != u':' : !IsCapitalHexDigit(text[i])) return false;
    return true;
}

KnownServer LoadKnownServer(const Store& store, const QString& server) {
    const QString section = server.toLower();
    KnownServer known{HadTls(store.GetSetting(kServersApplication, section, kTls)),
                      store.GetSetting(kServersApplication, section, kCertificate)};
    if (!IsFingerprint(known.fingerprint)) known.fingerprint.clear();
    return known;
}

void SaveKnownServer(Store& store, const QString& server, const KnownServer& known) {
    if (server.isEmpty()) return;
    const Store::Batch batch(store);
    const QString section = server.toLower();
    if (known.had_tls) store.SaveSetting(kServersApplication, section, kTls, QStringLiteral("1"));
    store.SaveSetting(kServersApplication, section, kCertificate,
                      IsFingerprint(known.fingerprint) ? known.fingerprint : QString());
}

}  // namespace settings
