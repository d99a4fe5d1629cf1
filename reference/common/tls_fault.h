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

// verifyResult: what OpenSSL says of the certificate; text: the failure as it was reported, returned when there is nothing
// better to say.
inline std::string TlsFault(long verifyResult, const std::string& text) {
  const std::string refused = "the certificate was refused: ";
  switch (verifyResult) {
    case X509_V_OK:
      break;
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
      return refused + "unknown authority, its root certificate is not a trusted one";
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
      return refused + "incomplete chain, the peer has not sent an issuer that is not a trusted authority itself";
    default:
      return refused + X509_verify_cert_error_string(verifyResult);
  }
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
