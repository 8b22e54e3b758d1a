#pragma once
// From OpenSSL's certificate to ours.

#include <openssl/x509.h>

#include <string>

#include "ftp/engine/wire/certificate.h"

namespace ftp {

/// What the certificate says; nothing is held to be wrong with it yet.
Certificate ReadCertificate(X509* certificate);
/// SHA-256, as in Certificate.
std::string FingerprintOf(X509* certificate);
/// Adds a fault that the verification has found (X509_V_ERR_...).
void AddFault(Certificate& certificate, int error);

}  // namespace ftp
