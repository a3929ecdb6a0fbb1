#pragma once

#include <curl/curl.h>

#include <string>

namespace QXPlatform {

// The certificates that TLS is verified against: the system's, and those in the file that $SSL_CERT_FILE
// names. $SSL_CERT_DIR takes the place of the system's directory.
class TrustStore {
 public:
  // Reads the environment.
  TrustStore();

  void applyTo(CURL* handle) const;

 private:
  std::string directory_;
  std::string file_;  // empty: none
};

}  // namespace QXPlatform
