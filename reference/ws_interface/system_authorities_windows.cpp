// In this order: wincrypt.h needs windows.h, and OpenSSL's headers undo the macros of wincrypt.h.
// clang-format off
#include <windows.h>
#include <wincrypt.h>
// clang-format on

#include <openssl/err.h>
#include <openssl/x509.h>

#include "reference/ws_interface/system_authorities.h"

namespace reference::ws {

// OpenSSL's own default paths name a folder of the machine that built it.
bool TrustSystemAuthorities(SSL_CTX* context) {
  const HCERTSTORE systemStore = CertOpenSystemStoreW(0, L"ROOT");
  if (systemStore == nullptr) return false;
  X509_STORE* const trusted = SSL_CTX_get_cert_store(context);
  for (PCCERT_CONTEXT found = nullptr; (found = CertEnumCertificatesInStore(systemStore, found)) != nullptr;) {
    const unsigned char* encoded = found->pbCertEncoded;
    X509* const certificate = d2i_X509(nullptr, &encoded, static_cast<int>(found->cbCertEncoded));
    if (certificate == nullptr) continue;
    X509_STORE_add_cert(trusted, certificate);
    X509_free(certificate);
  }
  CertCloseStore(systemStore, 0);
  // Entries that OpenSSL cannot read leave errors behind, which must not be taken for the next operation's.
  ERR_clear_error();
  return true;
}

}  // namespace reference::ws
