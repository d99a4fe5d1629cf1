// The session cache through the library, and the same steps called bare: the same database settings, cipher and codec.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/cloud_in_use.h"
#include "bench/data_directory.h"
#include "bench/manual_times.h"
#include "bench/phone.h"
#include "pass_interface/encryption.h"
#include "session/instance_info_codec.h"
#include "session/session_cipher.h"

namespace bench {
namespace {

using pass_interface::IEncryption;
using pass_interface::InstanceInfo;

void Check(bool ok) {
  if (!ok) throw std::runtime_error("the bare cache fails");
}

class BareCache {
 public:
  BareCache() {
    qv_data_interface::PrepareCacheKeyMaterial(key, iv);
    Check(sqlite3_open_v2((DataDirectory() / "bare.db").string().c_str(), &database,
                          SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr) == SQLITE_OK);
    Check(sqlite3_exec(database,
                       "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; CREATE TABLE session_cache (cache_key TEXT "
                       "PRIMARY KEY, cipher_text TEXT NOT NULL, expiry INTEGER NOT NULL) STRICT",
                       nullptr, nullptr, nullptr) == SQLITE_OK);
    Prepare("SELECT cipher_text FROM session_cache WHERE cache_key = ?1 AND expiry > ?2", select);
    Prepare(
        "INSERT INTO session_cache VALUES (?1, ?2, ?3) ON CONFLICT (cache_key) DO UPDATE SET cipher_text = "
        "excluded.cipher_text, expiry = excluded.expiry",
        upsert);
  }
  ~BareCache() {
    sqlite3_finalize(select);
    sqlite3_finalize(upsert);
    sqlite3_close(database);
  }
  BareCache(const BareCache&) = delete;
  BareCache& operator=(const BareCache&) = delete;

  void Save(const InstanceInfo& info) {
    std::string json;
    qv_data_interface::InstanceInfoToJson(info, json);
    std::vector<unsigned char> sealed;
    Check(IEncryption::Aes256Encrypt(reinterpret_cast<const unsigned char*>(json.data()), static_cast<int>(json.size()),
                                     key.data(), iv.data(), sealed) == 0);
    const std::string text =
        IEncryption::Base64Encode(reinterpret_cast<const char*>(sealed.data()), static_cast<int>(sealed.size()), false);
    BindKey(upsert);
    sqlite3_bind_text(upsert, 2, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
    sqlite3_bind_int64(upsert, 3, info.sessionSignExpireTime);
    Check(sqlite3_step(upsert) == SQLITE_DONE);
    sqlite3_reset(upsert);
  }

  void Load(InstanceInfo& info) {
    BindKey(select);
    sqlite3_bind_int64(select, 2, 1);
    Check(sqlite3_step(select) == SQLITE_ROW);
    const std::string text(reinterpret_cast<const char*>(sqlite3_column_text(select, 0)),
                           static_cast<std::size_t>(sqlite3_column_bytes(select, 0)));
    sqlite3_reset(select);
    const std::string sealed = IEncryption::Base64Decode(text.data(), static_cast<int>(text.size()), false);
    std::vector<unsigned char> plain;
    Check(IEncryption::Aes256Decrypt(reinterpret_cast<const unsigned char*>(sealed.data()),
                                     static_cast<int>(sealed.size()), key.data(), iv.data(), plain) == 0);
    Check(qv_data_interface::ParseInstanceInfo(std::string(plain.begin(), plain.end()).c_str(), info) == 0);
  }

 private:
  void Prepare(const char* sql, sqlite3_stmt*& statement) {
    Check(sqlite3_prepare_v3(database, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) == SQLITE_OK);
  }
  // As long as the library's, which is a cipher text too.
  void BindKey(sqlite3_stmt* statement) const {
    sqlite3_bind_text(statement, 1, cacheKey.data(), static_cast<int>(cacheKey.size()), SQLITE_TRANSIENT);
  }

  const std::string cacheKey = std::string(108, 'k');
  std::vector<unsigned char> key, iv;
  sqlite3* database = nullptr;
  sqlite3_stmt* select = nullptr;
  sqlite3_stmt* upsert = nullptr;
};

BareCache& TheBareCache() {
  static BareCache cache;
  return cache;
}

// Each round begins with a release and an Init that are not measured. The floor has them as well, for they leave the
// processor's caches cold.
template <class Work>
void HitLoop(benchmark::State& state, const Work& work) {
  EmptyTheCache();
  Phone phone;
  phone.ConnectSilently();
  ManualTimes times(state);
  for (auto _ : state) {
    phone.Release();
    phone.Init();
    times.Add(work(phone));
  }
}

void FloorOfHit(benchmark::State& state) {
  TheBareCache().Save(GrantedSession());
  HitLoop(state, [](Phone&) {
    const auto begin = Clock::now();
    InstanceInfo info;
    TheBareCache().Load(info);
    return Clock::now() - begin;
  });
}

void Hit(benchmark::State& state) {
  HitLoop(state, [](Phone& phone) {
    const auto begin = Clock::now();
    phone.GetPhoneConnect();
    return LastCreateWs() - begin;
  });
}

void FloorOfWrite(benchmark::State& state) {
  const InstanceInfo info = GrantedSession();
  ManualTimes times(state);
  for (auto _ : state) {
    const auto begin = Clock::now();
    TheBareCache().Save(info);
    times.Add(Clock::now() - begin);
  }
}

void Write(benchmark::State& state) {
  EmptyTheCache();
  Phone phone;
  phone.ConnectSilently();
  const auto session = std::make_shared<InstanceInfo>(GrantedSession());
  ManualTimes times(state);
  for (auto _ : state) {
    phone.Grant(session);
    times.Add(Clock::now() - phone.frontEnd->lastIspList);
  }
}

BENCHMARK(FloorOfHit)->Name("cache hit/floor")->UseManualTime()->Iterations(30);
BENCHMARK(Hit)->Name("cache hit/library")->UseManualTime()->Iterations(30);
BENCHMARK(FloorOfWrite)->Name("cache write/floor")->UseManualTime()->Iterations(100);
BENCHMARK(Write)->Name("cache write/library")->UseManualTime()->Iterations(100);

}  // namespace
}  // namespace bench
