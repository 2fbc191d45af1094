#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "lrd/HostSystem.h"
#include "tests/lrd/LrdTest.h"

namespace {

/// A disk of a few pages in a folder of the working folder, as long as the object lives.
class SmallDisk {
 public:
  explicit SmallDisk(const std::string& folder)
      : folder_(folder),
        isMounted_(std::filesystem::create_directory(folder) &&
                   mount("none", folder.c_str(), "tmpfs", 0, "size=32k") == 0) {}
  ~SmallDisk() {
    if (isMounted_) {
      umount2(folder_.c_str(), MNT_DETACH);
    }
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool IsMounted() const { return isMounted_; }
  /// Takes what room is left.
  void Fill() const {
    const int filler = open((folder_ + "/filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    const std::string page(4096, 'f');
    while (write(filler, page.data(), page.size()) > 0) {
    }
    EXPECT_EQ(errno, ENOSPC);
    close(filler);
  }

 private:
  std::string folder_;
  bool isMounted_;
};

/// Outputs that cannot take what they are sent.
class OutputTest : public LrdTest {
 protected:
  OutputTest() {
    PutObject("work", "a.prt.1", "a.prt", Record("PH-1"));
    Put("request.xml", Request("<cadobject cadid='1' filename='a.prt.1' dirname='work'/>"));
    Put("response.xml", CheckOut("work", {"a"}));
  }
};

TEST_F(OutputTest, a_socket_is_refused_at_once_and_an_older_error_does_not_make_a_failure) {
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{AF_UNIX, "socket"};
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  const Ran ran = Run(
      {"/usr/bin/timeout", "20", LRD_PROGRAM, "recognize", "request.xml", "--config", "config.xml", "-o", "socket"});
  close(listener);
  EXPECT_EQ(ran.status, 2);
  EXPECT_THAT(ran.err, testing::EndsWith("/socket: No such device or address\n"));
  errno = EIO;
  EXPECT_FALSE(lrd::WriteToDevice("/dev/null", "text"));
}

TEST_F(OutputTest, a_disk_that_is_full_keeps_what_it_has_and_is_told_by_every_command_that_writes) {
  const SmallDisk disk("small");
  if (!disk.IsMounted()) {
    GTEST_SKIP() << "nothing can be mounted here";
  }
  PutObject("small", "old.prt.1", "old.prt", Record("PH-1"));
  Put("small/out.xml", "as it was");
  disk.Fill();
  Put("response.xml", CheckOut("small", {"new", "old"}));
  const auto before = State();
  const auto expect = [](const Ran& ran, int status, const std::string& complaints) {
    EXPECT_EQ(ran.status, status);
    EXPECT_EQ(ran.err, complaints);
  };
  const std::string full = ": No space left on device\n";
  expect(Lrd({"record", "response.xml", "--config", "config.xml"}), 1,
         "lrd: small/.KORVANTHEMIX/new.prt.xml" + full + "lrd: small/.KORVANTHEMIX/old.prt.xml" + full);
  expect(Lrd({"recognize", "request.xml", "--config", "config.xml", "-o", "small/out.xml"}), 2,
         "lrd: " + std::filesystem::canonical("small/out.xml").string() + full);
  expect(Lrd({"--trace", "small/empty", "recognize", "request.xml", "--config", "config.xml"}), 2,
         "lrd: small/empty" + full);
  const int output = open("small/empty", O_WRONLY | O_CLOEXEC);
  for (const Arguments& arguments :
       {Arguments{"recognize", "request.xml", "--config", "config.xml"}, Arguments{"check", "work"},
        Arguments{"record", "response.xml", "--config", "config.xml", "--dry-run"}}) {
    expect(Lrd(arguments, output), 2, "lrd: standard output" + full);
  }
  close(output);
  std::filesystem::remove("small/empty");
  EXPECT_TRUE(State() == before) << "something is lost or left over";
}

}  // namespace
