// Why a TLS hand-shake failed, in words that say what is wrong with the peer.
//
// Threads: a pure function. Ownership: texts are copied.
#ifndef REFERENCE_COMMON_TLS_FAULT_H
#define REFERENCE_COMMON_TLS_FAULT_H

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

#include <string>

namespace reference {

// chain: the certificates that OpenSSL could put in order, the peer's own first; may be null.
inline std::string CertificateFault(long verifyResult, const STACK_OF(X509) * chain) {
  switch (verifyResult) {
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
      break;
    default:
      return X509_verify_cert_error_string(verifyResult);
  }
  // The name is the peer's text; this writes it in printable ASCII.
  char issuer[256] = "";
  const int length = chain != nullptr ? sk_X509_num(chain) : 0;
  if (length > 0) X509_NAME_oneline(X509_get_issuer_name(sk_X509_value(chain, length - 1)), issuer, sizeof(issuer));
  // A server need not send its root. One that sends nothing above its own certificate may have left out more.
  if (length > 1) return std::string("unknown authority, ") + issuer + " is not a trusted one";
  return std::string("incomplete chain, the issuer ") + issuer + " has not been sent and is not a trusted authority";
}

// verifyResult: what OpenSSL says of the certificate; text: the failure as it was reported, returned when there is
// nothing better to say.
inline std::string TlsFault(long verifyResult, const STACK_OF(X509) * chain, const std::string& text) {
  if (verifyResult != X509_V_OK) return "the certificate was refused: " + CertificateFault(verifyResult, chain);
  // Of a failed hand-shake libcurl hands on OpenSSL's text only.
  for (const int reason : {SSL_R_TLSV1_ALERT_PROTOCOL_VERSION, SSL_R_UNSUPPORTED_PROTOCOL}) {
    const char* const known = ERR_reason_error_string(ERR_PACK(ERR_LIB_SSL, 0, reason));
    if (known != nullptr && text.find(known) != std::string::npos) {
      return "protocol too old, the peer speaks no TLS from version 1.2 on";
    }
  }
  return text;
}

}  // namespace reference

#endif
