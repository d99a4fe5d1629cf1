#include "reference/common/http_transfer.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "reference/common/guarded.h"
#include "reference/common/http_result.h"
#include "reference/common/openssl_at_exit.h"
#include "reference/common/tls_fault.h"

namespace reference {
namespace {

constexpr std::uint32_t kHttpOk = 200;

// The answer goes out without a text rather than not at all.
template <class Text>
void Explain(HttpAnswer& answer, const Text& text) noexcept {
  Guarded("[REFERENCE_COMMON]", "explaining a failure", [&] { answer.problem = text(); });
}

// The reason may quote what a certificate or a proxy says; a line break in it would forge a log line.
std::string Printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7f; }, '?');
  return text;
}

}  // namespace

bool PrepareLibcurl() {
  KeepOpenSslAtExit();
  static const bool initialised = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  return initialised;
}

HttpTransfer::HttpTransfer(std::string body, Done done)
    : body(std::move(body)), done(std::move(done)), easy(curl_easy_init()) {}

HttpTransfer::~HttpTransfer() {
  if (multi != nullptr) curl_multi_remove_handle(multi, easy.get());
}

std::unique_ptr<HttpTransfer> HttpTransfer::Post(const HttpSettings& settings, const std::string& url, std::string body,
                                                 Done done) {
  std::unique_ptr<HttpTransfer> transfer(new HttpTransfer(std::move(body), std::move(done)));
  if (!transfer->easy || !transfer->Configure(settings, url)) return nullptr;
  return transfer;
}

bool HttpTransfer::Configure(const HttpSettings& settings, const std::string& url) {
  bool accepted = true;
  const auto set = [&](CURLoption option, auto value) {
    accepted = curl_easy_setopt(easy.get(), option, value) == CURLE_OK && accepted;
  };
  if (!AddHeader("Content-Type: application/json")) return false;
  for (const std::string& line : settings.headers) {
    if (!AddHeader(line.c_str())) return false;
  }

  set(CURLOPT_PRIVATE, this);
  set(CURLOPT_ERRORBUFFER, reason);
  set(CURLOPT_NOSIGNAL, 1L);
  // A look-up of a name that hangs must not hold up a stop.
  set(CURLOPT_QUICK_EXIT, 1L);
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(settings.connectTimeOutMs));
  set(CURLOPT_TIMEOUT_MS, static_cast<long>(settings.requestTimeOutMs));

  set(CURLOPT_URL, url.c_str());
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_FOLLOWLOCATION, 0L);
  // Empty texts rather than none, which would let the process's environment choose.
  set(CURLOPT_PROXY, settings.proxy.c_str());
  set(CURLOPT_NOPROXY, "");

  set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  set(CURLOPT_SSL_VERIFYPEER, 1L);
  set(CURLOPT_SSL_VERIFYHOST, 2L);
  set(CURLOPT_SSL_CTX_FUNCTION, &HttpTransfer::ListenToVerification);
  set(CURLOPT_SSL_CTX_DATA, this);
  if (settings.authorityFile.empty()) {
    // Means something on Windows only, where OpenSSL finds no authorities by itself.
    set(CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_NATIVE_CA));
  } else {
    set(CURLOPT_CAINFO, settings.authorityFile.c_str());
    // The system's directory would be searched as well.
    set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
  }

  set(CURLOPT_POST, 1L);
  set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  set(CURLOPT_POSTFIELDS, body.c_str());
  set(CURLOPT_HTTPHEADER, headers.get());
  set(CURLOPT_WRITEFUNCTION, &HttpTransfer::Receive);
  set(CURLOPT_WRITEDATA, this);
  return accepted;
}

bool HttpTransfer::AddHeader(const char* line) {
  curl_slist* const longer = curl_slist_append(headers.get(), line);
  if (longer == nullptr) return false;
  // The same list but for the first one.
  [[maybe_unused]] const curl_slist* const same = headers.release();
  headers.reset(longer);
  return true;
}

CURLcode HttpTransfer::ListenToVerification(CURL* /*handle*/, void* context, void* transfer) {
  auto* const tls = static_cast<SSL_CTX*>(context);
  SSL_CTX_set_app_data(tls, transfer);
  // The connection outlives this transfer, and must not be verified anew then.
  SSL_CTX_set_options(tls, SSL_OP_NO_RENEGOTIATION);
  SSL_CTX_set_verify(tls, SSL_VERIFY_PEER, &HttpTransfer::OnVerified);
  return CURLE_OK;
}

int HttpTransfer::OnVerified(int isGood, X509_STORE_CTX* verification) noexcept {
  if (isGood == 1) return isGood;
  const auto* const tls =
      static_cast<const SSL*>(X509_STORE_CTX_get_ex_data(verification, SSL_get_ex_data_X509_STORE_CTX_idx()));
  auto& self = *static_cast<HttpTransfer*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(tls)));
  Guarded("[REFERENCE_COMMON]", "explaining a certificate", [&] {
    self.refusedCertificate =
        TlsFault(X509_STORE_CTX_get_error(verification), X509_STORE_CTX_get0_chain(verification), std::string());
  });
  return isGood;
}

HttpTransfer* HttpTransfer::Of(CURL* handle) {
  HttpTransfer* transfer = nullptr;
  curl_easy_getinfo(handle, CURLINFO_PRIVATE, &transfer);
  return transfer;
}

CURLMcode HttpTransfer::Join(CURLM* newMulti) {
  const CURLMcode result = curl_multi_add_handle(newMulti, easy.get());
  if (result == CURLM_OK) multi = newMulti;
  return result;
}

std::uint32_t HttpTransfer::Status() const {
  long status = 0;
  curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
  return static_cast<std::uint32_t>(status);
}

// Less than it was given makes libcurl end the transfer.
std::size_t HttpTransfer::Receive(char* bytes, std::size_t size, std::size_t count, void* transfer) noexcept {
  auto& self = *static_cast<HttpTransfer*>(transfer);
  const std::size_t length = size * count;
  self.tooLong = length > kMaximumAnswerBytes - self.received.size();
  if (self.tooLong) return 0;
  try {
    self.received.append(bytes, length);
  } catch (const std::exception&) {
    return 0;
  }
  return length;
}

std::string HttpTransfer::Problem(CURLcode result) const {
  if (tooLong) return "the answer has more than " + std::to_string(kMaximumAnswerBytes) + " bytes";
  if (!refusedCertificate.empty()) return refusedCertificate;
  return Printable(TlsFault(X509_V_OK, nullptr, reason[0] != '\0' ? reason : curl_easy_strerror(result)));
}

void HttpTransfer::Finish(CURLcode result) {
  HttpAnswer answer;
  answer.status = Status();
  curl_off_t seconds = 0;
  if (curl_easy_getinfo(easy.get(), CURLINFO_RETRY_AFTER, &seconds) == CURLE_OK) answer.retryAfterSeconds = seconds;
  // The body of another status is not looked at, so its length does not matter either.
  if (result == CURLE_OK || (tooLong && answer.status != kHttpOk)) {
    if (answer.status == kHttpOk) answer.body = std::move(received);
  } else {
    answer.transportResult = tooLong ? kAnswerTooLong : static_cast<std::int32_t>(result);
    Explain(answer, [&] { return Problem(result); });
  }
  done(std::move(answer));
}

void HttpTransfer::FinishUnstarted(CURLMcode code) {
  HttpAnswer answer;
  answer.transportResult = kNotStarted;
  Explain(answer, [&] { return std::string(curl_multi_strerror(code)); });
  done(std::move(answer));
}

}  // namespace reference
