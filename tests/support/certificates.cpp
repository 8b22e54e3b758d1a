#include "tests/support/certificates.h"

#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <utility>

namespace ftp_test {
namespace {

namespace fs = std::filesystem;

template <auto free>
struct FreeWith {
    void operator()(auto* what) const { free(what); }
};
using Key = std::unique_ptr<EVP_PKEY, FreeWith<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, FreeWith<X509_free>>;
using File = std::unique_ptr<FILE, FreeWith<std::fclose>>;

constexpr long kDay = 24 * 60 * 60;

/// OpenSSL's functions say 1, or a pointer, when they have done it.
void Check(bool done, const char* what) {
    if (done) return;
    std::array<char, 256> reason{};
    ERR_error_string_n(ERR_get_error(), reason.data(), reason.size());
    throw std::runtime_error(std::string("certificate: ") + what + ": " + reason.data());
}

/// The process's folder. What a forked child inherits stays the parent's.
class Folder {
 public:
    Folder() : owner_(getpid()) {
        std::string name = (fs::temp_directory_path() / "websmide-certificates-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("cannot make " + name);
        path_ = name;
        fs::create_directory(path_ / "none");
    }
    ~Folder() {
        std::error_code ignored;
        if (getpid() == owner_) fs::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const fs::path& Path() const { return path_; }
    fs::path NewSubfolder() {
        fs::path made = path_ / std::to_string(++count_);
        fs::create_directory(made);
        return made;
    }

 private:
    pid_t owner_;
    fs::path path_;
    std::atomic<int> count_{0};
};

Folder& ProcessFolder() {
    static Folder folder;
    return folder;
}

/// What a certificate says, besides its key.
struct Contents {
    std::string name;
    std::string other_names;  // as in subjectAltName; empty: an authority
    long from = -30 * kDay, until = 30 * kDay;
};

void Extend(X509* certificate, int extension, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, FreeWith<X509_EXTENSION_free>> made(
        X509V3_EXT_conf_nid(nullptr, &context, extension, value.c_str()));
    Check(made && X509_add_ext(certificate, made.get(), -1) == 1, value.c_str());
}

void NumberAtRandom(X509* certificate) {
    const std::unique_ptr<BIGNUM, FreeWith<BN_free>> number(BN_new());
    Check(number && BN_rand(number.get(), 120, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY) == 1, "a number");
    Check(BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate)) != nullptr, "a number");
}

struct Signed {
    Certificate certificate;
    Key key;
};

/// `by`: nobody, and the certificate signs itself.
Signed Make(const Contents& contents, const Signed* by = nullptr) {
    Signed made{Certificate(X509_new()), Key(EVP_EC_gen("P-256"))};
    X509* certificate = made.certificate.get();
    Check(certificate && made.key, "a key");
    NumberAtRandom(certificate);
    X509_NAME* name = X509_get_subject_name(certificate);
    const auto* bytes = reinterpret_cast<const unsigned char*>(contents.name.c_str());
    Check(X509_set_version(certificate, X509_VERSION_3) == 1 &&
              X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, bytes, -1, -1, 0) == 1 &&
              X509_set_issuer_name(certificate, by ? X509_get_subject_name(by->certificate.get()) : name) ==
                  1 &&
              X509_gmtime_adj(X509_getm_notBefore(certificate), contents.from) &&
              X509_gmtime_adj(X509_getm_notAfter(certificate), contents.until) &&
              X509_set_pubkey(certificate, made.key.get()) == 1,
          "its contents");
    if (contents.other_names.empty()) {
        Extend(certificate, NID_basic_constraints, "critical,CA:TRUE");
        Extend(certificate, NID_key_usage, "critical,keyCertSign,cRLSign");
    } else {
        Extend(certificate, NID_basic_constraints, "critical,CA:FALSE");
        Extend(certificate, NID_ext_key_usage, "serverAuth");
        Extend(certificate, NID_subject_alt_name, contents.other_names);
    }
    Check(X509_sign(certificate, (by ? by->key : made.key).get(), EVP_sha256()) > 0, "the signature");
    return made;
}

File Open(const fs::path& path, const char* mode) {
    File file(std::fopen(path.c_str(), mode));
    if (!file) throw std::runtime_error("cannot open " + path.string());
    return file;
}

CertificateFiles Write(const Signed& made, const fs::path& folder) {
    CertificateFiles files{folder / "certificate.pem", folder / "key.pem"};
    Check(PEM_write_X509(Open(files.certificate, "wb").get(), made.certificate.get()) == 1, "writing it");
    const File key = Open(files.key, "wb");
    Check(fchmod(fileno(key.get()), 0600) == 0, "the key's file");
    Check(PEM_write_PKCS8PrivateKey(key.get(), made.key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1,
          "writing the key");
    return files;
}

struct Authority {
    Signed made = Make({.name = "Websmide test authority", .other_names = {}});
    fs::path file = Write(made, ProcessFolder().NewSubfolder()).certificate;
};

const Authority& ProcessAuthority() {
    static const Authority authority;
    return authority;
}

}  // namespace

CertificateFiles Certificates(ServerCertificate kind, const std::string& address) {
    Contents contents{.name = "localhost", .other_names = "DNS:localhost,IP:127.0.0.1,IP:::1"};
    if (!address.empty()) contents.other_names += ",IP:" + address;
    if (kind == ServerCertificate::OtherHost)
        contents = {.name = "annan.example", .other_names = "DNS:annan.example"};
    if (kind == ServerCertificate::Expired) contents.until = -kDay;
    if (kind == ServerCertificate::NotYetValid) contents.from = kDay;

    const fs::path folder = ProcessFolder().NewSubfolder();
    if (kind == ServerCertificate::SelfSigned) return Write(Make(contents), folder);
    if (kind == ServerCertificate::UnknownAuthority) {
        const Signed unknown = Make({.name = "Somebody else's authority", .other_names = {}});
        return Write(Make(contents, &unknown), folder);
    }
    return Write(Make(contents, &ProcessAuthority().made), folder);
}

fs::path TestAuthority() {
    return ProcessAuthority().file;
}

void TrustTestAuthority() {
    setenv("SSL_CERT_FILE", TestAuthority().c_str(), 1);
    setenv("SSL_CERT_DIR", (ProcessFolder().Path() / "none").c_str(), 1);
}

std::string FingerprintOf(const fs::path& certificate) {
    const Certificate read(PEM_read_X509(Open(certificate, "rb").get(), nullptr, nullptr, nullptr));
    Check(read != nullptr, "reading it");
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    Check(X509_digest(read.get(), EVP_sha256(), digest.data(), &size) == 1, "its fingerprint");
    std::string text;
    for (unsigned i = 0; i < size; ++i) {
        std::array<char, 4> pair{};
        std::snprintf(pair.data(), pair.size(), i ? ":%02X" : "%02X", digest[i]);
        text += pair.data();
    }
    return text;
}

}  // namespace ftp_test
