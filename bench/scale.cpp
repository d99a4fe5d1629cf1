#include "bench/scale.h"

#include <memory>
#include <string>
#include <vector>

#include "bench/cloud_in_use.h"
#include "bench/phone.h"
#include "bench/process.h"
#include "bench/table.h"

namespace bench {
namespace {

using Phones = std::vector<std::unique_ptr<Phone>>;

void InitAll(const Phones& phones) {
  for (const auto& phone : phones) phone->Init();
}

struct Storm {
  double seconds = 0;
  // When every controller has been told to connect.
  std::int64_t threads = 0;
};

Storm ConnectAll(const Phones& phones) {
  Storm storm;
  const auto begin = Clock::now();
  for (const auto& phone : phones) phone->GetPhoneConnect();
  storm.threads = CountHoldings().threads;
  for (const auto& phone : phones) phone->frontEnd->AwaitFirstFrame();
  storm.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
  return storm;
}

class Line {
 public:
  Line(std::ostream& out, std::size_t count) : out(out), count(static_cast<double>(count)) {}

  void Print(const char* state, const Holdings& before, const Storm& storm = {}) const {
    const Holdings now = CountHoldings();
    const auto each = [this](std::int64_t after, std::int64_t earlier) {
      return static_cast<double>(after - earlier) / count;
    };
    out << "| " << count << " | " << state << " | ";
    if (storm.seconds > 0) {
      out << Printed("%.3f s", storm.seconds) << " | " << Printed("%.2f ms", storm.seconds / count * 1e3) << " | "
          << storm.threads << " | ";
    } else {
      out << "— | — | — | ";
    }
    out << now.threads << " | " << Printed("%.3g", each(now.threads, before.threads)) << " | "
        << Printed("%.3g", each(now.descriptors, before.descriptors)) << " | "
        << Printed("%.0f KiB", each(now.heapBytes, before.heapBytes) / 1024) << " | "
        << Printed("%.0f KiB", each(now.residentBytes, before.residentBytes) / 1024) << " |" << std::endl;
  }

 private:
  std::ostream& out;
  const double count;
};

void Measure(std::size_t count, const CloudInUse& cloud, std::ostream& out) {
  EmptyTheCache();
  const Line line(out, count);
  const Holdings before = CountHoldings();
  Phones phones;
  for (std::size_t i = 0; i < count; ++i) {
    phones.push_back(std::make_unique<Phone>(cloud.BaseUrl(), "phone-" + std::to_string(i)));
    phones.back()->BePatient();
  }
  InitAll(phones);
  line.Print("idle", before);
  const Storm withoutCache = ConnectAll(phones);
  line.Print("connected, without the cache", before, withoutCache);
  for (const auto& phone : phones) phone->Release();
  line.Print("released", before);
  InitAll(phones);
  const Storm withCache = ConnectAll(phones);
  line.Print("connected, with the cache", before, withCache);
}

}  // namespace

void PrintScale(bool quick, std::ostream& out) {
  out << "Descriptors allowed: " << RaiseDescriptorLimit() << "\n\n"
      << "| controllers | state | all connected in | a controller | threads meanwhile | threads then | threads each |"
         " descriptors each | heap each | resident each |\n"
      << "|---:|---|---:|---:|---:|---:|---:|---:|---:|---:|\n";
  const CloudInUse cloud;
  // So that what the process needs once is there before it is counted.
  Phone(cloud.BaseUrl(), "phone-0").ConnectToFirstFrame();
  for (const std::size_t count : {1U, 10U, 100U, 1000U}) {
    if (quick && count > 10) break;
    Measure(count, cloud, out);
  }
}

}  // namespace bench
