// Records any response over any disk. Input: a response, a configuration in words, the request that was answered (or
// nothing), then files, divided as FuzzInput.h tells.

#include <algorithm>
#include <set>
#include <string>

#include "fuzz/FuzzInput.h"
#include "platform/QELVARDOSFileTransaction.h"
#include "platform/ZYMIDOMLook.h"
#include "platform/ZYMNullHandleError.h"
#include "recognition/QELXVARDOSRecognitionFactory.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

namespace {

using Config = QELIVARDOSGlobalConfigObject_var;
using Handler = QELXIVARDOSRecognitionHandler_var;
using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;
using CacheInformation = ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico;

Handler RecognitionHandlerFor(const ZYMIDOMElement_var& root, const Config& config) {
  Handler handler;
  QELXVARDOSRecognitionFactory().GetRecognitionHandler(Attribute(root, "cname"), config, root, handler);
  return handler;
}

/// What a client does that keeps records of its own between command and response.
void UseMaps(const Handler& handler, const ZYMIDOMElement_var& root) {
  RecordMap byPhysicalId;
  RecordMap byCadId;
  handler->GetPhidLRDMap(root, byPhysicalId);
  handler->GetCadidLRDMap(root, byPhysicalId, byCadId, {});
  handler->GetCadidLRDMapForCache(root, byPhysicalId, byCadId);
  handler->UpdateLRDObjects(root, byCadId);
  handler->UpdateInformationFromCache(root, byPhysicalId);
}

void Record(const ZYMIDOMElement_var& response, const ZYMIDOMElement_var& request, const Config& config) {
  RecordMap records;
  if (request) {
    const Handler asked = RecognitionHandlerFor(request, config);
    asked->Recognize(request, records);
    asked->UpdateRequestAndLRDObjects(request, records, CacheInformation());
  } else {
    QELXIVARDOSLRDXMLHandler_var reader;
    QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(config, response, reader);
    reader->GetLRDObjects(response, records);
  }
  const Handler handler = RecognitionHandlerFor(response, config);
  handler->CreateOrUpdateLRD(response, records);
  UseMaps(handler, response);
}

/// In a record folder, and not climbing out of it.
bool IsInRecordFolder(std::string_view path) {
  constexpr std::string_view Folder = "/.KORVANTHEMIX/";
  const std::string whole = "/" + std::string(path) + "/";
  const std::size_t folder = whole.find(Folder);
  return folder != std::string::npos && whole.find("/../", folder) == std::string::npos;
}

/// Whether path lies in a record folder or holds one: a folder that is missing is made with all above it.
bool IsNeededFolder(const std::string& path, const MemoryFiles& files) {
  const std::set<std::string>& changed = files.ChangedFolders();
  return IsInRecordFolder(path) || std::any_of(changed.begin(), changed.end(), [&path](const std::string& folder) {
           return folder.starts_with(path + "/") && IsInRecordFolder(folder);
         });
}

void RequireCleanDisk(const MemoryFiles& files) {
  for (const std::string& path : files.ChangedFiles()) {
    Require(IsInRecordFolder(path), "a file outside the record folders was changed");
  }
  for (const std::string& path : files.ChangedFolders()) {
    Require(IsNeededFolder(path, files), "a folder was made that no record needs");
  }
  for (const std::string& path : files.FileNames()) {
    const bool isTemporary = QELVARDOSFileTransaction::IsTemporaryName(path.substr(path.rfind('/') + 1));
    Require(!isTemporary || !files.ChangedFiles().contains(path), "a temporary file is left");
  }
}

void RequireReadable(const MemoryFiles& files) {
  QELXIVARDOSLRDXMLHandler_var reader;
  QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(Config(), reader);
  for (const std::string& path : files.Settled()) {
    QELXIVARDOSLRDObject_var record;
    Require(SUCCEEDED(reader->ReadLRDFile(ZYMUnicodeString(path), record)) && record, "a recorded file does not read");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const LivingCheck living;
  MemoryFiles files;
  Pieces pieces(data, size);
  const ZYMIDOMElement_var response = TreeOf(pieces.Next(), files);
  const Config config = ConfigurationOf(pieces.Next());
  const ZYMIDOMElement_var request = TreeOf(pieces.Next(), files);
  PutFiles(pieces, files);
  if (response) {
    try {
      Record(response, request, config);
    } catch (const ZYMNullHandleError&) {
      // No handler serves the response, or a tree or record lacks what it must have.
    }
    RequireCleanDisk(files);
    RequireReadable(files);
  }
  return 0;
}
