#include <map>
#include <memory>
#include <utility>

#include "lrd/Command.h"
#include "lrd/Console.h"
#include "lrd/DryRunLayer.h"
#include "lrd/Endings.h"
#include "lrd/FormatWatch.h"
#include "lrd/HostError.h"
#include "lrd/JsonText.h"
#include "lrd/ModuleCall.h"
#include "lrd/Printable.h"
#include "lrd/XmlFile.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

namespace lrd {

namespace {

using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

struct Options {
  std::string response;
  std::string request;
  std::string configuration;
  std::string command;
  bool dryRun = false;
  bool rawPaths = false;
  bool json = false;
};

/// The handler that the module chooses for the response; null when none serves it.
QELXIVARDOSLRDXMLHandler_var ChooseHandler(const Configuration& configuration, const ZYMIDOMElement_var& response) {
  QELXIVARDOSLRDXMLHandler_var handler;
  QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(configuration.object, response, handler);
  return handler;
}

/// Only a check-in updates the records of a request; every other response makes its own. Which response is one, the
/// module has decided with its handler.
bool AnswersCheckIn(const QELXIVARDOSLRDXMLHandler_var& handler) {
  return handler && handler->IsAKindOf("QELXVARDOSLRDCheckinExResponseXMLHandler");
}

void RequireFittingRequest(const Options& options, const QELXIVARDOSLRDXMLHandler_var& handler) {
  if (AnswersCheckIn(handler) && options.request.empty()) {
    throw HostError(UnusableInput, options.response + " answers a checkinEx command: --request is required");
  }
  if (!AnswersCheckIn(handler) && !options.request.empty()) {
    throw HostError(UnusableInput, options.response + " does not answer a checkinEx command: --request is not allowed");
  }
}

void RequireHandler(const Options& options, const QELXIVARDOSLRDXMLHandler_var& handler,
                    const ZYMIDOMElement_var& response) {
  if (handler.IsNull()) {
    throw HostError(ModuleRefused, options.response + ": no handler serves <" + NodeName(response).Str() + " cname=\"" +
                                       Attribute(response, "cname").Str() + "\">");
  }
}

void TakeRecordsOfRequest(const Options& options, const Configuration& configuration, const ZYMIDOMElement_var& request,
                          const FileWatch& watch, RecordMap& records) {
  const QELXIVARDOSRecognitionHandler_var handler =
      RecognitionHandlerFor(configuration.RecognitionFactory(), configuration, request, options.command);
  EndingObserver ending;
  handler->SetObserver(&ending);
  Require(Recognise(handler, options.request, request, true, watch, records));
}

ModuleAnswer UpdateRecords(const Options& options, const Configuration& configuration,
                           const ZYMIDOMElement_var& response, const FileWatch& watch, const RecordMap& records,
                           FormatWatch& formats) {
  const QELXIVARDOSRecognitionHandler_var handler =
      RecognitionHandlerFor(QELXVARDOSRecognitionFactory(), configuration, response, options.command);
  handler->SetObserver(&formats);
  return CallModule("CreateOrUpdateLRD", "recording " + options.response, watch,
                    [&] { return handler->CreateOrUpdateLRD(response, records); });
}

/// What came of a response.
struct Outcome {
  std::map<std::string, QELVARDOSReplacement> settled;
  std::map<std::string, std::string> failed;
  /// From a file that was replaced to the format version of what it held, if that is not known.
  std::map<std::string, std::string> replaced;
  ModuleAnswer answer;

