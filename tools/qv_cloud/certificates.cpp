#include "tools/qv_cloud/certificates.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <cstdint>
#include <stdexcept>
#include <utility>

namespace qv_cloud {
namespace {

void Require(bool succeeded, const char* what) {
  if (succeeded) return;
  char reason[256] = "unknown reason";
  if (const unsigned long code = ERR_get_error(); code != 0) ERR_error_string_n(code, reason, sizeof(reason));
  throw std::runtime_error(std::string("cannot make a certificate: ") + what + ": " + reason);
}

void SetSerialNumber(X509* certificate) {
  std::uint64_t number = 0;
  Require(RAND_bytes(reinterpret_cast<unsigned char*>(&number), sizeof(number)) == 1, "random number");
  Require(ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), number >> 1 | 1) == 1, "serial number");
}

void SetValidity(X509* certificate, const CertificateRequest& request) {
  const auto set = [](ASN1_TIME* time, std::chrono::seconds fromNow) {
    return X509_gmtime_adj(time, static_cast<long>(fromNow.count())) != nullptr;
  };
  Require(set(X509_getm_notBefore(certificate), request.notBefore), "start of validity");
  Require(set(X509_getm_notAfter(certificate), request.notAfter), "end of validity");
}

void AddExtension(X509* certificate, X509* issuer, int name, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  X509V3_set_ctx_nodb(&context);
  X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, name, value);
  Require(extension != nullptr, value);
  const int added = X509_add_ext(certificate, extension, -1);
  X509_EXTENSION_free(extension);
  Require(added == 1, value);
}

}  // namespace

std::string Certificate::Pem() const {
  const std::unique_ptr<BIO, decltype(&BIO_free_all)> memory(BIO_new(BIO_s_mem()), &BIO_free_all);
  Require(memory && PEM_write_bio_X509(memory.get(), certificate.get()) == 1, "PEM text");
  const char* text = nullptr;
  const auto size = BIO_get_mem_data(memory.get(), &text);
  return std::string(text, static_cast<std::size_t>(size));
}

Certificate MakeCertificate(const CertificateRequest& request, const Certificate* issuer) {
  Certificate made;
  made.certificate.reset(X509_new());
  made.key.reset(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"));
  Require(made.certificate && made.key, "key");

  X509* const certificate = made.certificate.get();
  X509* const signer = issuer ? issuer->certificate.get() : certificate;
  Require(X509_set_version(certificate, X509_VERSION_3) == 1, "version");
  SetSerialNumber(certificate);
  SetValidity(certificate, request);
  Require(X509_set_pubkey(certificate, made.key.get()) == 1, "public key");
  X509_NAME* const subject = X509_get_subject_name(certificate);
  Require(
      X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8,
                                 reinterpret_cast<const unsigned char*>(request.commonName.c_str()), -1, -1, 0) == 1,
      "subject");
  Require(X509_set_issuer_name(certificate, X509_get_subject_name(signer)) == 1, "issuer");

  AddExtension(certificate, signer, NID_basic_constraints,
               request.isAuthority ? "critical,CA:TRUE" : "critical,CA:FALSE");
  AddExtension(certificate, signer, NID_key_usage,
               request.isAuthority ? "critical,keyCertSign,cRLSign" : "critical,digitalSignature");
  AddExtension(certificate, signer, NID_subject_key_identifier, "hash");
  AddExtension(certificate, signer, NID_authority_key_identifier, "keyid:always");
  if (!request.isAuthority) AddExtension(certificate, signer, NID_ext_key_usage, "serverAuth");
  if (!request.subjectNames.empty()) {
    AddExtension(certificate, signer, NID_subject_alt_name, request.subjectNames.c_str());
  }

  EVP_PKEY* const signingKey = issuer ? issuer->key.get() : made.key.get();
  Require(X509_sign(certificate, signingKey, EVP_sha256()) > 0, "signature");
  return made;
}

Certificate MakeAuthority(const char* name, const Certificate* issuer) {
  CertificateRequest request;
  request.commonName = name;
  request.isAuthority = true;
  return MakeCertificate(request, issuer);
}

ServedChain MakeServerChain(ServedCertificate kind, const Certificate& authority) {
  CertificateRequest request;
  request.commonName = "localhost";
  request.subjectNames = "DNS:localhost,IP:127.0.0.1";
  if (kind == ServedCertificate::expired) {
    request.notBefore = -std::chrono::hours(2);
    request.notAfter = -std::chrono::hours(1);
  } else if (kind == ServedCertificate::notYetValid) {
    request.notBefore = std::chrono::hours(1);
  } else if (kind == ServedCertificate::wrongHost) {
    request.commonName = "elsewhere.example";
    request.subjectNames = "DNS:elsewhere.example";
  }
  ServedChain served;
  if (kind == ServedCertificate::selfSigned) {
    served.leaf = MakeCertificate(request, nullptr);
    return served;
  }
  const bool isKnown = kind != ServedCertificate::unknownAuthority;
  const Certificate unknown = MakeAuthority("unknown authority");
  Certificate intermediate = MakeAuthority("qv_cloud intermediate", isKnown ? &authority : &unknown);
  served.leaf = MakeCertificate(request, &intermediate);
  if (kind != ServedCertificate::missingIntermediate) served.above.push_back(std::move(intermediate));
  return served;
}

}  // namespace qv_cloud
