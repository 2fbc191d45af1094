#pragma once

#include <utility>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"

/// Gives the file layer notice of the looks that items ahead will need, for whoever goes through many items in order.
/// Made inside QELVARDOSFileLookups, on the layer that is in use then. Where no notice is wanted it costs a question an
/// item.
class QELVARDOSFileNotices {
 public:
  using Looks = std::vector<QELVARDOSFileLook>;

  QELVARDOSFileNotices() : layer_(QELVARDOSFileLayer::Current()) {}

  /// Called before each item, by its number. add(number, looks) adds the looks of one, in the order in which they will
  /// be taken, and answers false where there is no such item; it is asked for each number once and in order, but for
  /// those that are passed already.
  template <typename Add>
  void Before(int item, const Add& add) {
    if (item + Window / 2 >= told_ && !isAllTold_ && layer_.WantsNotice()) {
      Tell(item, add);
    }
  }

 private:
  /// Enough to keep many looks going, and little enough to hold.
  static constexpr int Window = 256;

  template <typename Add>
  void Tell(int item, const Add& add) {
    Looks looks;
    for (told_ = told_ < item ? item : told_; told_ < item + Window && !isAllTold_; ++told_) {
      isAllTold_ = !add(told_, looks);
    }
    if (!looks.empty()) {
      layer_.LookAhead(std::move(looks));
    }
  }

  QELVARDOSFileLayer& layer_;
  /// The first item of which no notice was given.
  int told_ = 0;
  bool isAllTold_ = false;
};
