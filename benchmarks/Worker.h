#pragma once

#include "benchmarks/Comparison.h"

/// What this program does when it is started by itself, to be measured as a process of its own. Whoever starts it has
/// measured the comparison before, so that all files are there.
namespace Worker {

/// Runs a variant once and prints how many bytes the process grew by at the peak of the run.
void PrintGrowth(const MakeVariant& make);

/// Runs a variant once. Whoever counts instructions finds the run in a function of the name below.
void RunCounted(const MakeVariant& make);
inline constexpr const char* CountedFunction = "lrd_benchmark_counted";

/// Runs a variant for each line of the standard input and prints how many seconds of processor time the run took.
void PrintTimes(const MakeVariant& make);

}  // namespace Worker
