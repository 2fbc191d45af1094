#pragma once

#include <functional>
#include <string>

#include "component/QELXIVARDOSRecognitionHandler.h"
#include "lrd/Configuration.h"
#include "lrd/FileWatch.h"
#include "platform/HRESULT.h"

namespace lrd {

/// How one operation of the module ended.
struct ModuleAnswer {
  HRESULT status = S_OK;
  /// For a negative status: operation, status in hexadecimal and, where known, the file and what is wrong with it.
  std::string refusal;

  bool IsRefusal() const noexcept { return FAILED(status); }
};

/// Calls one operation. what tells the user what is being done and with which file; the module's null-handle error ends
/// the command with it and with the record file that was read last, and so does an ending that the user or the system
/// asked for.
ModuleAnswer CallModule(const char* operation, const std::string& what, const FileWatch& watch,
                        const std::function<HRESULT()>& call);
/// A refusal ends the command.
void Require(const ModuleAnswer& answer);

/// The handler for a tree: command, or the "cname" of the root when command is empty. A tree that no handler serves
/// ends the command.
QELXIVARDOSRecognitionHandler_var RecognitionHandlerFor(QELXVARDOSRecognitionFactory factory,
                                                        const Configuration& configuration,
                                                        const ZYMIDOMElement_var& root, const std::string& command);

/// Recognises the request in file; with update, also puts file names, hash codes and types into it. records receives
/// what the request carries. Answers the refusal that ended it, if any.
ModuleAnswer Recognise(const QELXIVARDOSRecognitionHandler_var& handler, const std::string& file,
                       const ZYMIDOMElement_var& request, bool update, const FileWatch& watch,
                       QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records);

}  // namespace lrd
