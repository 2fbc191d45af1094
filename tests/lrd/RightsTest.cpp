#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// What a user sees whom the system does not let look. The superuser may look everywhere, so the program runs as nobody
// where the tests run as root.

namespace {

namespace fs = std::filesystem;

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

struct Ran {
  int status = 0;
  std::string out;
  std::string err;
};

std::string Slurp(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

class RightsTest : public testing::Test {
 public:
  RightsTest() {
    std::string name = (fs::temp_directory_path() / "rights-test-XXXXXX").string();
    root_ = mkdtemp(name.data());
    // The program and its libraries may stand where only their builder may go.
    for (const auto& entry : fs::directory_iterator(fs::path(LRD_PROGRAM).parent_path())) {
      if (entry.path().filename() == "lrd" || entry.path().extension() == ".so") {
        fs::copy_file(entry.path(), root_ / entry.path().filename());
      }
    }
    Put("config.xml", R"(<configuration cad="CREO" identifier="filename"/>)");
    for (const char* part : {"first", "part", "last"}) {
      const std::string file = std::string(part) + ".prt";
      Put("cad/" + file + ".1", "cad");
      Put(Record(part), Content(part));
    }
    for (const char* path : {"", "cad", "cad/.KORVANTHEMIX"}) {
      chmod((root_ / path).c_str(), 0777);
    }
    fs::current_path(root_);
  }
  ~RightsTest() override {
    fs::current_path("/");
    chmod((root_ / "cad").c_str(), 0777);
    chmod((root_ / "cad/.KORVANTHEMIX").c_str(), 0777);
    fs::remove_all(root_);
  }

 protected:
  static std::string Record(const std::string& part) { return "cad/.KORVANTHEMIX/" + part + ".prt.xml"; }
  static std::string Content(const std::string& phid) {
    return "<object version='4.0'><phid>" + phid +
           "</phid><objectChangeStamp>1700000000</objectChangeStamp><ceStamp/>" +
           "<macroceStamp/><xsStamp/><hashcode/></object>";
  }
  void Put(const std::string& file, const std::string& bytes) const {
    fs::create_directories((root_ / file).parent_path());
    std::ofstream(root_ / file) << bytes;
    const timespec time{1700000000, 0};
    const timespec times[] = {time, time};
    utimensat(AT_FDCWD, (root_ / file).c_str(), times, 0);
  }
  static std::string Objects() {
    std::string objects;
    for (const char* part : {"first", "part", "last"}) {
      objects += std::string("<cadobject cadid='") + part;
      objects += std::string("' filename='") + part + ".prt.1' dirname='cad' selected='true'/>";
    }
    return "<cadobjectlist>" + objects + "</cadobjectlist>";
  }

  /// Not as root.
  Ran Lrd(std::vector<std::string> arguments) const {
    const pid_t child = fork();
    if (child == 0) {
      const int out = open("out", O_WRONLY | O_CREAT | O_TRUNC, 0666);
      const int err = open("err", O_WRONLY | O_CREAT | O_TRUNC, 0666);
      if (dup2(out, 1) < 0 || dup2(err, 2) < 0 ||
          (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0))) {
        _exit(99);
      }
      setenv("LD_LIBRARY_PATH", root_.c_str(), 1);
      std::string program = root_ / "lrd";
      std::vector<char*> argv{program.data()};
      for (std::string& argument : arguments) {
        argv.push_back(argument.data());
      }
      argv.push_back(nullptr);
      execv(program.c_str(), argv.data());
      _exit(99);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Slurp("out"), Slurp("err")};
  }
  Ran Recognize() const {
    Put("request.xml", "<command cname='synclocalrecognition'>" + Objects() + "</command>");
    return Lrd({"recognize", "request.xml", "--config", "config.xml", "--summary"});
  }
  Ran Status() const { return Lrd({"status", "cad", "--config", "config.xml"}); }
  Ran Check() const { return Lrd({"check", "cad"}); }

  fs::path root_;
};

TEST_F(RightsTest, a_record_folder_that_nobody_may_enter_makes_no_object_new) {
  chmod("cad/.KORVANTHEMIX", 0);
  const std::string reason = Record("first") + ": Permission denied";
  const Ran recognized = Recognize();
  EXPECT_EQ(recognized.status, 1);
  EXPECT_THAT(recognized.err, AllOf(HasSubstr("0x80004005 (" + reason + ")"),
                                    HasSubstr("0 EXISTS, 0 MODIFIED, 0 UNKNOWN, 3 without a verdict")));
  EXPECT_THAT(recognized.out, HasSubstr("cadid=\"first\" filename=\"first.prt.1\" dirname=\"cad\" selected=\"true\" "
                                        "status=\"\" phid=\"\" lrdversion=\"4.0\""));
  const Ran status = Status();
  EXPECT_EQ(status.status, 1);
  EXPECT_THAT(status.out, AllOf(HasSubstr("X cad/first.prt.1: " + reason + "\n"), HasSubstr("X cad/last.prt.1: "),
                                HasSubstr("0 UNKNOWN, 3 DAMAGED")));
  EXPECT_THAT(status.err, HasSubstr("cad/.KORVANTHEMIX: cannot be listed: Permission denied"));
  const Ran check = Check();
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.out, "cad/.KORVANTHEMIX: cannot be listed: Permission denied\n0 records, 1 finding\n");
}

