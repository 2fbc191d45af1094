#pragma once

#include <cstdio>
#include <string>
#include <vector>

using Arguments = std::vector<std::string>;

/// Runs a program to its end, in a folder when one is given, its standard output in a file. Throws unless it succeeds.
void RunProgram(const Arguments& arguments, const std::string& output = "/dev/null", const std::string& folder = {});

/// Whether a program of that name can be run.
bool IsInstalled(const std::string& program);

/// A program that answers each line with a line.
class Companion {
 public:
  explicit Companion(const Arguments& arguments);
  ~Companion();
  Companion(const Companion&) = delete;
  Companion& operator=(const Companion&) = delete;

  /// Throws when there is no answer.
  double Ask();

 private:
  int process_ = 0;
  std::FILE* to_ = nullptr;
  std::FILE* from_ = nullptr;
};
