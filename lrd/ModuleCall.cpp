#include "lrd/ModuleCall.h"

#include <array>
#include <cstdio>

#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "lrd/XmlFile.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMNullHandleError.h"

namespace lrd {

namespace {

std::string InHexadecimal(HRESULT status) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "0x%08x", static_cast<unsigned>(status));
  return text.data();
}

std::string Reason(const FileWatch& watch) {
  const std::string& reason = QELVARDOSSystemUtils::LastError();
  return reason.empty() ? watch.LastRead() : reason;
}

}  // namespace

ModuleAnswer CallModule(const char* operation, const std::string& what, const FileWatch& watch,
                        const std::function<HRESULT()>& call) {
  QELVARDOSSystemUtils::SetLastError("");
  try {
    ModuleAnswer answer{call(), {}};
    if (answer.status == E_ABORT) {
      EndWhenAsked();
    }
    if (answer.IsRefusal()) {
      const std::string reason = Reason(watch);
      answer.refusal =
          std::string(operation) + ": " + InHexadecimal(answer.status) + (reason.empty() ? "" : " (" + reason + ")");
    }
    return answer;
  } catch (const ZYMNullHandleError& error) {
    const std::string reading = watch.LastRead().empty() ? "" : ", reading " + watch.LastRead();
    throw HostError(NullHandle, what + reading + ": " + error.what());
  }
}

void Require(const ModuleAnswer& answer) {
  if (answer.IsRefusal()) {
    throw HostError(ModuleRefused, answer.refusal);
  }
}

QELXIVARDOSRecognitionHandler_var RecognitionHandlerFor(QELXVARDOSRecognitionFactory factory,
                                                        const Configuration& configuration,
                                                        const ZYMIDOMElement_var& root, const std::string& command) {
  QELXIVARDOSRecognitionHandler_var handler;
  factory.GetRecognitionHandler(command.empty() ? Attribute(root, "cname").Str() : command, configuration.object, root,
                                handler);
  if (handler.IsNull()) {
    throw HostError(ModuleRefused, "no recognition handler serves <" + NodeName(root).Str() + ">");
  }
  return handler;
}

ModuleAnswer Recognise(const QELXIVARDOSRecognitionHandler_var& handler, const std::string& file,
                       const ZYMIDOMElement_var& request, bool update, const FileWatch& watch,
                       QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) {
  ModuleAnswer recognised =
      CallModule("Recognize", "recognising " + file, watch, [&] { return handler->Recognize(request, records); });
  if (!update || recognised.IsRefusal()) {
    return recognised;
  }
  const ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico noCache;
  return CallModule("UpdateRequestAndLRDObjects", "updating " + file, watch,
                    [&] { return handler->UpdateRequestAndLRDObjects(request, records, noCache); });
}

}  // namespace lrd