TEST_F(RightsTest, a_record_that_nobody_may_read_costs_its_own_object_in_status) {
  chmod(Record("part").c_str(), 0);
  const std::string reason = Record("part") + ": Permission denied";
  const Ran recognized = Recognize();
  EXPECT_EQ(recognized.status, 1);
  EXPECT_THAT(recognized.err, AllOf(HasSubstr(reason), HasSubstr("1 EXISTS, 0 MODIFIED, 0 UNKNOWN, 2 without")));
  const Ran status = Status();
  EXPECT_EQ(status.status, 1);
  EXPECT_EQ(status.out, "E cad/first.prt.1\nE cad/last.prt.1\nX cad/part.prt.1: " + reason +
                            "\n3 objects: 2 EXISTS, 0 MODIFIED, 0 UNKNOWN, 1 DAMAGED; 0 records without object file\n");
  const Ran check = Check();
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.out, Record("part") + ": not readable: Permission denied\n3 records, 1 finding\n");
}

TEST_F(RightsTest, a_cad_folder_that_nobody_may_enter_is_named) {
  chmod("cad", 0);
  EXPECT_EQ(Recognize().status, 1);
  EXPECT_THAT(Recognize().err, HasSubstr("cad/"));
  for (const Ran& ran : {Status(), Check()}) {
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.out + ran.err, HasSubstr("cad: "));
  }
}

TEST_F(RightsTest, a_cad_folder_that_nobody_may_list_says_of_no_object_file_that_it_is_gone) {
  chmod("cad", 0311);
  const Ran shown = Lrd({"show", Record("part")});
  EXPECT_EQ(shown.status, 1);
  EXPECT_THAT(shown.out, AllOf(HasSubstr("object file        could not be looked at\n"), Not(HasSubstr("gone"))));
  EXPECT_EQ(shown.err, "lrd: cad: Permission denied\n");
  const Ran check = Lrd({"check", "cad/.KORVANTHEMIX"});
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.out, "cad: not readable: Permission denied\n0 records, 1 finding\n");
}

TEST_F(RightsTest, a_folder_that_nobody_may_list_is_named_once_whatever_ways_lead_to_it) {
  fs::create_directory("cad/closed");
  fs::create_directory_symlink("cad/closed", "link");
  chmod("cad/closed", 0);
  const Ran check = Lrd({"check", "link", "cad"});
  EXPECT_EQ(check.out, "cad/closed: not readable: Permission denied\n3 records, 1 finding\n");
  const Ran status = Lrd({"status", "cad", "link", "--config", "config.xml"});
  EXPECT_EQ(status.err, "lrd: cad/closed: Permission denied\n");
}

TEST_F(RightsTest, a_file_that_leads_to_itself_is_neither_there_nor_gone) {
  fs::remove("cad/part.prt.1");
  fs::create_symlink("part.prt.1", "cad/part.prt.1");
  const std::string reason = "cad/part.prt.1: Too many levels of symbolic links";
  EXPECT_THAT(Status().out, AllOf(HasSubstr("X cad/part.prt.1: " + reason), HasSubstr("E cad/last.prt.1\n")));
  EXPECT_THAT(Recognize().err, HasSubstr(reason));

  fs::remove_all("cad/.KORVANTHEMIX");
  Put("answer.xml", "<response cname='checkoutEx'><info>" + Objects() + "</info></response>");
  const Ran recorded = Lrd({"record", "answer.xml", "--config", "config.xml"});
  EXPECT_EQ(recorded.status, 1);
  EXPECT_EQ(recorded.out, Record("first") + "\n" + Record("last") + "\n");
  EXPECT_EQ(recorded.err, "lrd: " + Record("part") + ": " + reason + "\n");
  EXPECT_FALSE(fs::exists(Record("part")));
}

