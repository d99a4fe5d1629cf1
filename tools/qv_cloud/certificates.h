// Making X.509 certificates with EC P-256 keys that live in memory only.
//
// Threads: none of its own; the functions share nothing. Ownership: a Certificate owns its certificate and key.
// Failures throw std::runtime_error.
#ifndef QV_CLOUD_CERTIFICATES_H
#define QV_CLOUD_CERTIFICATES_H

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "tools/qv_cloud/cloud.h"

namespace qv_cloud {

struct OpenSslDeleter {
  void operator()(X509* certificate) const { X509_free(certificate); }
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};

struct Certificate {
  std::unique_ptr<X509, OpenSslDeleter> certificate;
  std::unique_ptr<EVP_PKEY, OpenSslDeleter> key;

  std::string Pem() const;
};

struct CertificateRequest {
  std::string commonName;
  std::string subjectNames;  // as OpenSSL writes them: "DNS:localhost,IP:127.0.0.1"; empty: none
  std::chrono::seconds notBefore = -std::chrono::hours(1);  // from now
  std::chrono::seconds notAfter = std::chrono::hours(24);
  bool isAuthority = false;
};

// Signed by the issuer; by itself when there is none.
Certificate MakeCertificate(const CertificateRequest& request, const Certificate* issuer);

// Signed by the issuer, like MakeCertificate.
Certificate MakeAuthority(const char* name, const Certificate* issuer = nullptr);

// What a server on this machine presents, and the certificates of authorities that it sends with its own.
struct ServedChain {
  Certificate leaf;
  std::vector<Certificate> above;
};
ServedChain MakeServerChain(ServedCertificate kind, const Certificate& authority);

}  // namespace qv_cloud

#endif
