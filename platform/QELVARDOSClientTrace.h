#pragma once

#include <concepts>
#include <functional>
#include <string>
#include <string_view>

#include "platform/HRESULT.h"
#include "platform/ZYMBaseUnknown.h"
#include "platform/ZYMExport.h"
#include "platform/ZYMHandle.h"
#include "platform/ZYMUnicodeString.h"

/// A trace channel. Channels of one name are one channel, whichever source files made them. All are off until a host
/// turns them on; a channel that is off formats nothing and allocates nothing.
class ZYM_EXPORT QELVARDOSClientTrace {
 public:
  /// Receives each line without its line end.
  using Sink = std::function<void(std::string_view channel, std::string_view line)>;

  /// name and label must outlive the channel. output, bufferSize and flag are the framework's; where the lines go is
  /// the host's decision alone.
  QELVARDOSClientTrace(const char* name, const char* label, const char* output, int bufferSize, int flag);
  ~QELVARDOSClientTrace() = default;
  QELVARDOSClientTrace(const QELVARDOSClientTrace&) = delete;
  QELVARDOSClientTrace& operator=(const QELVARDOSClientTrace&) = delete;

  const char* Name() const noexcept { return name_; }
#ifdef QELVARDOS_WITHOUT_TRACE
  static constexpr bool IsOn() noexcept { return false; }
#else
  bool IsOn() const noexcept { return *on_; }
#endif

  /// Writes one message: literal text, strings, integers and handles (as the class name of the component), joined
  /// without a gap; of a function what it answers, which is not asked while the channel is off. One line end at the end
  /// of a message is its own and not doubled.
  template <typename... Pieces>
  void Write(const Pieces&... pieces) const {
    if (IsOn()) {
      std::string line;
      (Append(line, pieces), ...);
      WriteLine(line);
    }
  }

  /// Turns all channels on and sends their lines to sink; an empty sink turns them off.
  static void TurnOn(Sink sink);
  static void TurnOff() { TurnOn(nullptr); }

 private:
  static void Append(std::string& line, std::string_view text) { line += text; }
  static void Append(std::string& line, const std::string& text) { line += text; }
  static void Append(std::string& line, const ZYMUnicodeString& text) { line += text.View(); }
  static void Append(std::string& line, const char* text) { line += text; }
  template <std::integral Number>
  static void Append(std::string& line, Number number) {
    line += std::to_string(number);
  }
  template <typename Interface>
  static void Append(std::string& line, const ZYMHandle<Interface>& handle) {
    line += handle.IsNull() ? "null" : handle->IsA();
  }
  template <std::invocable Function>
  static void Append(std::string& line, const Function& function) {
    Append(line, function());
  }
  void WriteLine(std::string_view line) const;

  const char* name_;
  const bool* on_;
};

/// One step of the trace, open as long as the operation that it names runs.
class ZYM_EXPORT QELVARDOSClientTraceStep {
 public:
  /// name: "Class::Operation"; must outlive the step.
  QELVARDOSClientTraceStep(const QELVARDOSClientTrace& channel, const char* name) : channel_(channel) {
    channel_.Write(name);
  }
  /// The same with the two parts of the name apart, for code that serves several classes.
  QELVARDOSClientTraceStep(const QELVARDOSClientTrace& channel, const char* className, const char* operation)
      : channel_(channel) {
    channel_.Write(className, "::", operation);
  }
  QELVARDOSClientTraceStep(const QELVARDOSClientTraceStep&) = delete;
  QELVARDOSClientTraceStep& operator=(const QELVARDOSClientTraceStep&) = delete;

  /// Writes the return marker with the status and answers the status.
  HRESULT Return(HRESULT status) const { return Close(channel_, status); }
  bool Return(bool answer) const { return Close(channel_, answer ? 1 : 0) != 0; }
  /// The return marker of a step whose object is gone already, for code that walks without recursion.
  static HRESULT Close(const QELVARDOSClientTrace& channel, HRESULT status) {
    channel.Write("returns ", status);
    return status;
  }

 private:
  const QELVARDOSClientTrace& channel_;
};
