#include "benchmarks/Measurement.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <map>

#include "benchmarks/Child.h"
#include "benchmarks/Parts.h"
#include "benchmarks/Worker.h"

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

/// A sign of life, with the time that has gone by.
void Tell(const std::string& what) {
  static const Clock::time_point Start = Clock::now();
  std::cerr << std::setw(5) << std::lround(SecondsSince(Start)) << " s  " << what << '\n';
}

/// One variant of a comparison through all its runs.
class Side {
 public:
  explicit Side(const MakeVariant& make) : variant_(make()) {}

  double Run() {
    variant_->Prepare();
    const Clock::time_point start = Clock::now();
    variant_->Run();
    const double seconds = SecondsSince(start);
    if (!checked_) {
      variant_->Check();
      checked_ = true;
    }
    return seconds;
  }

 private:
  std::unique_ptr<Variant> variant_;
  bool checked_ = false;
};

const char* const Subject = "subject";

/// A comparison as one benchmark, whose every repetition runs the subject and then its references. All exist only while
/// they are measured, so that no comparison is paid for by another's memory.
class Interleaved {
 public:
  Interleaved(Comparison comparison, int runs) : comparison_(std::move(comparison)), runsLeft_(runs) {}

  void operator()(benchmark::State& state) {
    if (sides_.empty()) {
      Begin();
    }
    for ([[maybe_unused]] const auto& turn : state) {
      for (auto& [name, side] : sides_) {
        state.counters[name] = side.Run();
      }
      state.SetIterationTime(state.counters[Subject].value);
    }
    if (--runsLeft_ == 0) {
      sides_.clear();
    }
  }

 private:
  void Begin() {
    Tell(comparison_.Name());
    sides_.emplace_back(Subject, Side(comparison_.subject));
    for (const Reference& reference : comparison_.references) {
      sides_.emplace_back(comparison_.Name(reference), Side(reference.make));
    }
  }

  Comparison comparison_;
  int runsLeft_;
  std::vector<std::pair<std::string, Side>> sides_;
};

/// Takes the medians out of what Google Benchmark reports.
class MedianTaker : public benchmark::BenchmarkReporter {
 public:
  MedianTaker(const std::vector<Comparison>& comparisons, Results& results)
      : comparisons_(comparisons), results_(results) {}

  bool ReportContext(const Context& /*context*/) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.aggregate_name == "median") {
        Take(run);
      }
    }
  }

 private:
  void Take(const Run& run) {
    const auto comparison = std::find_if(comparisons_.begin(), comparisons_.end(), [&run](const Comparison& one) {
      return one.Name() == run.run_name.function_name;
    });
    const double objects = comparison->objects;
    const double subject = run.counters.at(Subject).value;
    for (const Reference& reference : comparison->references) {
      const std::string name = comparison->Name(reference);
      const double other = run.counters.at(name).value;
      results_.Add({name, subject / other, subject * 1e6 / objects, other * 1e6 / objects,
                    reference.goal == 0 ? Result::Goal::None : Result::Goal::MostRatio, reference.goal});
    }
  }

  const std::vector<Comparison>& comparisons_;
  Results& results_;
};

const std::string Program = "lrd_benchmark";

/// One of our programs with what makes it run the subject of a comparison.
Arguments WorkerFor(const std::string& role, const Comparison& comparison, const Settings& settings,
                    const std::string& program = Program) {
  const std::string objects = std::to_string(comparison.objects);
  return {settings.programs + program, "--data", settings.data, "--sizes", objects,  "--most-recorded", objects,
          "--most-replaced",           objects,  "--role",      role,      "--only", comparison.Name()};
}

/// The growth in bytes of a process that runs a variant once.
double PeakOf(const std::string& role, const Comparison& comparison, const Settings& settings) {
  const std::string output = settings.data + "/growth.out";
  RunProgram(WorkerFor(role, comparison, settings), output);
  return std::stod(Parts::ReadTextFile(output));
}

/// The instructions of a run of the program, or of what it does inside the function alone.
double CountInstructions(const Arguments& program, const std::string& function, const Settings& settings) {
  const std::string log = settings.data + "/instructions.log";
  Arguments counted = {"valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", "--log-file=" + log};
  if (!function.empty()) {
    counted.insert(counted.end(), {"--collect-atstart=no", "--toggle-collect=" + function});
  }
  counted.insert(counted.end(), program.begin(), program.end());
  RunProgram(counted);
  const std::string said = Parts::ReadTextFile(log);
  const std::string marker = "Collected : ";
  const std::size_t at = said.find(marker);
  Expect(at != std::string::npos, "a count of instructions in " + log);
  return std::stod(said.substr(at + marker.size()));
}

double InstructionsOf(const std::string& role, const MakeVariant& make, const Comparison& comparison,
                      const Settings& settings) {
  const Arguments program = make()->Program();
  return program.empty() ? CountInstructions(WorkerFor(role, comparison, settings), Worker::CountedFunction, settings)
                         : CountInstructions(program, "", settings);
}

double Median(std::vector<double> numbers) {
  const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
  std::nth_element(numbers.begin(), middle, numbers.end());
  return *middle;
}

/// What one comparison's subject takes.
struct Usage {
  double seconds = 0;
  double bytes = 0;
  /// What the caller's own tree grows by meanwhile.
  double callersBytes = 0;
};

