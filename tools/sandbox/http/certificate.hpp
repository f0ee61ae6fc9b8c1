#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <string>

namespace vantorium::sandbox {

/// A fresh key with a self-signed certificate for the host, 127.0.0.1 and localhost, valid for 30 days.
class Identity {
 public:
  explicit Identity(const std::string& host);  ///< Throws std::runtime_error when OpenSSL fails.

  const std::string& certificatePEM() const { return pem_; }
  SSL_CTX* context() const { return context_.get(); }

 private:
  std::string pem_;
  std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context_;
};

}  // namespace vantorium::sandbox
