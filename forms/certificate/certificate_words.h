#pragma once
// What the certificate dialog says, as plain functions. The certificate's own words are bytes from outside:
// what would not show or would turn a line around is made visible in all of it, and long texts are cut. Any
// thread.

#include <QList>
#include <QString>
#include <QStringList>

#include "ftp/component.h"

namespace forms {

/// The sentence above all, and below it what is at stake.
QString CertificateHeading(const ftp::CertificateQuestion& question);
QString CertificateAdvice(const ftp::CertificateQuestion& question);

/// What is wrong with the certificate, one sentence each, short ones.
QStringList CertificateProblems(const ftp::Certificate& certificate);

struct CertificateFact {
    QString name;
    QStringList lines;  // never none
    bool fixed_pitch = false;

    bool operator==(const CertificateFact&) const = default;
};

/// All that is to be known of it, in the order of the dialog.
QList<CertificateFact> CertificateFacts(const ftp::CertificateQuestion& question);

/// "2024-03-21 14:05" in local time; "okänt" for a time that no certificate can state.
QString CertificateTime(std::int64_t seconds);

}  // namespace forms
