#include "benchmarks/Worker.h"

#include <malloc.h>

#include <ctime>
#include <fstream>
#include <iostream>

// A plain name, by which the counter of instructions finds it.
extern "C" [[gnu::noinline]] void lrd_benchmark_counted(Variant& variant);
void lrd_benchmark_counted(Variant& variant) { variant.Run(); }

namespace Worker {

namespace {

/// A field of /proc/self/status, in bytes.
long StatusField(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == name + ":") {
      long kibibytes = 0;
      status >> kibibytes;
      return kibibytes * 1024;
    }
  }
  throw std::runtime_error("/proc/self/status has no " + name);
}

/// Lets the peak begin anew at what is in use now.
void ForgetPeak() {
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << 5;
}

double ProcessorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

}  // namespace

void PrintGrowth(const MakeVariant& make) {
  // Large blocks are to go back to the system as soon as they are free, whatever was freed before.
  mallopt(M_MMAP_THRESHOLD, 128 * 1024);
  const std::unique_ptr<Variant> variant = make();
  variant->Prepare();
  ForgetPeak();
  const long before = StatusField("VmRSS");
  variant->Run();
  std::cout << StatusField("VmHWM") - before << std::endl;
}

void RunCounted(const MakeVariant& make) {
  const std::unique_ptr<Variant> variant = make();
  variant->Prepare();
  lrd_benchmark_counted(*variant);
}

void PrintTimes(const MakeVariant& make) {
  const std::unique_ptr<Variant> variant = make();
  for (std::string line; std::getline(std::cin, line);) {
    variant->Prepare();
    const double start = ProcessorSeconds();
    variant->Run();
    std::cout << ProcessorSeconds() - start << std::endl;
  }
}

}  // namespace Worker
