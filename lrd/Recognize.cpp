#include <cstdio>
#include <memory>
#include <vector>

#include "lrd/Command.h"
#include "lrd/Console.h"
#include "lrd/Endings.h"
#include "lrd/Explanation.h"
#include "lrd/HostError.h"
#include "lrd/JsonText.h"
#include "lrd/ModuleCall.h"
#include "lrd/Reasons.h"
#include "lrd/Sum.h"
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
  bool keepGoing = false;
  /// "true" for sum and lines, "sum", or empty.
  std::string explain;
  bool json = false;
  std::vector<std::string> only;
};

bool IsExplained(const Options& options) { return !options.explain.empty() || options.json; }

void RequireSense(const Options& options) {
  if (!options.only.empty() && !IsExplained(options)) {
    throw HostError(UnusableInput, "--only goes with --explain or --json");
  }
}

/// What is printed of why objects got their verdicts.
class Explanation {
 public:
  explicit Explanation(const Options& options) : isSumAlone_(options.explain == "sum"), isJson_(options.json) {}

  void Follow(Explainer& explainer) {
    explainer.TellDetails(sum_);
    if (!isSumAlone_) {
      explainer.TellDetails(isJson_ ? static_cast<ExplanationSink&>(json_) : lines_);
    }
  }

  void Print() {
    if (!isJson_) {
      lrd::Print(sum_.InWords() + (isSumAlone_ ? "" : "\n"));
      lines_.Print();
      return;
    }
    Json json;
    sum_.PutInto(json);
    if (!isSumAlone_) {
      json["objects"] = json_.Objects();
    }
    PrintJson(json);
  }

 private:
  bool isSumAlone_;
  bool isJson_;
  Sum sum_;
  ExplanationLines lines_;
  ExplanationJson json_;
};

ModuleAnswer CallHandler(const Options& options, const Configuration& configuration, const ZYMIDOMElement_var& request,
                         Explainer& explainer) {
  FileWatch watch;
  const QELVARDOSUseFileLayer use(watch);
  const QELXIVARDOSRecognitionHandler_var handler =
      RecognitionHandlerFor(configuration.RecognitionFactory(), configuration, request, options.command);
  handler->SetObserver(&explainer);
  handler->SetKeepGoing(options.keepGoing);
  QELXIVARDOSLRDObject_varZYMUnicodeStringDico records;
  return Recognise(handler, options.request, request, options.update, watch, records);
}

void ChooseObjects(const Options& options, Explainer& explainer) {
  if (!options.only.empty()) {
    if (const auto missing = explainer.Choose(options.only)) {
      throw HostError(UnusableInput, options.request + ": has no object with the CAD id " + *missing);
    }
  }
}

int RecognizeRequest(const Options& options) {
  RequireSense(options);
  const bool isExplained = IsExplained(options);
  const XmlOutput output(options.output);
  const Configuration configuration = ReadConfiguration(options.configuration);
  const ZYMIDOMDocument_var document = ParseXml(options.request);
  const ZYMIDOMElement_var request = RootElement(document);
  Explainer explainer(request);
  Explanation explanation(options);
  FailedObjects failed;
  if (isExplained) {
    explanation.Follow(explainer);
  }
  if (options.keepGoing) {
    explainer.TellAll(failed);
  }
  ChooseObjects(options, explainer);
  const ModuleAnswer answer = CallHandler(options, configuration, request, explainer);
  if (FirstElement(request, "cadobjectlist").IsNull()) {
    Complain(options.request, "has no list of objects (<cadobjectlist>)");
  }
  EndWhenAsked();
  explainer.Finish();
  if (isExplained) {
    explanation.Print();
  }
  // What was recognised before a refusal stands.
  if (!isExplained || options.output != "-") {
    output.Write(document);
  }
  if (answer.IsRefusal()) {
    Complain(answer.refusal);
  }
  const bool hasAllVerdicts = failed.Complain();
  for (const auto& [file, version] : explainer.Found()) {
    Complain(file, "unknown format version \"" + version + "\": its objects count as new to the server");
  }
  if (options.summary) {
    std::fputs((VerdictCounts(request).InWords() + "\n").c_str(), stderr);
  }
  const bool isRefused = answer.IsRefusal() || (options.strict && !explainer.Found().empty());
  return isRefused || !hasAllVerdicts ? ModuleRefused : Done;
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
  arguments.add_flag("--keep-going", options->keepGoing,
                     "A damaged record costs its own object alone, which is named and gets no verdict; exit 1.");
  arguments
      .add_flag(
          "--explain", options->explain,
          "Print why each object got its verdict, instead of the document or beside -o: first the sum, then a line "
          "for each object; or the sum alone.")
      ->option_text("| --explain=sum")
      ->check(CLI::IsMember({"true", "sum"}));
  arguments.add_flag("--json", options->json, "Print that as one JSON document.");
  arguments.add_option("--only", options->only, "Explain these objects alone.")->option_text("CADID...");
  arguments.footer(ReasonsHelp() + "\n" + JsonHelp);
  return [options] { return RecognizeRequest(*options); };
}

}  // namespace lrd
