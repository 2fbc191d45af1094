#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/ahead/Listings.h"
#include "platform/ahead/Workers.h"

/// What the contents that are held take, or may take once they are read.
using HeldBytes = std::atomic<std::size_t>;

/// A look that was told of, and what it saw.
struct AheadLook {
  /// Waiting: nobody took it yet. Changed: it runs, and sees perhaps what is not so any more. Gone: it has no result
  /// (any more), so it is to be taken by whoever asks.
  enum class State : int { Waiting, Running, Changed, Done, Gone };

  QELVARDOSFileLook look;
  QELVARDOSFileFacts facts;
  std::error_code error;
  std::string bytes;
  std::atomic<State> state = State::Waiting;
};

/// Looks that were told of together. The caller, who owns them, asks for them one after another while others take them.
class Notice : public Work {
 public:
  Notice(QELVARDOSFileLayer& disk, std::vector<QELVARDOSFileLook> looks, HeldBytes& held, Listings& listings);
  ~Notice() override;

  /// The look, waited for when it was begun, if it has a result; it is the caller's alone then. Null when it was not
  /// told of or is to be taken now.
  AheadLook* Take(const std::string& path, QELVARDOSFileLook::Kind kind, bool& wasTold);
  /// Forgets what was seen at a path and below it. Called by any thread.
  void Forget(std::string_view path);
  /// Nobody asks any more.
  void Pass() noexcept { isPassed_ = true; }

  bool DoNext() noexcept override;

 private:
  AheadLook* Find(const std::string& path, QELVARDOSFileLook::Kind kind);
  void LookUp(AheadLook& look);
  void Read(AheadLook& look);

  QELVARDOSFileLayer& disk_;
  HeldBytes& held_;
  Listings& listings_;
  const std::size_t count_;
  const std::unique_ptr<AheadLook[]>
      looks_;  // NOLINT(cppcoreguidelines-avoid-c-arrays): they can be neither copied nor moved
  /// Where the caller is: he mostly asks in the order in which he told.
  std::size_t asked_ = 0;
  std::atomic<std::size_t> next_ = 0;
  std::atomic<bool> isPassed_ = false;
};
