// lrd_benchmark: measures the module beside its floors and prints what was found. script/bench builds and calls it.

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <sstream>

#include "benchmarks/Measurement.h"
#include "benchmarks/Parts.h"
#include "benchmarks/Worker.h"

namespace {

struct Options {
  Settings settings;
  /// A part of the names of the comparisons that are measured.
  std::string only;
  std::string json;
  /// What this process is to do for another one of this program; empty when nobody started it for that.
  std::string role;
};

std::vector<int> Numbers(const std::string& list) {
  std::vector<int> numbers;
  std::istringstream text(list);
  for (std::string number; std::getline(text, number, ',');) {
    numbers.push_back(std::stoi(number));
  }
  return numbers;
}

void Take(Options& options, const std::string& name, const std::string& value) {
  Settings& settings = options.settings;
  if (name == "--data") {
    settings.data = std::filesystem::absolute(value).string();
  } else if (name == "--sizes") {
    settings.sizes = Numbers(value);
  } else if (name == "--runs") {
    settings.runs = std::stoi(value);
    Expect(settings.runs >= 2, "at least 2 runs, since the median of one is none");
  } else if (name == "--most-recorded") {
    settings.mostRecorded = std::stoi(value);
  } else if (name == "--most-replaced") {
    settings.mostReplaced = std::stoi(value);
  } else if (name == "--only") {
    options.only = value;
  } else if (name == "--json") {
    options.json = value;
  } else if (name == "--role") {
    options.role = value;
  } else {
    throw std::runtime_error("unknown option " + name);
  }
}

Options ReadOptions(const std::vector<std::string>& arguments) {
  Options options;
  options.settings.programs = arguments.front().substr(0, arguments.front().rfind('/') + 1);
  for (std::size_t i = 1; i + 1 < arguments.size(); i += 2) {
    Take(options, arguments[i], arguments[i + 1]);
  }
  return options;
}

using Comparisons = std::vector<Comparison>;

Comparisons Chosen(Comparisons all, const std::string& only) {
  std::erase_if(all,
                [&only](const Comparison& comparison) { return comparison.Name().find(only) == std::string::npos; });
  return all;
}

Comparisons InThisProcess(const Options& options) {
  Comparisons all;
  for (const auto make : {RecognitionComparisons, TreeComparisons, RecordingComparisons}) {
    std::ranges::move(make(options.settings), std::back_inserter(all));
  }
  return Chosen(std::move(all), options.only);
}

void Serve(const Options& options) {
  const Comparisons all = InThisProcess(options);
  const auto comparison = std::ranges::find_if(all, [&](const Comparison& one) { return one.Name() == options.only; });
  Expect(comparison != all.end(), "a comparison named " + options.only);
  if (options.role == "times") {
    Worker::PrintTimes(comparison->subject);
  } else if (options.role == "instructions") {
    Worker::RunCounted(comparison->subject);
  } else if (options.role == "floor instructions") {
    Worker::RunCounted(comparison->Floor()->make);
  } else {
    Worker::PrintGrowth(options.role == "growth" ? comparison->growth : comparison->subject);
  }
}

/// Where lrd is no longer faster than both of the tools that look at every file, it is not to be much slower.
void AddSlowerOfTools(const Settings& settings, Results& results) {
  for (const int count : settings.sizes) {
    const Result* hg = results.Find("lrd process to hg status/" + std::to_string(count));
    const Result* rsync = results.Find("lrd process to rsync -n -a/" + std::to_string(count));
    if (hg != nullptr && rsync != nullptr && count > 10000) {
      Result slower = hg->ratio < rsync->ratio ? *hg : *rsync;
      slower.name = "lrd process to the slower of both/" + std::to_string(count);
      slower.goal = Result::Goal::MostRatio;
      slower.most = 1.3;
      results.Add(slower);
    }
  }
}

void MeasureAll(const Options& options, Results& results) {
  const Comparisons here = InThisProcess(options);
  Comparisons all = here;
  std::ranges::move(Chosen(ProcessComparisons(options.settings), options.only), std::back_inserter(all));
  Expect(!all.empty(), "nothing to measure has \"" + options.only + "\" in its name");
  MeasureTimes(all, options.settings.runs, results);
  AddSlowerOfTools(options.settings, results);
  const auto traced = std::ranges::find_if(here, [](const Comparison& one) { return one.Name() == "recognize/10000"; });
  if (traced != here.end()) {
    MeasureTrace(*traced, options.settings, results);
  }
  MeasureGrowth(here, options.settings, results);
  MeasureInstructions(all, options.settings, results);
}

void PrintCircumstances() {
  double load = 0;
  getloadavg(&load, 1);
  std::cout << "\nLoad over the last minute: " << load
            << ". Replacing files (changed records) varies most: disks differ in what it costs to free a block.\n";
}

int Run(const std::vector<std::string>& arguments) {
  const Options options = ReadOptions(arguments);
  if (!options.role.empty()) {
    Serve(options);
    return 0;
  }
  std::filesystem::create_directories(options.settings.data);
  Results results;
  MeasureAll(options, results);
  std::cout << results.Table();
  PrintCircumstances();
  if (!options.json.empty()) {
    Parts::WriteTextFile(options.json, results.Json());
  }
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    return Run({arguments, arguments + count});
  } catch (const std::exception& failure) {
    std::cerr << "lrd_benchmark: " << failure.what() << '\n';
    return 1;
  }
}
