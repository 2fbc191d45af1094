#include <cstdio>
#include <map>
#include <memory>

#include "lrd/Command.h"
#include "lrd/Console.h"
#include "lrd/Endings.h"
#include "lrd/FormatWatch.h"
#include "lrd/HostError.h"
#include "lrd/ModuleCall.h"
#include "lrd/XmlFile.h"

namespace lrd {

namespace {

struct Options {
  std::string request;
  std::string configuration;
  std::string command;
  std::string output = "-";
  bool update = false;
  bool summary = false;
  bool strict = false;
};

/// "120 objects: 97 EXISTS, 20 MODIFIED, 3 UNKNOWN"
void PrintSummary(const ZYMIDOMElement_var& request) {
  std::map<std::string, int> verdicts;
  int objects = 0;
  if (const ZYMIDOMElement_var list = FirstElement(request, "cadobjectlist")) {
    ForEachChildElement(list, [&](const ZYMIDOMElement_var& object) {
      ++verdicts[Attribute(object, "status").Str()];
      ++objects;
      return true;
    });
  }
  std::string line = std::to_string(objects) + (objects == 1 ? " object" : " objects");
  const char* separator = ": ";
  int counted = 0;
  for (const char* verdict : {"EXISTS", "MODIFIED", "UNKNOWN"}) {
    line += separator + std::to_string(verdicts[verdict]) + " " + verdict;
    counted += verdicts[verdict];
    separator = ", ";
  }
  if (counted < objects) {
    line += ", " + std::to_string(objects - counted) + " without a verdict";
  }
  std::fputs((line + "\n").c_str(), stderr);
}

ModuleAnswer CallHandler(const Options& options, const Configuration& configuration, const ZYMIDOMElement_var& request,
                         FormatWatch& formats) {
  FileWatch watch;
  const QELVARDOSUseFileLayer use(watch);
  const QELXIVARDOSRecognitionHandler_var handler =
      RecognitionHandlerFor(configuration.RecognitionFactory(), configuration, request, options.command);
  handler->SetObserver(&formats);
  QELXIVARDOSLRDObject_varZYMUnicodeStringDico records;
  return Recognise(handler, options.request, request, options.update, watch, records);
}

int RecognizeRequest(const Options& options) {
  const XmlOutput output(options.output);
  const Configuration configuration = ReadConfiguration(options.configuration);
  const ZYMIDOMDocument_var document = ParseXml(options.request);
  const ZYMIDOMElement_var request = RootElement(document);
  FormatWatch formats;
  const ModuleAnswer answer = CallHandler(options, configuration, request, formats);
  if (FirstElement(request, "cadobjectlist").IsNull()) {
    Complain(options.request, "has no list of objects (<cadobjectlist>)");
  }
  EndWhenAsked();
  // What was recognised before a refusal stands.
  output.Write(document);
  if (answer.IsRefusal()) {
    Complain(answer.refusal);
  }
  for (const auto& [file, version] : formats.Found()) {
    Complain(file, "unknown format version \"" + version + "\": its objects count as new to the server");
  }
  if (options.summary) {
    PrintSummary(request);
  }
  return answer.IsRefusal() || (options.strict && !formats.Found().empty()) ? ModuleRefused : Done;
}

}  // namespace

Run PrepareRecognize(CLI::App& arguments) {
  const auto options = std::make_shared<Options>();
  arguments.add_option("REQUEST", options->request, "The request, an XML file.")->required()->option_text(" ");
  arguments.add_option("--config", options->configuration, "The configuration file.")->required()->option_text("FILE");
  arguments.add_option("--command", options->command, "The command's name; the request's \"cname\" when left out.")
      ->option_text("NAME");
  arguments.add_flag("--update", options->update, "Also put file names, hash codes and types into the request.");
  arguments.add_option("-o", options->output, "Replace OUT by the result; standard output when left out or -.")
      ->option_text("OUT");
  arguments.add_flag("--summary", options->summary, "Count the verdicts on standard error.");
  arguments.add_flag("--strict", options->strict, "Exit with 1 when a record is of an unknown format version.");
  return [options] { return RecognizeRequest(*options); };
}

}  // namespace lrd
