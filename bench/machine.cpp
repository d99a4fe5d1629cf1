#include "bench/machine.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <thread>

#include "bench/table.h"

namespace bench {
namespace {

std::string Processor() {
  std::ifstream facts("/proc/cpuinfo");
  for (std::string line; std::getline(facts, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(": ") + 2);
  }
  return "processor of unknown make";
}

}  // namespace

std::string Machine() {
  utsname system{};
  uname(&system);
  double load[1] = {};
  getloadavg(load, 1);
  const double memory = static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
  return Processor() + ", " + std::to_string(std::thread::hardware_concurrency()) + " cores, " +
         Printed("%.0f GiB", memory / (1 << 30)) + ", " + system.sysname + " " + system.release + ", compiler " +
         __VERSION__ + ", load at the end " + Printed("%.1f", load[0]);
}

}  // namespace bench
