#include "ftp/engine/net/tls_certificate.h"

#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <array>
#include <asio/ip/address.hpp>
#include <chrono>
#include <ctime>
#include <memory>

namespace ftp {
namespace {

constexpr int kMostNames = 1000;  // a certificate with more is not there to be read

std::string TextOf(const ASN1_STRING* text) {
    return {reinterpret_cast<const char*>(ASN1_STRING_get0_data(text)),
            static_cast<std::size_t>(ASN1_STRING_length(text))};
}

/// "CN=ftp.example.se, O=Exempel", in UTF-8; control characters are escaped.
std::string TextOf(const X509_NAME* name) {
    const std::unique_ptr<BIO, int (*)(BIO*)> memory(BIO_new(BIO_s_mem()), BIO_free);
    constexpr unsigned long kFlags = (XN_FLAG_ONELINE & ~ASN1_STRFLGS_ESC_MSB & ~XN_FLAG_SPC_EQ);
    X509_NAME_print_ex(memory.get(), name, 0, kFlags);
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &bytes);
    return {bytes, static_cast<std::size_t>(size)};
}

template <class Address>
std::string AddressFrom(const unsigned char* bytes) {
    typename Address::bytes_type parts;
    std::copy_n(bytes, parts.size(), parts.begin());
    return Address(parts).to_string();
}

std::string AddressOf(const ASN1_STRING* address) {
    const unsigned char* bytes = ASN1_STRING_get0_data(address);
    switch (ASN1_STRING_length(address)) {
        case 4:
            return AddressFrom<asio::ip::address_v4>(bytes);
        case 16:
            return AddressFrom<asio::ip::address_v6>(bytes);
        default:
            return {};
    }
}

std::vector<std::string> NamesOf(X509* certificate) {
    std::vector<std::string> names;
    auto* const listed =
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr));
    for (int i = 0; i < sk_GENERAL_NAME_num(listed) && i < kMostNames; ++i) {
        const GENERAL_NAME* name = sk_GENERAL_NAME_value(listed, i);
        if (name->type == GEN_DNS) names.push_back(TextOf(name->d.dNSName));
        if (name->type == GEN_IPADD) names.push_back(AddressOf(name->d.iPAddress));
    }
    GENERAL_NAMES_free(listed);
    const X509_NAME* subject = X509_get_subject_name(certificate);
    const int at = X509_NAME_get_index_by_NID(subject, NID_commonName, -1);
    if (names.empty() && at >= 0)
        names.push_back(TextOf(X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, at))));
    return names;
}

std::int64_t SecondsOf(const ASN1_TIME* time) {
    using namespace std::chrono;
    std::tm parts{};
    if (ASN1_TIME_to_tm(time, &parts) != 1) return 0;
    const year_month_day day(year(parts.tm_year + 1900), month(static_cast<unsigned>(parts.tm_mon + 1)),
                             std::chrono::day(static_cast<unsigned>(parts.tm_mday)));
    const auto time_of_day = hours(parts.tm_hour) + minutes(parts.tm_min) + seconds(parts.tm_sec);
    return (sys_days(day).time_since_epoch() + time_of_day).count();
}

}  // namespace

std::string FingerprintOf(X509* certificate) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest;
    unsigned size = 0;
    if (X509_digest(certificate, EVP_sha256(), digest.data(), &size) != 1) return {};
    std::string text;
    for (unsigned i = 0; i < size; ++i) {
        if (i > 0) text += ':';
        text += "0123456789ABCDEF"[digest[i] >> 4];
        text += "0123456789ABCDEF"[digest[i] & 15];
    }
    return text;
}

Certificate ReadCertificate(X509* certificate) {
    Certificate read;
    read.fingerprint = FingerprintOf(certificate);
    read.names = NamesOf(certificate);
    read.subject = TextOf(X509_get_subject_name(certificate));
    read.issuer = TextOf(X509_get_issuer_name(certificate));
    read.not_before = SecondsOf(X509_get0_notBefore(certificate));
    read.not_after = SecondsOf(X509_get0_notAfter(certificate));
    return read;
}

void AddFault(Certificate& certificate, int error) {
    switch (error) {
        case X509_V_OK:
            break;
        case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
            certificate.self_signed = true;
            [[fallthrough]];
        case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
        case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
        case X509_V_ERR_CERT_UNTRUSTED:
            certificate.unknown_issuer = true;
            break;
        case X509_V_ERR_CERT_HAS_EXPIRED:
            certificate.expired = true;
            break;
        case X509_V_ERR_CERT_NOT_YET_VALID:
            certificate.not_yet_valid = true;
            break;
        case X509_V_ERR_HOSTNAME_MISMATCH:
        case X509_V_ERR_IP_ADDRESS_MISMATCH:
            certificate.wrong_host = true;
            break;
        default:
            certificate.other = X509_verify_cert_error_string(error);
    }
}

}  // namespace ftp
