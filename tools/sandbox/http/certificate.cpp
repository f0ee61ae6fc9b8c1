#include "sandbox/http/certificate.hpp"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <array>
#include <stdexcept>

namespace vantorium::sandbox {
namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

void require(bool ok, const char* what) {
  if (ok) return;
  std::array<char, 256> reason{};
  ERR_error_string_n(ERR_get_error(), reason.data(), reason.size());
  throw std::runtime_error(std::string("cannot make a certificate: ") + what + ": " + reason.data());
}

void addExtension(X509* certificate, int nid, const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
  const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
      X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str()), &X509_EXTENSION_free);
  require(extension != nullptr && X509_add_ext(certificate, extension.get(), -1) == 1, "extension");
}

std::string namesFor(const std::string& host) {
  std::string names = "IP:127.0.0.1,DNS:localhost";
  if (host == "127.0.0.1" || host == "localhost") return names;
  const bool numeric =
      host.find_first_not_of("0123456789.") == std::string::npos || host.find(':') != std::string::npos;
  return names + (numeric ? ",IP:" : ",DNS:") + host;
}

Certificate sign(EVP_PKEY* key, const std::string& host) {
  Certificate certificate(X509_new(), &X509_free);
  require(certificate != nullptr, "allocation");
  X509_set_version(certificate.get(), X509_VERSION_3);
  uint32_t serial = 0;
  RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial);
  ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()), serial | 1U);
  constexpr long day = 24L * 60 * 60;
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -day);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 30 * day);
  X509_NAME* name = X509_get_subject_name(certificate.get());
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>("Vantorium sandbox"), -1, -1, 0);
  X509_set_issuer_name(certificate.get(), name);
  X509_set_pubkey(certificate.get(), key);
  addExtension(certificate.get(), NID_basic_constraints, "critical,CA:FALSE");
  addExtension(certificate.get(), NID_key_usage, "critical,digitalSignature");
  addExtension(certificate.get(), NID_ext_key_usage, "serverAuth");
  addExtension(certificate.get(), NID_subject_alt_name, namesFor(host));
  require(X509_sign(certificate.get(), key, EVP_sha256()) > 0, "signature");
  return certificate;
}

std::string toPEM(X509* certificate) {
  const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), &BIO_free);
  require(memory != nullptr && PEM_write_bio_X509(memory.get(), certificate) == 1, "PEM");
  char* text = nullptr;
  const long size = BIO_get_mem_data(memory.get(), &text);
  return {text, static_cast<size_t>(size)};
}

}  // namespace

Identity::Identity(const std::string& host) : context_(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free) {
  const Key key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
  require(key != nullptr, "key");
  const Certificate certificate = sign(key.get(), host);
  pem_ = toPEM(certificate.get());
  require(context_ != nullptr && SSL_CTX_use_certificate(context_.get(), certificate.get()) == 1 &&
              SSL_CTX_use_PrivateKey(context_.get(), key.get()) == 1,
          "context");
  SSL_CTX_set_min_proto_version(context_.get(), TLS1_2_VERSION);
}

}  // namespace vantorium::sandbox