TEST_F(RightsTest, what_stands_where_records_belong_is_named_alike) {
  fs::remove(Record("first"));
  fs::create_directory(Record("first"));
  fs::remove(Record("part"));
  ASSERT_EQ(mkfifo(Record("part").c_str(), 0666), 0);
  Put("cad/dangling.prt.1", "cad");
  fs::create_symlink("nowhere", "cad/.KORVANTHEMIX/dangling.prt.xml");
  const Ran check = Check();
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.out, "cad/.KORVANTHEMIX/dangling.prt.xml: is no regular file\n" + Record("first") +
                           ": is no regular file\n" + Record("part") + ": is no regular file\n1 record, 3 findings\n");
  const Ran status = Status();
  EXPECT_EQ(status.status, 1);
  EXPECT_THAT(status.out, AllOf(HasSubstr("X cad/first.prt.1: " + Record("first") + ": Is a directory\n"),
                                HasSubstr("X cad/part.prt.1: " + Record("part") + ": ")));
  for (const char* name : {"dangling", "first", "part"}) {
    EXPECT_THAT(status.err, HasSubstr(Record(name) + ": is no regular file"));
  }

  fs::remove_all("cad/.KORVANTHEMIX");
  for (const char* kind : {"file", "link"}) {
    if (kind == std::string("file")) {
      Put("cad/.KORVANTHEMIX", "in the way");
    } else {
      fs::remove("cad/.KORVANTHEMIX");
      fs::create_symlink("nowhere", "cad/.KORVANTHEMIX");
    }
    const std::string fault = kind == std::string("file") ? "is no folder" : "is a link to nothing";
    EXPECT_EQ(Check().status, 1);
    EXPECT_EQ(Check().out, "cad/.KORVANTHEMIX: " + fault + "\n0 records, 1 finding\n");
    EXPECT_EQ(Status().status, 1);
    EXPECT_THAT(Status().err, HasSubstr("cad/.KORVANTHEMIX: " + fault));
  }
}

TEST_F(RightsTest, formats_to_come_are_named_where_they_count_as_new_and_where_they_are_replaced) {
  Put(Record("part"), "<object version='9.9'/>");
  const Ran recognized = Recognize();
  EXPECT_EQ(recognized.status, 0);
  EXPECT_THAT(recognized.err, AllOf(HasSubstr("2 EXISTS, 0 MODIFIED, 1 UNKNOWN"),
                                    HasSubstr("lrd: " + Record("part") + ": unknown format version \"9.9\"")));
  EXPECT_EQ(Lrd({"recognize", "request.xml", "--config", "config.xml", "--strict"}).status, 1);

  Put("answer.xml", "<response cname='checkoutEx'><info>" + Objects() + "</info></response>");
  const Ran recorded = Lrd({"record", "answer.xml", "--config", "config.xml"});
  EXPECT_EQ(recorded.status, 0);
  EXPECT_EQ(recorded.err,
            "lrd: " + Record("part") + ": takes the place of a record of the unknown format version \"9.9\"\n");
}

TEST_F(RightsTest, output_goes_behind_a_link_or_nowhere) {
  Put("closed/out.xml", "before");
  Put("request.xml", "<command cname='synclocalrecognition'>" + Objects() + "</command>");
  fs::create_symlink("closed/out.xml", "link.xml");
  chmod("closed", 0);
  for (const std::string out : {"link.xml", "closed/out.xml", "closed/folder/out.xml"}) {
    const Ran ran = Lrd({"recognize", "request.xml", "--config", "config.xml", "-o", out});
    EXPECT_EQ(ran.status, 2);
    EXPECT_EQ(ran.err, "lrd: " + out + ": Permission denied\n");
  }
  chmod("closed", 0777);
  EXPECT_TRUE(fs::is_symlink("link.xml"));
  EXPECT_EQ(Slurp("closed/out.xml"), "before");
}

TEST_F(RightsTest, recording_as_the_superuser_does_not_lock_the_user_out) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "needs root";
  }
  ASSERT_EQ(chown(Record("part").c_str(), 65534, 65534), 0);
  ASSERT_EQ(chmod(Record("part").c_str(), 0600), 0);
  Put("answer.xml", "<response cname='checkoutEx'><info>" + Objects() + "</info></response>");
  const std::string command = "LD_LIBRARY_PATH=. ./lrd record answer.xml --config config.xml > out";
  ASSERT_EQ(std::system(command.c_str()), 0);
  struct stat facts {};
  ASSERT_EQ(stat(Record("part").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_uid, 65534U);
  EXPECT_EQ(facts.st_mode & 07777U, 0600U);
}

}  // namespace
