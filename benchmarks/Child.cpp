#include "benchmarks/Child.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <sstream>

#include "benchmarks/Comparison.h"

namespace {

std::vector<char*> Pointers(const Arguments& arguments) {
  std::vector<char*> pointers;
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

pid_t Start(const Arguments& arguments, posix_spawn_file_actions_t& actions) {
  pid_t process = 0;
  const int failure =
      posix_spawnp(&process, arguments.front().c_str(), &actions, nullptr, Pointers(arguments).data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  Expect(failure == 0, "starting " + arguments.front());
  return process;
}

}  // namespace

void RunProgram(const Arguments& arguments, const std::string& output, const std::string& folder) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  if (!folder.empty()) {
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  }
  const pid_t process = Start(arguments, actions);
  int status = 0;
  waitpid(process, &status, 0);
  Expect(WIFEXITED(status) && WEXITSTATUS(status) == 0, "the end of " + arguments.front());
}

bool IsInstalled(const std::string& program) {
  const char* const path = std::getenv("PATH");
  std::istringstream folders(path == nullptr ? "" : path);
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (access(folder.append("/").append(program).c_str(), X_OK) == 0) {
      return true;
    }
  }
  return false;
}

Companion::Companion(const Arguments& arguments) {
  std::array<int, 2> questions{};
  std::array<int, 2> answers{};
  Expect(pipe2(questions.data(), O_CLOEXEC) == 0 && pipe2(answers.data(), O_CLOEXEC) == 0, "pipes");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, questions[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, answers[1], STDOUT_FILENO);
  process_ = Start(arguments, actions);
  close(questions[0]);
  close(answers[1]);
  to_ = fdopen(questions[1], "w");
  from_ = fdopen(answers[0], "r");
}

Companion::~Companion() {
  std::fclose(to_);
  std::fclose(from_);
  waitpid(process_, nullptr, 0);
}

double Companion::Ask() {
  std::fputs("\n", to_);
  std::fflush(to_);
  std::array<char, 64> line{};
  Expect(std::fgets(line.data(), line.size(), from_) != nullptr, "an answer");
  return std::stod(line.data());
}
