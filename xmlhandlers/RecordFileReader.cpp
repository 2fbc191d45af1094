#include "xmlhandlers/RecordFileReader.h"

#include <new>
#include <utility>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMIDOMLook.h"
#include "records/IncompleteRecord.h"
#include "records/Nesting.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDFactory.h"
#include "records/QELXVARDOSLRDVersionInfo.h"

QELXVARDOS_TRACED_HERE;

namespace {

using Record = QELXIVARDOSLRDObject_var;

const ZYMUnicodeStringList ParserOptions{"ZYMDoValidation"};
const ZYMUnicodeStringList ParserValues{"false"};

ZYM_LOADED_AS(Tables)
const ZYMUnicodeStringList RecordElements{Word::Object, Word::Structure, Word::Rel, Word::Composition};

/// Whether a failure to read says what is wrong with a file that is there; after any other it is not known.
bool SaysDamaged(const std::error_code& error) {
  return error == std::errc::is_a_directory || error == std::errc::not_supported || error == std::errc::file_too_large;
}

HRESULT Failed(HRESULT status) {
  QELVARDOSSystemUtils::LogZYMGetLastError(status);
  Trace.Write("Failed in ZYMIXMLDOMDocumentBuilder::Parse");
  return E_FAIL;
}

HRESULT Failed(const ZYMUnicodeString& path, const std::error_code& error) {
  QELVARDOSSystemUtils::SetLastError(path.Str() + ": " + error.message());
  return Failed(E_FAIL);
}

/// Reads the records of one document.
class DocumentReader {
 public:
  explicit DocumentReader(ZYMUnicodeString version) : version_(std::move(version)) {}

  /// The record of an element with all that is nested in it; null for an element that holds none. A nesting that is too
  /// deep clears IsWithinDepth.
  Record Read(const ZYMIDOMElement_var& element, int depth = 0) {
    Record record;
    factory_.GetLRDObjectFromLRDFile(element, version_, record);
    if (record) {
      ForEachChildElement(element, RecordElements, [this, &record, depth](const ZYMIDOMElement_var& child) {
        return AddNested(record, child, depth + 1);
      });
    }
    return record;
  }

  bool IsWithinDepth() const { return withinDepth_; }

 private:
  bool AddNested(const Record& parent, const ZYMIDOMElement_var& element, int depth) {
    withinDepth_ = withinDepth_ && depth <= DeepestNesting;
    if (!withinDepth_) {
      return false;
    }
    const Record nested = Read(element, depth);
    if (nested) {
      parent->AddChild(nested);
      const ZYMUnicodeString name = NodeName(element);
      if (name == Word::Rel) {
        parent->AddChildRelationship(nested);
      } else if (name == Word::Structure) {
        parent->AddRelatedChild(nested);
      }
    }
    return withinDepth_;
  }

  QELXVARDOSLRDFactory factory_;
  ZYMUnicodeString version_;
  bool withinDepth_ = true;
};

}  // namespace

HRESULT RecordFileReader::Read(const ZYMUnicodeString& path, QELXIVARDOSLRDObject_var& record) {
  std::string bytes;
  std::error_code error = Load(path, bytes);
  return Take(path, std::move(bytes), error, record);
}

// An object without a record is common and a failed attempt to open one is cheap, so the file is not asked for first.
HRESULT RecordFileReader::ReadIfPresent(const ZYMUnicodeString& path, QELXIVARDOSLRDObject_var& record,
                                        std::error_code& error) {
  std::string bytes;
  unknownVersion_.Assign({});
  error = Load(path, bytes);
  const bool isMissing = error && QELVARDOSFileLayer::MeansMissing(error, path.View());
  return isMissing ? S_OK : Take(path, std::move(bytes), error, record);
}

bool RecordFileReader::LeavesOpen(const std::error_code& error, const ZYMUnicodeString& path) {
  return error && !SaysDamaged(error) && !QELVARDOSFileLayer::MeansMissing(error, path.View());
}

std::error_code RecordFileReader::Load(const ZYMUnicodeString& path, std::string& bytes) {
  if (builder_.IsNull()) {
    ZYMRaiseNullHandle(ZYMIXMLDOMDocumentBuilder::ClassName());
  }
  try {
    QELVARDOSFileLayer& layer = QELVARDOSFileLayer::Current();
    return keepsFacts_ ? layer.ReadWithFacts(path.Str(), bytes, largest_, facts_)
                       : layer.Read(path.Str(), bytes, largest_);
  } catch (const std::bad_alloc&) {
    return std::make_error_code(std::errc::not_enough_memory);
  }
}

/// error: why the file could not be read; memory that runs out on the way is one more reason.
HRESULT RecordFileReader::Take(const ZYMUnicodeString& path, std::string bytes, std::error_code& error,
                               QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, "QELXVARDOSLRDXMLHandler::ReadLRDFile");
  if (error) {
    return step.Return(Failed(path, error));
  }
  try {
    ZYMIDOMDocument_var document;
    const HRESULT status = builder_->ParseContent(path, std::move(bytes), ParserOptions, ParserValues, document);
    if (status == E_OUTOFMEMORY) {
      throw std::bad_alloc();
    }
    if (FAILED(status) || document.IsNull()) {
      return step.Return(Failed(status));
    }
    const HRESULT taken = TakeDocument(path, document, record);
    return step.Return(FAILED(taken) ? taken : status);
  } catch (const IncompleteRecord& incomplete) {
    QELVARDOSSystemUtils::SetLastError(path.Str() + ": " + incomplete.Reason());
    throw;
  } catch (const std::bad_alloc&) {
    error = std::make_error_code(std::errc::not_enough_memory);
  }
  return step.Return(Failed(path, error));
}

HRESULT RecordFileReader::TakeDocument(const ZYMUnicodeString& path, const ZYMIDOMDocument_var& document,
                                       QELXIVARDOSLRDObject_var& record) {
  ZYMIDOMElement_var root;
  if (const HRESULT status = document->getDocumentElement(root); FAILED(status)) {
    return status;
  }
  if (root.IsNull()) {
    return S_OK;
  }
  const ZYMUnicodeString version = Attribute(root, Word::Version);
  Trace.Write("LRDVersion : ", version);
  DocumentReader reader(version);
  const Record read = reader.Read(root);
  if (!reader.IsWithinDepth()) {
    QELVARDOSSystemUtils::SetLastError(path.Str() + ": records are nested too deep");
    return Failed(E_FAIL);
  }
  if (read) {
    record = read;
  } else {
    TellOfUnknownFormat(path, root);
  }
  return S_OK;
}

void RecordFileReader::TellOfUnknownFormat(const ZYMUnicodeString& path, const std::string& bytes) {
  ZYMIDOMDocument_var document;
  ZYMIDOMElement_var root;
  const std::string before = QELVARDOSSystemUtils::LastError();
  if (SUCCEEDED(builder_->ParseContent(path, std::string(bytes), ParserOptions, ParserValues, document)) && document) {
    document->getDocumentElement(root);
  }
  QELVARDOSSystemUtils::SetLastError(before);
  if (root) {
    TellOfUnknownFormat(path, root);
  }
}

void RecordFileReader::TellOfUnknownFormat(const ZYMUnicodeString& path, const ZYMIDOMElement_var& root) {
  const ZYMUnicodeString version = Attribute(root, Word::Version);
  if (observer_ != nullptr && NodeName(root) == Word::Object && !version.IsEmpty() &&
      QELXVARDOSLRDVersionInfo().GetClassName(version, KindName::Full).IsEmpty()) {
    unknownVersion_ = version;
    observer_->UnknownFormat(path, version);
  }
}
