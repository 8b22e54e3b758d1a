#pragma once
// What is known of servers from earlier sessions, over the store. UI thread only.

#include <QString>

#include "settings/settings_store.h"

namespace settings {

/// The application name of the known servers: one section each, by "host:port" in lower case.
inline const QString kServersApplication = QStringLiteral("Websmide's FTP servers");

struct KnownServer {
    bool had_tls = false;  // it has been reached with TLS
    QString fingerprint;   // of the certificate that is trusted for good; or empty

    bool operator==(const KnownServer&) const = default;
};

/// Whether it is 32 pairs of capital hex digits, set apart by colons.
bool IsFingerprint(const QString& text);

/// What is stored and has its form, each value by itself: what is no number stands for no TLS, what is no
/// fingerprint for none. Nothing is known of a server that is not there.
KnownServer LoadKnownServer(const Store& store, const QString& server);

/// The fingerprint takes the place of the one that is stored; what is no fingerprint leaves none. TLS that a
/// server has had is never taken back. Nothing for an empty name.
void SaveKnownServer(Store& store, const QString& server, const KnownServer& known);

}  // namespace settings
