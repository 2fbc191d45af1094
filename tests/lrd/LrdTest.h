#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ScratchFolder.h"

using Arguments = std::vector<std::string>;

/// How a run of the program ended.
struct Ran {
  /// The exit status, or the signal that ended it as a negative number.
  int status = 0;
  std::string out;
  std::string err;
};

inline std::string Slurp(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

/// Every test works in a folder of its own, which is also the working folder of the programs that it starts. There
/// config.xml says that files are recognised by their names.
class LrdTest : public testing::Test {
 public:
  LrdTest() {
    std::filesystem::create_directory(root_ / "case");
    std::filesystem::current_path(root_ / "case");
    // Whoever runs the tests in the background may have it ignored, and programs inherit that.
    std::signal(SIGINT, SIG_DFL);
    Put("config.xml", R"(<configuration cad="CREO" identifier="filename"/>)");
  }
  ~LrdTest() override { std::filesystem::current_path("/"); }

 protected:
  static void Put(const std::string& file, const std::string& bytes, std::int64_t seconds = 1700000000) {
    std::filesystem::create_directories(std::filesystem::absolute(file).parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
    const timespec time{seconds, 0};
    const timespec times[] = {time, time};
    utimensat(AT_FDCWD, file.c_str(), times, 0);
  }

  /// An object file and, beside it, the record of it.
  static void PutObject(const std::string& folder, const std::string& file, const std::string& record,
                        const std::string& bytes, std::int64_t seconds = 1700000000) {
    Put(folder + "/" + file, "cad", seconds);
    Put(folder + "/.KORVANTHEMIX/" + record + ".xml", bytes);
  }

  static std::string Record(const std::string& phid, const std::string& stamp = "1700000000",
                            const std::string& nested = "") {
    return R"(<object version="4.0"><phid>)" + phid + "</phid><objectChangeStamp>" + stamp +
           "</objectChangeStamp><ceStamp>CE</ceStamp><macroceStamp>MC</macroceStamp><xsStamp>XS</xsStamp>"
           "<hashcode>HC</hashcode>" +
           nested + "</object>";
  }

  static std::string Request(const std::string& objects) {
    return R"(<command cname="synclocalrecognition"><cadobjectlist>)" + objects + "</cadobjectlist></command>";
  }

  /// The answer to a check-out of these objects; the physical ids begin with phid.
  static std::string CheckOut(const std::string& folder, const std::vector<std::string>& names,
                              const std::string& phid = "PH-") {
    std::ostringstream response;
    response << "<response cname='checkoutEx'><info><cadobjectlist>";
    for (const std::string& name : names) {
      response << "<cadobject cadid='" << name << "' phid='" << phid << name
               << "' type='part' selected='true' filename='" << name << ".prt.1' dirname='" << folder << "'/>";
    }
    response << "</cadobjectlist></info></response>";
    return response.str();
  }

  /// Path to bytes and time of everything in the working folder.
  static std::map<std::string, std::string> State() {
    std::map<std::string, std::string> state;
    for (const std::filesystem::directory_entry& entry : std::filesystem::recursive_directory_iterator(".")) {
      const auto changed = entry.last_write_time().time_since_epoch().count();
      state[entry.path().string()] = entry.is_regular_file() ? Slurp(entry.path()) + std::to_string(changed) : "";
    }
    return state;
  }

  /// A program that may still be at work.
  struct Started {
    pid_t process = 0;
  };

  /// Starts a program, the first of the arguments. standardOutput: a file that is open, or -1 for one that is read when
  /// it has ended.
  Started Spawn(Arguments arguments, int standardOutput = -1) const {
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
      argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (standardOutput >= 0) {
      posix_spawn_file_actions_adddup2(&actions, standardOutput, 1);
    } else {
      posix_spawn_file_actions_addopen(&actions, 1, Out().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    }
    posix_spawn_file_actions_addopen(&actions, 2, Err().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    Started started;
    EXPECT_EQ(posix_spawn(&started.process, argv.front(), &actions, nullptr, argv.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    return started;
  }
  Ran Wait(const Started& started) const {
    int status = 0;
    waitpid(started.process, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), Slurp(Out()), Slurp(Err())};
  }
  Ran Run(const Arguments& arguments, int standardOutput = -1) const { return Wait(Spawn(arguments, standardOutput)); }

  Started Start(Arguments arguments, int standardOutput = -1) const {
    arguments.insert(arguments.begin(), LRD_PROGRAM);
    return Spawn(std::move(arguments), standardOutput);
  }
  Ran Lrd(const Arguments& arguments, int standardOutput = -1) const { return Wait(Start(arguments, standardOutput)); }

  std::string Out() const { return root_ / "out"; }
  std::string Err() const { return root_ / "err"; }

  const ScratchFolder scratch_;
  const std::filesystem::path root_ = scratch_.Root();
};
