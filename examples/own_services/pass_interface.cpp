// A service that grants every session at once, and asks no cloud for it.
#include "pass_interface/pass_interface.h"

#include <chrono>

#include "pass_interface/encryption.h"
#include "worker.h"

namespace pass_interface {
namespace {

class Service final : public IPassInterface {
 public:
  std::int32_t Initialise(const char*, const char*, const char*, const char*, const char*,
                          std::shared_ptr<IPassInterfaceNotic> notic, void*, std::uint32_t, std::uint32_t,
                          bool) override {
    const std::lock_guard<std::mutex> lock(mutex);
    sink = notic;  // weakly: the sink owns this service
    return 0;
  }
  void Stop() override { worker.Stop(); }
  void Reserved3() override {}

  std::int32_t RequestPhoneConnect(const char*, const char*, const char*, void*) override {
    using namespace std::chrono;
    const auto answer = std::make_shared<InstanceInfo>();
    answer->code = 0;
    answer->sessionId = "own-session";
    answer->sessionSignExpireTime =
        duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count() + 3600000;
    answer->endpoints.webSocketDomain = "phone.example";
    answer->endpoints.webSocketPort = 443;
    std::weak_ptr<IPassInterfaceNotic> weakSink;
    {
      const std::lock_guard<std::mutex> lock(mutex);
      weakSink = sink;
    }
    // Never from inside this call: the answer comes on the service's own thread.
    const bool issued = worker.Start([=](Worker::Gate& gate) {
      gate.Tell(weakSink, [&](IPassInterfaceNotic& notic) { notic.OnPhoneConnectRsp(0, 200, answer); });
    });
    return issued ? 0 : -1;
  }
  std::int32_t RequestRefreshSession(const char*, const char*, std::int32_t) override { return -1; }

 private:
  std::mutex mutex;
  std::weak_ptr<IPassInterfaceNotic> sink;
  Worker worker;
};

}  // namespace

std::shared_ptr<IPassInterface> IPassInterface::Create() {
  return std::make_shared<Service>();
}

// No cipher: -1 is a failure that the library copes with, by leaving the session cache out.
int IEncryption::Aes256Encrypt(const unsigned char*, int, const unsigned char*, const unsigned char*,
                               std::vector<unsigned char>&) {
  return -1;
}
int IEncryption::Aes256Decrypt(const unsigned char*, int, const unsigned char*, const unsigned char*,
                               std::vector<unsigned char>&) {
  return -1;
}
std::string IEncryption::Base64Encode(const char*, int, bool) {
  return {};
}
std::string IEncryption::Base64Decode(const char*, int, bool) {
  return {};
}

}  // namespace pass_interface
