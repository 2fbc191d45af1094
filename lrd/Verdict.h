#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "lrd/Console.h"
#include "platform/ZYMIDOM.h"

namespace lrd {

/// What became of an object. Damaged: its record cannot be taken, or a place that the verdict rests on could not be
/// looked at. FileGone: there is a record alone. NotReached: recognition ended before it.
enum class Verdict { Exists, Modified, Unknown, Damaged, FileGone, NotReached };

/// How a verdict is printed.
struct VerdictWord {
  char letter;
  const char* status;
  Colour colour;
};
const VerdictWord& WordFor(Verdict verdict);

/// Of an object that was recognised, by its "status".
Verdict VerdictOf(const ZYMUnicodeString& status);

/// Counts the verdicts on the objects of a request.
class VerdictCounts {
 public:
  VerdictCounts() = default;
  explicit VerdictCounts(const ZYMIDOMElement_var& request);
  void Add(Verdict verdict);
  /// "120 objects: 97 EXISTS, 20 MODIFIED, 3 UNKNOWN"
  std::string InWords() const;

 private:
  std::array<std::size_t, 3> counts_{};
  std::size_t all_ = 0;
};

}  // namespace lrd
