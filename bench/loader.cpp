// Loads the library named by its argument and prints how many nanoseconds that took.
#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  if (argc != 2) return EXIT_FAILURE;
  const auto begin = std::chrono::steady_clock::now();
  const void* library = dlopen(argv[1], RTLD_NOW);
  const auto end = std::chrono::steady_clock::now();
  if (library == nullptr) {
    std::fprintf(stderr, "qv_bench_loader: %s\n", dlerror());
    return EXIT_FAILURE;
  }
  std::printf("%lld\n", static_cast<long long>(std::chrono::nanoseconds(end - begin).count()));
  return EXIT_SUCCESS;
}
