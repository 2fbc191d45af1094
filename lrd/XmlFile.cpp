#include "lrd/XmlFile.h"

#include <filesystem>
#include <functional>
#include <string_view>
#include <system_error>

#include "lrd/Console.h"
#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "lrd/HostSystem.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSPath.h"
#include "platform/QELVARDOSSystemUtils.h"

namespace lrd {

namespace {

void Serialize(const ZYMIDOMNode_var& node, const std::function<bool(std::string_view)>& sink) {
  bool stopped = false;
  const HRESULT status = MakeDocumentBuilder()->Serialize(node, [&](std::string_view text) {
    stopped = !sink(text);
    return !stopped;
  });
  if (FAILED(status) && !stopped) {
    throw HostError(ModuleRefused, "writing the document: " + QELVARDOSSystemUtils::LastError());
  }
}

std::string TextOf(const ZYMIDOMNode_var& node) {
  std::string text;
  Serialize(node, [&text](std::string_view piece) {
    text += piece;
    return true;
  });
  return text;
}

/// A link to a file stays a link: the file is replaced.
std::string BehindLinks(const std::string& file) {
  std::error_code error;
  std::error_code none;
  const std::filesystem::path resolved = std::filesystem::canonical(file, error);
  if (!error) {
    return resolved.string();
  }
  if (!QELVARDOSFileLayer::MeansMissing(error, file) && std::filesystem::is_symlink(file, none)) {
    throw HostError(UnusableInput, file + ": " + error.message());
  }
  return file;
}

void RefuseWhereNoFileCanBe(const std::string& file) {
  const std::string folder = QELVARDOSPath(file).GetDirName().ToString().Str();
  const QELVARDOSFileFacts facts = QELVARDOSFileLayer::Current().Stat(folder.empty() ? "." : folder);
  if (facts.error) {
    throw HostError(UnusableInput, file + ": " + facts.error.message());
  }
  if (facts.kind != QELVARDOSFileFacts::Kind::Folder) {
    throw HostError(UnusableInput, file + ": there is no folder " + folder);
  }
  if (const std::error_code refusal = WouldRefuseFileIn(folder)) {
    throw HostError(UnusableInput, file + ": " + refusal.message());
  }
}

}  // namespace

ZYMIXMLDOMDocumentBuilder_var MakeDocumentBuilder() {
  ZYMIXMLDOMDocumentBuilder_var builder;
  CreateZYMIXMLDOMDocumentBuilder(builder);
  return builder;
}

ZYMIDOMDocument_var ParseXml(const std::string& file) {
  ZYMIDOMDocument_var document;
  if (FAILED(MakeDocumentBuilder()->Parse(file, {"ZYMDoValidation"}, {"false"}, document))) {
    throw HostError(UnusableInput, QELVARDOSSystemUtils::LastError());
  }
  return document;
}

XmlOutput::XmlOutput(const std::string& file) {
  if (file == "-") {
    return;
  }
  if (file.empty()) {
    throw HostError(UnusableInput, "the name of the output file is empty");
  }
  file_ = BehindLinks(file);
  const QELVARDOSFileFacts facts = QELVARDOSFileLayer::Current().Stat(file_);
  if (facts.kind == QELVARDOSFileFacts::Kind::Folder) {
    throw HostError(UnusableInput, file + ": is a folder");
  }
  isDevice_ = facts.kind == QELVARDOSFileFacts::Kind::Other;
  if (!isDevice_) {
    RefuseWhereNoFileCanBe(file_);
  }
}

void XmlOutput::Write(const ZYMIDOMDocument_var& document) const {
  if (file_.empty()) {
    Serialize(document, [](std::string_view text) {
      EndWhenAsked();
      return Print(text);
    });
  } else if (isDevice_) {
    // A device or a pipe is written to; only a file can be replaced.
    const std::error_code error = WriteToDevice(file_, TextOf(document));
    if (error == std::errc::operation_canceled) {
      EndWhenAsked();
    }
    if (error && error != std::errc::broken_pipe) {
      throw HostError(UnusableInput, file_ + ": " + error.message());
    }
  } else if (FAILED(MakeDocumentBuilder()->Write(document, file_, {"ZYMEncoding"}, {"UTF-8"}))) {
    throw HostError(UnusableInput, QELVARDOSSystemUtils::LastError());
  }
}

}  // namespace lrd
