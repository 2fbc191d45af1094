#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <iterator>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "tests/memory/AllocationFaults.h"
#include "tests/support/Client.h"
#include "tests/support/ModuleTest.h"

namespace {

using AllocationFaults::Of;

/// Which allocation fails in each run, and whether all behind it do.
struct Faults {
  Of kind;
  bool onward;
};
constexpr Faults OneOfProgram{Of::Program, false};
constexpr Faults OneOfTrees{Of::Trees, false};
constexpr Faults OnwardOfProgram{Of::Program, true};
constexpr Faults OnwardOfTrees{Of::Trees, true};

/// The disk without flushes, which take most of the time of a writing. Notes what was told of the files a and b.
class UnflushedLayer : public QELVARDOSFileLayerFilter {
 public:
  UnflushedLayer() : QELVARDOSFileLayerFilter(System()) { Use(this); }
  ~UnflushedLayer() override { Use(nullptr); }

  std::vector<std::error_code> MakeDurable(const std::vector<std::string>& paths) override {
    return std::vector<std::error_code>(paths.size());
  }
  std::vector<std::error_code> MakeFoldersDurable(const std::vector<std::string>& folders) override {
    return std::vector<std::error_code>(folders.size());
  }
  void Replaced(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& /*error*/) override {
    const bool isFirst = path.at(path.rfind('/') + 1) == 'a';
    (isFirst ? ofA : ofB) = outcome;
  }

  std::optional<QELVARDOSReplacement> ofA;
  std::optional<QELVARDOSReplacement> ofB;
};

std::ptrdiff_t OpenFiles() {
  const std::filesystem::directory_iterator open("/proc/self/fd");
  return std::distance(begin(open), end(open));
}

class AllocationTest : public ModuleTest {
 protected:
  /// Runs call with what prepare answers, once for each allocation that it makes, which fails. judge is told what call
  /// was given and its status, none after std::bad_alloc, and whether an allocation failed. Neither components nor
  /// memory nor open files may stay.
  template <typename Prepare, typename Call, typename Judge>
  static void FailEach(const Faults& faults, const Prepare& prepare, const Call& call, const Judge& judge) {
    MakeWhatStays(prepare, call);
    bool failed = true;
    for (int successes = 0; failed; ++successes) {
      SCOPED_TRACE(std::to_string(successes) + " allocations succeed");
      ASSERT_LT(successes, 5000);
      const std::array before{ZYMBaseUnknown::LivingComponents(), AllocationFaults::Living(), OpenFiles()};
      {
        auto prepared = prepare();
        std::optional<HRESULT> status;
        AllocationFaults::FailAfter(successes, faults.kind, faults.onward);
        try {
          status = call(prepared);
        } catch (const std::bad_alloc&) {
          status = std::nullopt;
        }
        failed = AllocationFaults::Stop();
        judge(prepared, status, failed);
      }
      ASSERT_EQ((std::array{ZYMBaseUnknown::LivingComponents(), AllocationFaults::Living(), OpenFiles()}), before);
    }
  }

