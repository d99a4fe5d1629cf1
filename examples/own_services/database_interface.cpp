// A session cache in memory: it lasts as long as the process.
#include "database_interface/database_interface.h"

#include <map>
#include <mutex>

namespace database_interface {
namespace {

class Database final : public IDatabaseInterface {
 public:
  void Reserved1() override {}
  void Reserved2() override {}
  void Reserved3() override {}
  void Reserved4() override {}
  void Reserved5() override {}
  void Reserved6() override {}
  void Reserved7() override {}
  void Reserved8() override {}
  void Reserved9() override {}
  void Reserved10() override {}
  void Reserved11() override {}
  void Reserved12() override {}
  void Reserved13() override {}
  void Reserved14() override {}
  void Reserved15() override {}
  void Reserved16() override {}

  std::int32_t SaveSessionCache(const char* cacheKey, const char* cipherText, std::int64_t expiry) override {
    const std::lock_guard<std::mutex> lock(mutex);
    rows[cacheKey] = {cipherText, expiry};
    return 0;
  }
  std::int32_t LoadSessionCache(const char* cacheKey, std::int64_t minimumExpiry, std::string& cipherText) override {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto row = rows.find(cacheKey);
    if (row == rows.end() || row->second.expiry <= minimumExpiry) return 0;
    cipherText = row->second.cipherText;
    return 1;
  }

 private:
  struct Row {
    std::string cipherText;
    std::int64_t expiry;
  };
  std::mutex mutex;
  std::map<std::string, Row> rows;
};

}  // namespace

std::shared_ptr<IDatabaseInterface> IDatabaseInterface::GetDbInstance() {
  static const auto* const instance = new std::shared_ptr<IDatabaseInterface>(std::make_shared<Database>());
  return *instance;
}

}  // namespace database_interface
