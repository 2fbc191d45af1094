#include "tests/memory/AllocationFaults.h"

#include <cerrno>
#include <cstdlib>
#include <new>
#include <pugixml.hpp>

namespace {

using AllocationFaults::Of;

std::int64_t living = 0;
bool counting = false;
Of counted = Of::Program;
std::int64_t left = 0;
bool failsOnward = false;
bool hasFailed = false;

bool Fails(Of kind) {
  if (!counting || kind != counted || left-- > 0) {
    return false;
  }
  counting = failsOnward;
  left = 0;
  return hasFailed = true;
}

template <Of Kind>
void* Allocate(std::size_t size) {
  void* const memory =
      Fails(Kind) ? nullptr : std::malloc(size == 0 ? 1 : size);  // NOLINT(cppcoreguidelines-no-malloc)
  living += memory == nullptr ? 0 : 1;
  errno = memory == nullptr ? ENOMEM : errno;
  return memory;
}

void Free(void* memory) {
  living -= memory == nullptr ? 0 : 1;
  std::free(memory);  // NOLINT(cppcoreguidelines-no-malloc)
}

void* AllocateOrThrow(std::size_t size) {
  void* const memory = Allocate<Of::Program>(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

// Before the first tree is made.
[[maybe_unused]] const bool ofTrees = (pugi::set_memory_management_functions(&Allocate<Of::Trees>, &Free), true);

}  // namespace

void AllocationFaults::FailAfter(std::int64_t successes, Of kind, bool onward) {
  counted = kind;
  left = successes;
  failsOnward = onward;
  hasFailed = false;
  counting = true;
}

bool AllocationFaults::Stop() {
  counting = false;
  return hasFailed;
}

std::int64_t AllocationFaults::Living() { return living; }

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate<Of::Program>(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate<Of::Program>(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Free(memory); }
