#pragma once
// Certificates for test servers, made when they are asked for, with keys of their own.
//
// Everything lies in one folder of the process, which goes when the process ends in order.

#include <filesystem>
#include <string>

namespace ftp_test {

enum class ServerCertificate {
    Valid,             // for localhost, 127.0.0.1 and ::1, signed by the test authority
    SelfSigned,        // the same, but signed with its own key
    Expired,           // until yesterday
    OtherHost,         // for annan.example
    NotYetValid,       // from tomorrow on
    UnknownAuthority,  // signed by an authority that nobody has
};

struct CertificateFiles {
    std::filesystem::path certificate, key;  // PEM
};

/// A new certificate with a new key. It is for `address`, too, where that is a numeric address.
/// Throws std::runtime_error.
CertificateFiles Certificates(ServerCertificate kind, const std::string& address = "");

/// The certificate (PEM) of the process's test authority.
std::filesystem::path TestAuthority();

/// From now on OpenSSL's default paths hold the test authority and nothing else: sets SSL_CERT_FILE and
/// SSL_CERT_DIR, so before there are threads that read the environment.
void TrustTestAuthority();

/// SHA-256 of a certificate (PEM): capital hexadecimal pairs set apart by colons.
std::string FingerprintOf(const std::filesystem::path& certificate);

}  // namespace ftp_test
