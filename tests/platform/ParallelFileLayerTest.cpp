#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>

#include "platform/QELVARDOSParallelFileLayer.h"

namespace {

using Kind = QELVARDOSFileLook::Kind;
using Looks = std::vector<QELVARDOSFileLook>;

/// A disk without files but for those put here, which counts the looks in the thread of the test and in others.
class CountingDisk : public QELVARDOSFileLayerFilter {
 public:
  CountingDisk() : QELVARDOSFileLayerFilter(System()) {}

  QELVARDOSFileFacts Stat(const std::string& path) override {
    const Count count(*this);
    if (path == "raises") {
      throw std::runtime_error("raised");
    }
    QELVARDOSFileFacts facts;
    facts.size = path.size();
    return facts;
  }
  std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) override {
    const Count count(*this);
    const auto file = files.find(path);
    if (file == files.end()) {
      return std::make_error_code(std::errc::permission_denied);
    }
    bytes = file->second;
    return bytes.size() > atMost ? std::make_error_code(std::errc::file_too_large) : std::error_code();
  }
  void BeginLookups() override { ++open; }
  void EndLookups() override { --open; }
  std::error_code Remove(const std::string& /*path*/) override { return {}; }

  /// Waits until so many looks were taken in other threads.
  void AwaitElsewhere(int looks) const {
    while (elsewhere < looks) {
      std::this_thread::yield();
    }
  }

  std::map<std::string, std::string> files;
  std::atomic<int> delay = 0;  ///< microseconds
  std::atomic<int> here = 0;
  std::atomic<int> elsewhere = 0;
  /// The threads between BeginLookups and EndLookups.
  std::atomic<int> open = 0;

 private:
  struct Count {
    explicit Count(CountingDisk& counting) : disk(counting) {
      std::this_thread::sleep_for(std::chrono::microseconds(disk.delay));
    }
    ~Count() { ++(std::this_thread::get_id() == disk.test_ ? disk.here : disk.elsewhere); }
    Count(const Count&) = delete;
    Count& operator=(const Count&) = delete;
    CountingDisk& disk;
  };

  const std::thread::id test_ = std::this_thread::get_id();
};

class ParallelFileLayerTest : public testing::Test {
 protected:
  void Begin() { layer_.BeginLookups(); }
  void End() { layer_.EndLookups(); }
  std::string Content(const std::string& path) {
    std::string bytes;
    EXPECT_FALSE(layer_.Read(path, bytes, QELVARDOSFileLayer::AnySize)) << path;
    return bytes;
  }

  CountingDisk disk_;
  QELVARDOSParallelFileLayer layer_{disk_, 4};
};

TEST_F(ParallelFileLayerTest, a_look_that_was_told_of_is_taken_elsewhere_and_handed_out_once) {
  disk_.files["file"] = "content";
  Begin();
  layer_.LookAhead({{"file", Kind::Facts}, {"file", Kind::Content}, {"refused", Kind::Content}});
  disk_.AwaitElsewhere(3);
  std::string bytes;
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(layer_.Stat("file").size, 4U);
    EXPECT_EQ(layer_.Stat("file").size, 4U) << "twice in a row it is one look";
    EXPECT_EQ(Content("file"), "content");
    EXPECT_EQ(layer_.Read("refused", bytes, 1), std::errc::permission_denied);
    EXPECT_EQ(disk_.here, 2 * round) << "the facts are still those that were asked for last";
  }
  layer_.LookAhead({{"file", Kind::Content}});
  disk_.AwaitElsewhere(4);
  EXPECT_EQ(layer_.Read("file", bytes, 6), std::errc::file_too_large);
  End();
}

TEST_F(ParallelFileLayerTest, a_look_that_runs_is_waited_for) {
  disk_.delay = 50000;
  Begin();
  layer_.LookAhead({{"file", Kind::Facts}});
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(layer_.Stat("file").size, 4U);
  EXPECT_EQ(disk_.here + disk_.elsewhere, 1);
  End();
}

