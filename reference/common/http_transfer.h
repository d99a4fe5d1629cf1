// One HTTP request on its way: a libcurl handle with everything that must outlive it.
//
// Threads: made on any thread, then used by one thread at a time.
// Ownership: owns the handle, the body and the answer so far; leaves the multi handle that it joined when it dies.
#ifndef REFERENCE_COMMON_HTTP_TRANSFER_H
#define REFERENCE_COMMON_HTTP_TRANSFER_H

#include <curl/curl.h>
#include <openssl/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace reference {

struct HttpSettings {
  std::uint32_t connectTimeOutMs = 0;
  std::uint32_t requestTimeOutMs = 0;
  // A PEM file; empty: the system's authorities.
  std::string authorityFile;
  // Empty: none.
  std::string proxy;
  // "Name: value", sent beside those of every request; may be secrets.
  std::vector<std::string> headers;
};

struct HttpAnswer {
  // 0 when an HTTP answer came back, else the CURLcode or a result of http_result.h, and problem says what was wrong.
  std::int32_t transportResult = 0;
  std::uint32_t status = 0;
  // Which the service asks for before the next attempt; 0: it does not say.
  std::int64_t retryAfterSeconds = 0;
  // Filled when transportResult is 0 and the status is 200.
  std::string body;
  // Empty when there was no memory for it.
  std::string problem;
};

// To be called before the first transfer is made. False when libcurl cannot be used.
bool PrepareLibcurl();

class HttpTransfer {
 public:
  using Done = std::function<void(HttpAnswer)>;

  // A POST of a JSON body. Empty when libcurl refuses a setting: a request never goes out with less verification or
  // other bounds than asked for.
  static std::unique_ptr<HttpTransfer> Post(const HttpSettings& settings, const std::string& url, std::string body,
                                            Done done);
  ~HttpTransfer();
  HttpTransfer(const HttpTransfer&) = delete;
  HttpTransfer& operator=(const HttpTransfer&) = delete;

  // The transfer that a handle belongs to.
  static HttpTransfer* Of(CURL* handle);

  CURLMcode Join(CURLM* newMulti);
  // Calls Done. REQUIRES: called once, at most.
  void Finish(CURLcode result);
  void FinishUnstarted(CURLMcode reason);

 private:
  struct EasyDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  };
  struct ListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };

  HttpTransfer(std::string body, Done done);
  bool AddHeader(const char* line);
  bool Configure(const HttpSettings& settings, const std::string& url);
  static std::size_t Receive(char* bytes, std::size_t size, std::size_t count, void* transfer) noexcept;
  // Lets the log say what is wrong with a certificate, of which libcurl tells only that it was refused. Verification
  // itself stays as it is set.
  static CURLcode ListenToVerification(CURL* handle, void* context, void* transfer);
  static int OnVerified(int isGood, X509_STORE_CTX* verification) noexcept;
  std::uint32_t Status() const;
  std::string Problem(CURLcode result) const;

  const std::string body;
  const Done done;
  std::unique_ptr<curl_slist, ListDeleter> headers;
  std::string received;
  bool tooLong = false;
  char reason[CURL_ERROR_SIZE] = "";
  std::string refusedCertificate;
  CURLM* multi = nullptr;
  // Last, so that it goes before what it points to.
  std::unique_ptr<CURL, EasyDeleter> easy;
};

}  // namespace reference

#endif
