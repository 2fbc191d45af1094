#pragma once

#include "benchmarks/Comparison.h"
#include "benchmarks/Results.h"

/// Measures the comparisons, one after the other, the variants of each in turn. A variant that does not do its work as
/// expected ends it with an exception.
void MeasureTimes(const std::vector<Comparison>& comparisons, int runs, Results& results);

/// How many times as long, and as much memory, ten times as many objects take, and memory for an object.
void MeasureGrowth(const std::vector<Comparison>& comparisons, const Settings& settings, Results& results);

/// How many instructions the subject and its floor take in user space, of which, unlike of seconds, there are as many
/// on every run and nearly as many on every machine. Sizes that take minutes under the counter are left out.
void MeasureInstructions(const std::vector<Comparison>& comparisons, const Settings& settings, Results& results);

/// The trace when it is switched off, against a build that has no trace calls: two processes in turn. By processor
/// time, as the trace does not wait for anything.
void MeasureTrace(const Comparison& comparison, const Settings& settings, Results& results);