  Outcome(const FileWatch& watch, const FormatWatch& formats, ModuleAnswer module)
      : settled(watch.Settled()), failed(watch.Failed()), answer(std::move(module)) {
    for (const auto& [path, version] : formats.Found()) {
      if (settled.contains(path)) {
        replaced.emplace(path, version);
      }
    }
  }
};

Json AsJson(const std::map<std::string, std::string>& files, const char* member) {
  Json json = Json::array();
  for (const auto& [path, text] : files) {
    Json& file = json.emplace_back();
    PutText(file, "path", path);
    PutText(file, member, text);
  }
  return json;
}

Json AsJson(const Outcome& outcome) {
  std::size_t written = 0;
  Json records = Json::array();
  for (const auto& [path, replacement] : outcome.settled) {
    const bool isWritten = replacement == QELVARDOSReplacement::Written;
    written += isWritten ? 1 : 0;
    Json& record = records.emplace_back();
    PutText(record, "path", path);
    record["outcome"] = isWritten ? "written" : "already the same";
  }
  Json json;
  json["records"] = std::move(records);
  json["failed"] = AsJson(outcome.failed, "reason");
  json["replacedUnknownFormat"] = AsJson(outcome.replaced, "version");
  if (outcome.answer.IsRefusal()) {
    PutText(json, "refusal", outcome.answer.refusal);
  }
  json["totals"] = {{"written", written},
                    {"alreadyTheSame", outcome.settled.size() - written},
                    {"failed", outcome.failed.size()},
                    {"replacedUnknownFormat", outcome.replaced.size()}};
  return json;
}

void PrintPaths(const Outcome& outcome, bool raw) {
  for (const auto& [path, replacement] : outcome.settled) {
    Print(raw ? path + '\0' : Printable(path) + '\n');
  }
}

int Report(const Options& options, const Outcome& outcome) {
  if (options.json) {
    PrintJson(AsJson(outcome));
  } else {
    PrintPaths(outcome, options.rawPaths);
  }
  for (const auto& [path, version] : outcome.replaced) {
    Complain(path, "takes the place of a record of the unknown format version \"" + version + "\"");
  }
  for (const auto& [path, reason] : outcome.failed) {
    Complain(path, reason);
  }
  if (outcome.answer.IsRefusal()) {
    Complain(outcome.answer.refusal);
  }
  return outcome.answer.IsRefusal() || !outcome.failed.empty() ? ModuleRefused : Done;
}

int RecordResponse(const Options& options) {
  const Configuration configuration = ReadConfiguration(options.configuration);
  const ZYMIDOMDocument_var responseDocument = ParseXml(options.response);
  const ZYMIDOMElement_var response = RootElement(responseDocument);
  const QELXIVARDOSLRDXMLHandler_var handler = ChooseHandler(configuration, response);
  RequireFittingRequest(options, handler);
  const ZYMIDOMElement_var request = options.request.empty() ? nullptr : RootElement(ParseXml(options.request));

  DryRunLayer memory(QELVARDOSFileLayer::Current());
  FileWatch watch(options.dryRun ? memory : QELVARDOSFileLayer::Current());
  const QELVARDOSUseFileLayer use(watch);
  RequireHandler(options, handler, response);
  RecordMap records;
  if (request.IsNull()) {
    Require(CallModule("GetLRDObjects", "reading " + options.response, watch,
                       [&] { return handler->GetLRDObjects(response, records); }));
  } else {
    TakeRecordsOfRequest(options, configuration, request, watch, records);
  }
  FormatWatch replaced;
  const ModuleAnswer answer = UpdateRecords(options, configuration, response, watch, records, replaced);
  return Report(options, Outcome(watch, replaced, answer));
}

}  // namespace

Run PrepareRecord(CLI::App& arguments) {
  const auto options = std::make_shared<Options>();
  arguments.add_option("RESPONSE", options->response, "The server's response, an XML file.")
      ->required()
      ->option_text(" ");
  arguments.add_option("--config", options->configuration, "The configuration file.")->required()->option_text("FILE");
  arguments.add_option("--request", options->request, "The request that a checkinEx response answers.")
      ->option_text("REQUEST");
  arguments.add_option("--command", options->command, "The command's name; each tree's own \"cname\" when left out.")
      ->option_text("NAME");
  arguments.add_flag("--dry-run", options->dryRun, "Print the same lines and touch nothing.");
  CLI::Option* json =
      arguments.add_flag("--json", options->json, "Print one JSON document: what was written and what failed.");
  arguments.add_flag("-0", options->rawPaths, "End each path with a zero byte, and print it as it is.")->excludes(json);
  arguments.footer(
      std::string(
          "Printed: the path of every record file that was written or held the same already, sorted, a line each.\n"
          "Control characters and bytes that are no UTF-8 are printed as \\xHH and a backslash is doubled; -0\n"
          "prints paths for programs.\n\n") +
      JsonHelp);
  return [options] { return RecordResponse(*options); };
}

}  // namespace lrd
