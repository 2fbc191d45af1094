// Recognises any request over any disk. Input: a request, a configuration in words, then files, divided as FuzzInput.h
// tells.

#include <string>
#include <vector>

#include "fuzz/FuzzInput.h"
#include "platform/ZYMIDOMLook.h"
#include "platform/ZYMNullHandleError.h"
#include "recognition/QELXVARDOSRecognitionFactory.h"

namespace {

using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;
using CacheInformation = ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico;

constexpr const char* Unvisited = "not visited";

/// The objects that are to be recognised, each marked as one that was not visited yet.
std::vector<ZYMIDOMElement_var> MarkedObjects(const ZYMIDOMElement_var& request) {
  std::vector<ZYMIDOMElement_var> objects;
  if (const ZYMIDOMElement_var list = FirstElement(request, "cadobjectlist"); list) {
    ForEachChildElement(list, [&objects](const ZYMIDOMElement_var& object) {
      object->setAttribute("status", Unvisited);
      objects.push_back(object);
      return true;
    });
  }
  return objects;
}

/// Objects are visited in order, and all of them unless something failed.
void RequireVerdicts(const std::vector<ZYMIDOMElement_var>& objects, bool all) {
  bool visited = true;
  for (const ZYMIDOMElement_var& object : objects) {
    const ZYMUnicodeString status = Attribute(object, "status");
    const bool isVerdict = status == "EXISTS" || status == "MODIFIED" || status == "UNKNOWN" || status == "";
    Require(isVerdict || status == Unvisited, "a status that is no verdict");
    Require(visited || !isVerdict, "an object was passed over");
    visited = visited && isVerdict;
  }
  Require(visited || !all, "an object was not visited");
}

/// Answers the tree as recognition leaves it.
std::string Recognize(std::string_view text, const QELIVARDOSGlobalConfigObject_var& config, MemoryFiles& files) {
  const ZYMIDOMElement_var request = TreeOf(text, files);
  if (request.IsNull()) {
    return {};
  }
  const std::vector<ZYMIDOMElement_var> objects = MarkedObjects(request);
  QELXIVARDOSRecognitionHandler_var handler;
  QELXVARDOSRecognitionFactory().GetRecognitionHandler(Attribute(request, "cname"), config, request, handler);
  RecordMap records;
  bool all = false;
  try {
    all = SUCCEEDED(handler->Recognize(request, records));
    handler->UpdateRequestAndLRDObjects(request, records, CacheInformation());
  } catch (const ZYMNullHandleError&) {
    // The request or a record lacks what it must have; what was recognised before stands.
  }
  RequireVerdicts(objects, all);
  return TextOf(request);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const LivingCheck living;
  MemoryFiles files;
  Pieces pieces(data, size);
  const std::string_view request = pieces.Next();
  const QELIVARDOSGlobalConfigObject_var config = ConfigurationOf(pieces.Next());
  PutFiles(pieces, files);
  const std::string first = Recognize(request, config, files);
  Require(Recognize(request, config, files) == first, "the same request is recognised differently");
  Require(files.ChangedFiles().empty() && files.ChangedFolders().empty(), "recognition changed something on disk");
  return 0;
}
