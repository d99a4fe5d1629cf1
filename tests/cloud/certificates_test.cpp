#include "tools/qv_cloud/certificates.h"

#include <gtest/gtest.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

namespace qv_cloud {
namespace {

int VerifyFor(const char* host, const Certificate& server, const Certificate& authority) {
  const std::unique_ptr<X509_STORE, decltype(&X509_STORE_free)> store(X509_STORE_new(), &X509_STORE_free);
  X509_STORE_add_cert(store.get(), authority.certificate.get());
  const std::unique_ptr<X509_STORE_CTX, decltype(&X509_STORE_CTX_free)> context(X509_STORE_CTX_new(),
                                                                                &X509_STORE_CTX_free);
  X509_STORE_CTX_init(context.get(), store.get(), server.certificate.get(), nullptr);
  X509_VERIFY_PARAM* const parameters = X509_STORE_CTX_get0_param(context.get());
  X509_VERIFY_PARAM_set1_host(parameters, host, 0);
  X509_VERIFY_PARAM_set_purpose(parameters, X509_PURPOSE_SSL_SERVER);
  X509_VERIFY_PARAM_set_flags(parameters, X509_V_FLAG_X509_STRICT);
  X509_verify_cert(context.get());
  return X509_STORE_CTX_get_error(context.get());
}

TEST(Certificates, EachKindFailsToVerifyForItsOwnReasonOnly) {
  const struct {
    ServedCertificate kind;
    int result;
  } kCases[] = {
      {ServedCertificate::valid, X509_V_OK},
      {ServedCertificate::expired, X509_V_ERR_CERT_HAS_EXPIRED},
      {ServedCertificate::notYetValid, X509_V_ERR_CERT_NOT_YET_VALID},
      {ServedCertificate::wrongHost, X509_V_ERR_HOSTNAME_MISMATCH},
      {ServedCertificate::selfSigned, X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT},
      {ServedCertificate::unknownAuthority, X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY},
  };
  const Certificate authority = MakeAuthority();
  for (const auto& test : kCases) {
    const int result = VerifyFor("localhost", MakeServerCertificate(test.kind, authority), authority);
    EXPECT_EQ(result, test.result) << X509_verify_cert_error_string(result);
  }
}

TEST(Certificates, TheValidOneIsForThisMachineOnly) {
  const Certificate authority = MakeAuthority();
  const Certificate server = MakeServerCertificate(ServedCertificate::valid, authority);
  EXPECT_EQ(VerifyFor("localhost.example", server, authority), X509_V_ERR_HOSTNAME_MISMATCH);
  EXPECT_EQ(X509_check_ip_asc(server.certificate.get(), "127.0.0.1", 0), 1);
}

TEST(Certificates, APemTextHoldsNoKey) {
  const std::string pem = MakeAuthority().Pem();
  EXPECT_TRUE(pem.starts_with("-----BEGIN CERTIFICATE-----"));
  EXPECT_EQ(pem.find("PRIVATE"), std::string::npos);
}

}  // namespace
}  // namespace qv_cloud
