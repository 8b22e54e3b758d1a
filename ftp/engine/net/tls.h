#pragma once
// TLS over streams. Worker's thread.

#include <memory>
#include <string>

#include "ftp/engine/net/stream.h"

namespace ftp {

/// The TLS of one control connection and its data connections. Outlives the streams that it makes.
class TlsClient {
 public:
    TlsClient();
    ~TlsClient();
    TlsClient(const TlsClient&) = delete;
    TlsClient& operator=(const TlsClient&) = delete;

    /// Forgets the control connection before, if any.
    std::unique_ptr<SecureStream> SecureControl(std::unique_ptr<Stream> plain, const std::string& host);
    std::unique_ptr<Stream> SecureData(std::unique_ptr<Stream> plain);

    struct Shared;

 private:
    std::unique_ptr<Shared> shared_;
};

}  // namespace ftp
