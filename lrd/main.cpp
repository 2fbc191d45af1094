#include <array>
#include <exception>
#include <functional>
#include <sstream>
#include <string>

#include "lrd/Command.h"
#include "lrd/Console.h"
#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "lrd/HostSystem.h"
#include "lrd/Trace.h"
#include "platform/QELVARDOSParallelFileLayer.h"

namespace lrd {

namespace {

constexpr std::array Commands = {
    Command{"recognize", PrepareRecognize, "Write the module's verdict into every CAD object of a request."},
    Command{"record", PrepareRecord, "Bring the record files up to date after a server's response."},
    Command{"show", PrepareShow, "Print record files for people."},
    Command{"status", PrepareStatus, "Tell for every CAD object file below folders what the module thinks of it."},
    Command{"check", PrepareCheck, "Report what is wrong with the record files below folders."},
};

/// A wrong argument becomes a message in the program's own manner; help and version are printed as asked.
int Answer(const CLI::App& program, const CLI::ParseError& parsed) {
  if (parsed.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
    std::ostringstream asked;
    const int status = program.exit(parsed, asked, asked);
    Print(asked.str());
    return status;
  }
  if (program.get_subcommands().empty() && program.remaining_size() > 0) {
    throw HostError(UnusableInput, "unknown command or option: " + program.remaining().front());
  }
  throw HostError(UnusableInput, std::string(parsed.what()) + " (lrd --help and lrd COMMAND --help tell more)");
}

int ParseAndRun(int argc, char** argv) {
  CLI::App program("Recognises CAD objects from their local records, and keeps the records.", "lrd");
  program.get_formatter()->label("SUBCOMMAND", "COMMAND");
  program.set_version_flag("--version", "lrd " LRD_VERSION);
  std::string traceFile;
  program.add_option("--trace", traceFile, "Write what the module does, line by line, to FILE; - for standard output.")
      ->option_text("FILE");
  int jobs = QELVARDOSParallelFileLayer::JobsFoundOut;
  program.add_option("--jobs", jobs, "Work on N files at once; 1: on one after another; left out: found out.")
      ->option_text("N")
      ->check(CLI::Range(1, QELVARDOSParallelFileLayer::MostJobs));
  program.footer(
      "Exit status: 0 done; 1 something could not be read, written or decided, or was found wrong; 2 wrong use, input "
      "or\n"
      "output; 3 a record or a tree lacks what the module must have; 130, 143 ended by Ctrl-C or SIGTERM, with "
      "nothing\n"
      "left over.");
  program.require_subcommand(1);
  Run chosen;
  for (const Command& command : Commands) {
    CLI::App* arguments = program.add_subcommand(command.name, command.help);
    arguments->callback([&chosen, run = command.prepare(*arguments)] { chosen = run; });
  }
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& parsed) {
    return Answer(program, parsed);
  }
  Trace trace(traceFile);
  NoticeEndings();
  QELVARDOSParallelFileLayer disk(QELVARDOSFileLayer::System(), jobs);
  const QELVARDOSUseFileLayer use(disk);
  const int status = chosen();
  trace.Finish();
  FlushPrinted();
  EndWhenAsked();
  return status;
}

int UntilError(const std::function<int()>& run) {
  try {
    return run();
  } catch (const HostError& error) {
    Complain(error.what());
    return error.Status();
  } catch (const std::exception& error) {
    Complain(error.what());
    return ModuleRefused;
  }
}

/// What was printed before an error goes out too.
int RunProgram(int argc, char** argv) {
  const int status = UntilError([&] { return ParseAndRun(argc, argv); });
  const int flushed = UntilError([] {
    FlushPrinted();
    return Done;
  });
  return flushed == Done ? status : flushed;
}

}  // namespace

}  // namespace lrd

int main(int argc, char** argv) {
  lrd::ReportFailedWrites();
  return lrd::RunProgram(argc, argv);
}
