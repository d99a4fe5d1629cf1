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

double SecondsToConnectAll(const Phones& phones) {
  const auto begin = Clock::now();
  for (const auto& phone : phones) phone->GetPhoneConnect();
  for (const auto& phone : phones) phone->frontEnd->AwaitFirstFrame();
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

class Line {
 public:
  Line(std::ostream& out, std::size_t count) : out(out), count(static_cast<double>(count)) {}

  void Print(const char* state, const Holdings& before, double seconds) const {
    const Holdings now = CountHoldings();
    const auto each = [this](std::int64_t after, std::int64_t earlier) {
      return static_cast<double>(after - earlier) / count;
    };
    out << "| " << count << " | " << state << " | ";
    if (seconds > 0) out << Printed("%.3f s", seconds) << " | " << Printed("%.2f ms", seconds / count * 1e3);
    if (seconds <= 0) out << "— | —";
    out << " | " << Printed("%.1f KiB", each(now.heapBytes, before.heapBytes) / 1024) << " | "
        << Printed("%.1f KiB", each(now.residentBytes, before.residentBytes) / 1024) << " | " << now.threads << " | "
        << Printed("%.2f", each(now.threads, before.threads)) << " | "
        << Printed("%.2f", each(now.descriptors, before.descriptors)) << " |" << std::endl;
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
  line.Print("idle", before, 0);
  const double without = SecondsToConnectAll(phones);
  line.Print("connected, without the cache", before, without);
  for (const auto& phone : phones) phone->Release();
  line.Print("released", before, 0);
  InitAll(phones);
  const double with = SecondsToConnectAll(phones);
  line.Print("connected, with the cache", before, with);
}

}  // namespace

void PrintScale(bool quick, std::ostream& out) {
  out << "Descriptors allowed: " << RaiseDescriptorLimit() << "\n\n"
      << "| controllers | state | all connected in | a controller | heap each | resident each | threads | threads each "
         "|"
         " descriptors each |\n"
      << "|---:|---|---:|---:|---:|---:|---:|---:|---:|\n";
  const CloudInUse cloud;
  // So that what the process needs once is there before it is counted.
  Phone(cloud.BaseUrl(), "phone-0").ConnectToFirstFrame();
  for (const std::size_t count : {1, 10, 100, 1000}) {
    if (quick && count > 10) break;
    Measure(count, cloud, out);
  }
}

}  // namespace bench
