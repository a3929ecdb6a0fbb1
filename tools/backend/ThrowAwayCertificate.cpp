#include "tools/backend/ThrowAwayCertificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "QXPlatform/foundation/Handle.h"

namespace backend {
namespace {

namespace fs = std::filesystem;

using QXPlatform::Handle;

using Key = Handle<EVP_PKEY, &EVP_PKEY_free>;
using Certificate = Handle<X509, &X509_free>;
using Extension = Handle<X509_EXTENSION, &X509_EXTENSION_free>;
using Memory = Handle<BIO, &BIO_free_all>;

constexpr long kDay = 24L * 60 * 60;

void require(bool done) {
  if (!done) throw std::runtime_error("the throw-away certificate cannot be made");
}

void addExtension(X509* certificate, int kind, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
  const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value));
  require(extension && X509_add_ext(certificate, extension.get(), -1) == 1);
}

Certificate selfSigned(EVP_PKEY* key) {
  Certificate certificate(X509_new());
  require(certificate != nullptr);
  std::uint64_t serial = 0;
  require(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1);
  ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()), serial >> 1);
  X509_set_version(certificate.get(), X509_VERSION_3);
  // An hour back, for clients whose clock is a little behind.
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -kDay / 24);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), kDay);
  X509_set_pubkey(certificate.get(), key);
  X509_NAME* name = X509_get_subject_name(certificate.get());
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>("throw-away loopback certificate"), -1,
                             -1, 0);
  X509_set_issuer_name(certificate.get(), name);
  addExtension(certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
  addExtension(certificate.get(), NID_subject_alt_name, "IP:127.0.0.1,IP:::1,DNS:localhost");
  require(X509_sign(certificate.get(), key, EVP_sha256()) != 0);
  return certificate;
}

std::string contents(BIO* memory) {
  char* bytes = nullptr;
  const long size = BIO_get_mem_data(memory, &bytes);
  return {bytes, static_cast<std::size_t>(size)};
}

fs::path writeTemporaryFile(std::string_view text) {
  std::error_code error;
  std::string path = (fs::temp_directory_path(error) / "qx-backend-ca-XXXXXX").string();
  const int file = error ? -1 : mkstemp(path.data());
  if (file < 0) throw std::runtime_error("no temporary file can be made for the certificate");
  const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  close(file);
  if (!written) fs::remove(path);
  require(written);
  return path;
}

}  // namespace

ThrowAwayCertificate::ThrowAwayCertificate() {
  const Key key(EVP_EC_gen("P-256"));
  require(key != nullptr);
  const Certificate certificate = selfSigned(key.get());
  const Memory keyText(BIO_new(BIO_s_mem()));
  const Memory certificateText(BIO_new(BIO_s_mem()));
  require(PEM_write_bio_PrivateKey(keyText.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1 &&
          PEM_write_bio_X509(certificateText.get(), certificate.get()) == 1);
  keyPEM_ = contents(keyText.get());
  certificatePEM_ = contents(certificateText.get());
  caFile_ = writeTemporaryFile(certificatePEM_);
}

ThrowAwayCertificate::~ThrowAwayCertificate() {
  std::error_code ignored;
  fs::remove(caFile_, ignored);
}

}  // namespace backend