using Usages = std::map<std::string, Usage>;

/// The system counts pages, and not every page at once; less than this is as good as nothing.
constexpr double LeastBytes = 256 * 1024;

Usage UsageOf(const Comparison& comparison, const Settings& settings, const Results& results) {
  Tell("memory of " + comparison.Name());
  Usage usage;
  usage.seconds = results.Find(comparison.Name())->perObject * comparison.objects;
  usage.bytes = PeakOf("memory", comparison, settings);
  if (comparison.growth) {
    usage.callersBytes = PeakOf("growth", comparison, settings);
    usage.bytes -= usage.callersBytes;
  }
  return usage;
}

void AddGrowth(const Comparison& comparison, const Usage& tenth, const Usage& usage, Results& results) {
  constexpr double Most = 12;
  const auto goal = comparison.objects >= comparison.leastGrowthGoal ? Result::Goal::MostRatio : Result::Goal::None;
  const double objects = comparison.objects;
  results.Add({"growth of time: " + comparison.Name(), usage.seconds / tenth.seconds, usage.seconds / objects,
               10 * tenth.seconds / objects, goal, Most, Result::Kind::TimeGrowth});
  results.Add({"growth of memory: " + comparison.Name(),
               std::max(usage.bytes, LeastBytes) / std::max(tenth.bytes, LeastBytes), usage.bytes / objects,
               10 * tenth.bytes / objects, goal, Most, Result::Kind::MemoryGrowth});
}

/// Held against what the caller's tree grows by, where that grows.
void AddMemory(const Comparison& comparison, const Usage& usage, Results& results) {
  const double objects = comparison.objects;
  const double ratio = usage.callersBytes == 0 ? 0 : usage.bytes / usage.callersBytes;
  results.Add({"memory: " + comparison.Name(), ratio, usage.bytes / objects, usage.callersBytes / objects,
               comparison.mostBytes == 0 ? Result::Goal::None : Result::Goal::MostPerObject, comparison.mostBytes,
               Result::Kind::Memory});
}

}  // namespace

void MeasureTimes(const std::vector<Comparison>& comparisons, int runs, Results& results) {
  for (const Comparison& comparison : comparisons) {
    const int repetitions = runs * comparison.repeats;
    const auto interleaved = std::make_shared<Interleaved>(comparison, repetitions);
    benchmark::RegisterBenchmark(comparison.Name().c_str(), [=](benchmark::State& state) { (*interleaved)(state); })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(repetitions)
        ->ReportAggregatesOnly();
  }
  MedianTaker reporter(comparisons, results);
  benchmark::RunSpecifiedBenchmarks(&reporter);
}

void MeasureGrowth(const std::vector<Comparison>& comparisons, const Settings& settings, Results& results) {
  Usages usages;
  for (const Comparison& comparison : comparisons) {
    usages[comparison.Name()] = UsageOf(comparison, settings, results);
  }
  for (const Comparison& comparison : comparisons) {
    const auto tenth = usages.find(comparison.work + "/" + std::to_string(comparison.objects / 10));
    if (tenth != usages.end()) {
      AddGrowth(comparison, tenth->second, usages[comparison.Name()], results);
    }
  }
  // Of the largest size alone: in small ones what every process needs shows more than the objects do.
  for (const Comparison& comparison : comparisons) {
    if (!usages.contains(comparison.work + "/" + std::to_string(10 * comparison.objects))) {
      AddMemory(comparison, usages[comparison.Name()], results);
    }
  }
}

void MeasureTrace(const Comparison& comparison, const Settings& settings, Results& results) {
  constexpr int Rounds = 25;
  Tell("trace switched off");
  const auto start = [&](const std::string& program) {
    return std::make_unique<Companion>(WorkerFor("times", comparison, settings, program));
  };
  const auto with = start(Program);
  const auto without = start(Program + "_without_trace");
  std::vector<double> timesWith;
  std::vector<double> timesWithout;
  for (int round = 0; round < Rounds; ++round) {
    timesWith.push_back(with->Ask());
    timesWithout.push_back(without->Ask());
  }
  const double objects = comparison.objects;
  const double subject = Median(timesWith) * 1e6 / objects;
  const double other = Median(timesWithout) * 1e6 / objects;
  results.Add({"trace switched off/" + std::to_string(comparison.objects), subject / other, subject, other,
               Result::Goal::MostRatio, 1.02});
}

void MeasureInstructions(const std::vector<Comparison>& comparisons, const Settings& settings, Results& results) {
  constexpr int MostObjects = 10000;
  if (!IsInstalled("valgrind")) {
    Tell("no valgrind here: instructions are not counted");
    return;
  }
  for (const Comparison& comparison : comparisons) {
    const Reference* const floor = comparison.Floor();
    if (comparison.objects > MostObjects || floor == nullptr) {
      continue;
    }
    Tell("instructions of " + comparison.Name());
    const double objects = comparison.objects;
    const double subject = InstructionsOf("instructions", comparison.subject, comparison, settings) / objects;
    const double other = InstructionsOf("floor instructions", floor->make, comparison, settings) / objects;
    results.Add({"instructions: " + comparison.Name(), subject / other, subject, other, Result::Goal::None, 0,
                 Result::Kind::Instructions});
  }
}