TEST_F(ParallelFileLayerTest, a_change_loses_what_was_seen_at_the_path_and_below) {
  Begin();
  layer_.LookAhead({{"a", Kind::Facts}, {"a/b", Kind::Facts}, {"a.b", Kind::Facts}});
  disk_.AwaitElsewhere(3);
  layer_.Remove("a");
  layer_.Stat("a.b");
  EXPECT_EQ(disk_.here, 0);
  layer_.Stat("a");
  layer_.Stat("a/b");
  EXPECT_EQ(disk_.here, 2);
  End();
}

TEST_F(ParallelFileLayerTest, nothing_outlives_the_outermost_lookups) {
  layer_.LookAhead({{"too early", Kind::Facts}});
  Begin();
  Begin();
  layer_.LookAhead({{"held", Kind::Facts}});
  disk_.AwaitElsewhere(1);
  End();
  EXPECT_GT(disk_.open, 1);
  layer_.LookAhead(Looks(20, {"running", Kind::Content}));
  End();
  EXPECT_EQ(disk_.open, 0);
  Begin();
  layer_.Stat("held");
  EXPECT_EQ(disk_.here, 1);
  End();
}

TEST_F(ParallelFileLayerTest, what_raises_raises_where_it_is_asked_for) {
  Begin();
  layer_.LookAhead({{"raises", Kind::Facts}, {"file", Kind::Facts}});
  disk_.AwaitElsewhere(2);
  EXPECT_THROW(layer_.Stat("raises"), std::runtime_error);
  EXPECT_EQ(layer_.Stat("file").size, 4U);
  End();
}

TEST_F(ParallelFileLayerTest, no_more_is_held_than_there_is_room_for_and_nothing_is_lost) {
  constexpr std::size_t Size = std::size_t{200} << 10U;
  Looks looks{{"large", Kind::Content}};
  disk_.files["large"] = std::string(std::size_t{300} << 10U, 'l');
  for (int number = 0; number < 100; ++number) {
    looks.push_back({std::to_string(number), Kind::Content});
    disk_.files[looks.back().path] = std::string(Size, static_cast<char>('0' + number % 10));
  }
  Begin();
  layer_.LookAhead(Looks(looks));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_LE(static_cast<std::size_t>(disk_.elsewhere) * Size, std::size_t{17} << 20U);
  for (const QELVARDOSFileLook& look : looks) {
    EXPECT_EQ(Content(look.path), disk_.files[look.path]) << look.path;
  }
  End();
}

TEST_F(ParallelFileLayerTest, what_an_earlier_notice_told_of_is_forgotten) {
  Begin();
  layer_.LookAhead({{"first", Kind::Facts}});
  layer_.LookAhead({{"second", Kind::Facts}});
  layer_.LookAhead({{"third", Kind::Facts}});
  disk_.AwaitElsewhere(2);
  layer_.Stat("first");
  EXPECT_EQ(disk_.here, 1);
  End();
}

TEST(ParallelFileLayerPaceTest, notice_is_wanted_where_looks_are_slow_and_for_as_long_as_it_pays) {
  CountingDisk disk;
  QELVARDOSParallelFileLayer layer(disk);
  layer.BeginLookups();
  const auto look = [&layer](int times) {
    for (int number = 0; number < times; ++number) {
      layer.Stat(std::to_string(number));
    }
  };
  look(100);
  EXPECT_FALSE(layer.WantsNotice());
  disk.delay = 1000;
  look(1100);
  EXPECT_TRUE(layer.WantsNotice());
  for (int notice = 0; notice < 200 && layer.WantsNotice(); ++notice) {
    const std::string path = std::to_string(notice);
    layer.LookAhead({{path, Kind::Facts}});
    layer.Stat(path);
  }
  EXPECT_FALSE(layer.WantsNotice()) << "whoever tells of a look and asks at once waits as long as before";
  layer.EndLookups();
  EXPECT_FALSE(QELVARDOSParallelFileLayer(disk, 1).WantsNotice());
}

}  // namespace
