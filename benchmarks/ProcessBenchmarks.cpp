// lrd as a whole process, beside the floor as one and beside tools that people know, over the same object files.

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>

#include "benchmarks/Child.h"
#include "benchmarks/Comparison.h"
#include "benchmarks/Parts.h"
#include "benchmarks/Trees.h"

namespace {

namespace fs = std::filesystem;

struct Objects {
  Objects(const std::string& data, int objects) : count(objects), root(Trees::ObjectsWithRecords(data, objects)) {
    request = Trees::File(data, "process" + std::to_string(count) + ".xml", Trees::Request(root, count));
    configuration = Trees::File(data, "config.xml", "<configuration cad=\"CREO\" identifier=\"filename\"/>");
  }
  int count;
  std::string root;
  std::string request;
  std::string configuration;
};

class Process : public Variant {
 public:
  Process(Objects objects, Arguments arguments, std::string folder = {})
      : objects_(std::move(objects)),
        output_(objects_.request + "." + fs::path(arguments.front()).filename().string()),
        arguments_(std::move(arguments)),
        folder_(std::move(folder)) {}

  void Prepare() override {}
  void Run() override { RunProgram(arguments_, output_, folder_); }
  Arguments Program() const override { return arguments_; }

 protected:
  Objects objects_;
  /// Its own: emptying another's would be paid for by this one.
  std::string output_;

 private:
  Arguments arguments_;
  std::string folder_;
};

class RecognizingProcess : public Process {
 public:
  using Process::Process;
  void Check() override {
    pugi::xml_document request;
    request.load_file(output_.c_str());
    Trees::ExpectRecognized(request, objects_.count);
  }
};

/// A tool that says nothing when nothing changed.
class QuietTool : public Process {
 public:
  using Process::Process;
  void Check() override { Expect(fs::file_size(output_) == 0, Parts::ReadTextFile(output_)); }
};

void AppendNumber(std::string& bytes, std::uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(number >> shift);
  }
}

/// The list of files that hg compares with the disk. Making it by a commit would take minutes, and a file in the
/// repository for each object.
std::string HgDirstate(const Objects& objects) {
  std::string bytes(40, '\0');
  for (int part = 0; part < objects.count; ++part) {
    const std::string name = fs::path(Parts::Folder("", part)).filename().string() + "/" + Parts::FileName(part);
    struct stat file {};
    stat((objects.root + "/" + name).c_str(), &file);
    bytes += 'n';
    for (const auto number :
         {static_cast<std::uint32_t>(file.st_mode), static_cast<std::uint32_t>(file.st_size),
          static_cast<std::uint32_t>(file.st_mtim.tv_sec), static_cast<std::uint32_t>(name.size())}) {
      AppendNumber(bytes, number);
    }
    bytes += name;
  }
  return bytes;
}

std::unique_ptr<Variant> Hg(const Settings& settings, int count) {
  Objects objects(settings.data, count);
  if (!fs::exists(objects.root + "/.hg/dirstate")) {
    RunProgram({"hg", "--config", "format.use-dirstate-v2=no", "init", objects.root});
    Parts::WriteTextFile(objects.root + "/.hg/dirstate", HgDirstate(objects));
    Parts::WriteTextFile(objects.root + "/.hgignore", "syntax: glob\n.KORVANTHEMIX\n.git\n.hgignore\n");
  }
  const std::string root = objects.root;
  return std::make_unique<QuietTool>(std::move(objects), Arguments{"hg", "status"}, root);
}

std::unique_ptr<Variant> Git(const Settings& settings, int count) {
  Objects objects(settings.data, count);
  const std::string root = objects.root;
  const Arguments git = {"git", "-C", root, "-c", "core.preloadIndex=false", "-c", "user.name=x", "-c", "user.email=x"};
  const auto with = [&git](const Arguments& more) {
    Arguments all = git;
    all.insert(all.end(), more.begin(), more.end());
    return all;
  };
  if (!fs::exists(root + "/.git")) {
    RunProgram({"git", "init", "--quiet", root});
    Parts::WriteTextFile(root + "/.git/info/exclude", ".KORVANTHEMIX\n.hg\n.hgignore\n");
    RunProgram(with({"add", "--all"}));
    RunProgram(with({"commit", "--quiet", "--message", "all objects"}));
  }
  return std::make_unique<QuietTool>(std::move(objects), with({"status", "--short"}));
}

std::unique_ptr<Variant> Rsync(const Settings& settings, int count) {
  Objects objects(settings.data, count);
  const std::string copy = objects.root + ".copy";
  const Arguments ignored = {"--exclude", ".KORVANTHEMIX", "--exclude", ".hg",
                             "--exclude", ".hgignore",     "--exclude", ".git"};
  const auto rsync = [&](Arguments arguments) {
    arguments.insert(arguments.end(), ignored.begin(), ignored.end());
    arguments.insert(arguments.end(), {objects.root + "/", copy + "/"});
    return arguments;
  };
  if (!fs::exists(copy)) {
    RunProgram(rsync({"rsync", "-a", "--sparse"}));
  }
  // The tool itself says nothing whatever it finds; asked for its findings it must have none.
  const std::string findings = objects.request + ".differences";
  RunProgram(rsync({"rsync", "-n", "-a", "--itemize-changes"}), findings);
  Expect(fs::file_size(findings) == 0, Parts::ReadTextFile(findings));
  const Arguments dry = rsync({"rsync", "-n", "-a"});
  return std::make_unique<QuietTool>(std::move(objects), dry);
}

}  // namespace

std::vector<Comparison> ProcessComparisons(const Settings& settings) {
  std::vector<Comparison> all;
  for (const int count : settings.sizes) {
    const auto process = [=](Arguments (*arguments)(const Settings& settings, const Objects& objects)) {
      return [=]() -> std::unique_ptr<Variant> {
        const Objects objects(settings.data, count);
        return std::make_unique<RecognizingProcess>(objects, arguments(settings, objects));
      };
    };
    const auto lrd = process([](const Settings& given, const Objects& objects) {
      return Arguments{given.programs + "lrd", "recognize", objects.request, "--config", objects.configuration};
    });
    const auto floor = process([](const Settings& given, const Objects& objects) {
      return Arguments{given.programs + "lrd_floor", objects.request};
    });
    const double faster = count == 10000 ? 1 : 0;
    Comparison comparison{"lrd process", count, lrd, {{"", count < 10000 ? 0 : 1.40, floor}}};
    if (IsInstalled("git")) {
      comparison.references.push_back({"git status", 0, [=] { return Git(settings, count); }});
    }
    if (IsInstalled("hg")) {
      comparison.references.push_back({"hg status", faster, [=] { return Hg(settings, count); }});
    }
    if (IsInstalled("rsync")) {
      comparison.references.push_back({"rsync -n -a", faster, [=] { return Rsync(settings, count); }});
    }
    all.push_back(comparison);
  }
  return all;
}
