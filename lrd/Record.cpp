#include <memory>

#include "lrd/Command.h"
#include "lrd/Console.h"
#include "lrd/DryRunLayer.h"
#include "lrd/Endings.h"
#include "lrd/FormatWatch.h"
#include "lrd/HostError.h"
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
    throw HostError(ModuleRefused, options.response + ": no handler serves <" + NameOf(response) + " cname=\"" +
                                       AttributeOf(response, "cname") + "\">");
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

int Report(const Options& options, const FileWatch& watch, const FormatWatch& formats, const ModuleAnswer& answer) {
  for (const std::string& path : watch.Settled()) {
    Print(options.rawPaths ? path + '\0' : Printable(path) + '\n');
  }
  for (const auto& [path, version] : formats.Found()) {
    if (watch.Settled().contains(path)) {
      Complain(path, "takes the place of a record of the unknown format version \"" + version + "\"");
    }
  }
  for (const auto& [path, reason] : watch.Failed()) {
    Complain(path, reason);
  }
  if (answer.IsRefusal()) {
    Complain(answer.refusal);
  }
  return answer.IsRefusal() || !watch.Failed().empty() ? ModuleRefused : Done;
}

int RecordResponse(const Options& options) {
  const Configuration configuration = ReadConfiguration(options.configuration);
  const ZYMIDOMDocument_var responseDocument = ParseXml(options.response);
  const ZYMIDOMElement_var response = RootOf(responseDocument);
  const QELXIVARDOSLRDXMLHandler_var handler = ChooseHandler(configuration, response);
  RequireFittingRequest(options, handler);
  const ZYMIDOMElement_var request = options.request.empty() ? nullptr : RootOf(ParseXml(options.request));

  DryRunLayer memory(QELVARDOSFileLayer::System());
  const FileWatch watch(options.dryRun ? memory : QELVARDOSFileLayer::System());
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
  return Report(options, watch, replaced, answer);
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
  arguments.add_flag("-0", options->rawPaths, "End each path with a zero byte, and print it as it is.");
  arguments.footer(
      "Printed: the path of every record file that was written or held the same already, sorted, a line each.\n"
      "Control characters and bytes that are no UTF-8 are printed as \\xHH and a backslash is doubled; -0 prints "
      "paths\n"
      "for programs.");
  return [options] { return RecordResponse(*options); };
}

}  // namespace lrd
