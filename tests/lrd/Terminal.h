#pragma once

#include <pty.h>

#include <array>
#include <string>
#include <vector>

#include "tests/lrd/LrdTest.h"

/// Runs the program with a person at the terminal who types the answer to its question, or Ctrl-C when there is no
/// answer; what the terminal shows is in out. environment: "NAME=value" of what the program finds beside what the tests
/// have.
inline Ran AtTerminal(Arguments arguments, const std::string& answer = "", Arguments environment = {}) {
  arguments.insert(arguments.begin(), LRD_PROGRAM);
  std::vector<char*> argv;
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  int terminal = 0;
  const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (process == 0) {
    for (std::string& variable : environment) {
      putenv(variable.data());
    }
    execv(argv.front(), argv.data());
    _exit(127);
  }
  std::string shown;
  std::array<char, 256> piece{};
  bool answered = false;
  for (ssize_t got = 0; (got = read(terminal, piece.data(), piece.size())) > 0;) {
    shown.append(piece.data(), static_cast<std::size_t>(got));
    if (!answered && shown.find("[y/N] ") != std::string::npos) {
      const std::string typed = answer.empty() ? "\x03" : answer;
      answered = write(terminal, typed.data(), typed.size()) > 0;
    }
  }
  close(terminal);
  int status = 0;
  waitpid(process, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), shown, ""};
}
