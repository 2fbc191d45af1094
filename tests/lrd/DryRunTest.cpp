#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "lrd/DryRunLayer.h"
#include "tests/support/ScratchFolder.h"

using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

class DryRunTest : public testing::Test {
 protected:
  std::vector<std::string> List(const std::string& folder) {
    std::vector<std::string> names = {"left over"};
    error_ = layer_.List(folder, names);
    return names;
  }
  bool Exists(const std::string& path) { return layer_.Stat(path).Exists(); }

  ScratchFolder folder_;
  lrd::DryRunLayer layer_{QELVARDOSFileLayer::System()};
  std::error_code error_;
};

TEST_F(DryRunTest, what_is_changed_in_memory_is_seen_by_every_look_and_the_disk_stays) {
  const std::string there = folder_.At("there");
  folder_.PutFile("there", 1);
  EXPECT_FALSE(layer_.MakeFolder(folder_.At("new/")));
  EXPECT_FALSE(layer_.WriteNew(folder_.At("new/one"), "text", ""));
  EXPECT_FALSE(layer_.WriteNew(folder_.At("two"), "2", ""));
  EXPECT_THAT(List(folder_.Root()), UnorderedElementsAre("there", "new", "two"));
  EXPECT_THAT(List(folder_.Root() + "/"), UnorderedElementsAre("there", "new", "two"));
  EXPECT_THAT(List(folder_.At("new")), UnorderedElementsAre("one"));
  EXPECT_THAT(List(folder_.At("new//")), UnorderedElementsAre("one"));

  EXPECT_FALSE(layer_.Rename(folder_.At("new/one"), there));
  std::string bytes;
  EXPECT_FALSE(layer_.Read(there, bytes, QELVARDOSFileLayer::AnySize));
  EXPECT_EQ(bytes, "text");
  EXPECT_EQ(layer_.Stat(there).size, 4U);
  EXPECT_THAT(List(folder_.At("new")), IsEmpty());
  EXPECT_FALSE(layer_.Remove(there));
  EXPECT_FALSE(Exists(there)) << "the one on the disk does not show through";
  EXPECT_TRUE(layer_.Read(there, bytes, QELVARDOSFileLayer::AnySize));
  EXPECT_THAT(List(folder_.Root()), UnorderedElementsAre("new", "two"));
  EXPECT_FALSE(layer_.WriteNew(there, "again", ""));
  EXPECT_TRUE(Exists(there));

  EXPECT_EQ(layer_.WriteNew(folder_.At("none/x"), "", ""), std::errc::no_such_file_or_directory);
  EXPECT_EQ(layer_.WriteNew(folder_.At("two/x"), "", ""), std::errc::not_a_directory);
  EXPECT_EQ(layer_.WriteNew(there, "", ""), std::errc::file_exists);
  EXPECT_THAT(List(folder_.At("two")), IsEmpty());
  EXPECT_EQ(error_, std::errc::not_a_directory);
  EXPECT_THAT(std::vector<std::string>(1, std::filesystem::directory_iterator(folder_.Root())->path()),
              UnorderedElementsAre(there));
}

}  // namespace
