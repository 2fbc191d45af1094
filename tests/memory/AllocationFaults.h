#pragma once

#include <cstdint>

/// The allocations of this program: operator new of the program and its libraries, and those of the tree library.
namespace AllocationFaults {

enum class Of { Program, Trees };

/// How many allocations of that kind succeed from now on before one fails. onward: those behind it fail too.
void FailAfter(std::int64_t successes, Of kind, bool onward);
/// Ends what FailAfter began. Answers whether an allocation failed.
bool Stop();
/// How many allocations have not been given back.
std::int64_t Living();

}  // namespace AllocationFaults
