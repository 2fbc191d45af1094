#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace lrd {

/// What a command does once its arguments are read. Answers the exit status.
using Run = std::function<int()>;

/// One command of the program: a row of the table in main.cpp and a source file of its name.
struct Command {
  const char* name;
  /// Declares the arguments on the parser and answers what runs when the command is chosen.
  Run (*prepare)(CLI::App& arguments);
  const char* help;
};

Run PrepareRecognize(CLI::App& arguments);
Run PrepareRecord(CLI::App& arguments);
Run PrepareShow(CLI::App& arguments);
Run PrepareStatus(CLI::App& arguments);
Run PrepareCheck(CLI::App& arguments);

}  // namespace lrd
