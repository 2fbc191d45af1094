#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "component/QELXVARDOSReason.h"
#include "lrd/Configuration.h"
#include "lrd/Verdict.h"

namespace lrd {

/// One CAD object file below a folder, or a record whose file is gone.
struct CadObject {
  /// Of the file; without one, where it would be.
  std::string path;
  std::string folder;
  /// The file's name; of a record without file the name that the record has.
  std::string name;
  /// The record's name; its file need not be there.
  std::string record;

  Verdict verdict = Verdict::Unknown;
  /// What the module told of its decision.
  QELXVARDOSReason reason{};
  /// Of a damaged object: the place and what is wrong there.
  std::string damage{};
};

/// Asks the module for the verdict on every object. A damaged record costs its own object alone. wantsDetails: whether
/// the reasons are to tell them. tell learns how many objects are decided.
void Decide(std::vector<CadObject>& objects, const Configuration& configuration, bool wantsDetails,
            const std::function<void(std::size_t decided)>& tell);

}  // namespace lrd