 private:
  /// What is made once and kept, by us or by the libraries, is made here. A message that is longer than any keeps its
  /// room.
  template <typename Prepare, typename Call>
  static void MakeWhatStays(const Prepare& prepare, const Call& call) {
    SCOPED_TRACE("");
    auto prepared = prepare();
    call(prepared);
    QELVARDOSSystemUtils::SetLastError(std::string(1000, 'x'));
  }
};

// So long that a tree allocates room for it alone.
const std::string Long(100'000, 'C');

bool Succeeded(std::optional<HRESULT> status) { return status && SUCCEEDED(*status); }

TEST_F(AllocationTest, recognition_ends_with_a_failure_or_with_the_right_verdicts) {
  const Client client(Long);
  ASSERT_EQ(client.RecordAnswer(client.Root("answer.xml")), S_OK);
  const auto request = [&client] { return client.Root("request.xml"); };
  const auto recognise = [&client](const ZYMIDOMElement_var& root) { return client.Recognize(root); };
  const ZYMIDOMElement_var recognised = request();
  ASSERT_EQ(recognise(recognised), S_OK);
  const std::string right = Client::TextOf(recognised);
  for (const Faults& faults : {OneOfProgram, OnwardOfProgram, OneOfTrees, OnwardOfTrees}) {
    FailEach(faults, request, recognise,
             [&right](const ZYMIDOMElement_var& root, std::optional<HRESULT> status, bool failed) {
               EXPECT_TRUE(failed || Succeeded(status));
               EXPECT_TRUE(!Succeeded(status) || Client::TextOf(root) == right);
             });
  }
}

TEST_F(AllocationTest, recording_leaves_each_record_old_or_new_and_nothing_else_and_tells_which) {
  const Client client(Long);
  UnflushedLayer layer;
  const auto content = [&client] { return std::array{client.folder.Record("a.prt"), client.folder.Record("b.prt")}; };
  ASSERT_EQ(client.RecordAnswer(client.Root("answer.xml")), S_OK);
  const std::array<std::string, 2> written = content();
  const int others = client.folder.FileCount() - 2;
  const auto oldRecordOfA = [&] {
    std::filesystem::remove_all(client.folder.At(".KORVANTHEMIX"));
    client.folder.PutRecord("a.prt", "old");
    layer.ofA = layer.ofB = std::nullopt;
    return client.Root("answer.xml");
  };
  const auto record = [&client](const ZYMIDOMElement_var& root) { return client.RecordAnswer(root); };
  for (const Faults& faults : {OneOfProgram, OnwardOfProgram, OneOfTrees, OnwardOfTrees}) {
    FailEach(faults, oldRecordOfA, record,
             [&](const ZYMIDOMElement_var& /*root*/, std::optional<HRESULT> status, bool failed) {
               const auto [a, b] = content();
               EXPECT_TRUE(a == written[0] || (failed && a == "old")) << "the record is torn";
               EXPECT_TRUE(b == written[1] || (failed && b.empty())) << "the record is torn";
               EXPECT_EQ(client.folder.FileCount(), others + (b.empty() ? 1 : 2)) << "a temporary file is left";
               // What could not be written is in no status, but told.
               if (Succeeded(status)) {
                 using enum QELVARDOSReplacement;
                 EXPECT_EQ(layer.ofA, a == "old" ? Failed : Written);
                 EXPECT_EQ(layer.ofB, b.empty() ? Failed : Written);
               }
             });
  }
}

TEST_F(AllocationTest, reading_a_record_ends_with_a_failure_or_with_the_whole_record) {
  const Client client(Long);
  ASSERT_EQ(client.RecordAnswer(client.Root("answer.xml")), S_OK);
  const std::string whole = client.folder.Record("a.prt");
  // A comment makes it one for the other parser.
  client.folder.Put("not plain.xml", whole + "<!---->");
  for (const std::string& path : {client.folder.At(".KORVANTHEMIX/a.prt.xml"), client.folder.At("not plain.xml")}) {
    for (const Faults& faults : {OneOfProgram, OnwardOfProgram, OneOfTrees, OnwardOfTrees}) {
      FailEach(
          faults, [] { return QELXIVARDOSLRDObject_var(); },
          [&](QELXIVARDOSLRDObject_var& record) { return client.ReadRecord(path, record); },
          [&whole](const QELXIVARDOSLRDObject_var& record, std::optional<HRESULT> status, bool failed) {
            EXPECT_TRUE(failed || Succeeded(status));
            EXPECT_EQ(!record.IsNull(), Succeeded(status));
            ZYMIDOMElement_var element;
            if (record && SUCCEEDED(record->GetXMLFormat({}, element))) {
              EXPECT_TRUE(Client::TextOf(element).ends_with(whole)) << "a part of the record is missing";
            }
          });
    }
  }
}

TEST_F(AllocationTest, an_attribute_is_read_whole_or_the_record_is_not_and_what_is_read_next_is_judged_by_itself) {
  const Client client;
  const std::string core = "<phid/><objectChangeStamp/><ceStamp/><hashcode/>";
  client.folder.Put("record.xml",
                    "<object version='4.0'>" + core + "<structure id='" + Long + "'>" + core + "</structure></object>");
  client.folder.Put("damaged.xml", "<object>");
  struct Reading {
    ZYMIXMLDOMDocumentBuilder_var builder;
    ZYMIDOMDocument_var document;
  };
  const auto prepare = [] {
    Reading reading;
    CreateZYMIXMLDOMDocumentBuilder(reading.builder);
    return reading;
  };
  const auto read = [&client](Reading& reading) {
    return reading.builder->Parse(client.folder.At("record.xml"), {}, {}, reading.document);
  };
  for (const Faults& faults : {OneOfProgram, OneOfTrees}) {
    FailEach(faults, prepare, read, [&client](const Reading& reading, std::optional<HRESULT> status, bool failed) {
      EXPECT_TRUE(failed || Succeeded(status));
      EXPECT_TRUE(!Succeeded(status) || Client::TextOf(reading.document).find(Long) != std::string::npos);
      ZYMIDOMDocument_var damaged;
      EXPECT_EQ(reading.builder->Parse(client.folder.At("damaged.xml"), {}, {}, damaged), E_FAIL);
    });
  }
}

TEST_F(AllocationTest, a_text_is_read_where_it_stands_without_room_for_its_values) {
  const Client client;
  for (const std::string behind : {"", "<!---->"}) {
    std::string text = "<object><phid>" + Long + "</phid><objectChangeStamp/><ceStamp/><hashcode/></object>";
    text += behind;
    client.folder.Put("record", text);
    QELXIVARDOSLRDObject_var record;
    // One page for the nodes.
    AllocationFaults::FailAfter(1, Of::Trees, true);
    const HRESULT read = client.ReadRecord(client.folder.At("record"), record);
    AllocationFaults::Stop();
    EXPECT_EQ(read, S_OK) << behind;
  }
}

}  // namespace
