#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMCheckFailure.h"
#include "tests/support/FailingDom.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestConfiguration.h"
#include "tests/support/TestLayer.h"
#include "tests/support/TraceLines.h"
#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class RecordFileTest : public ModuleTest {
 protected:
  Record Read(const std::string& text) {
    folder_.Put("read.xml", text);
    Record record;
    EXPECT_EQ(handler_->ReadLRDFile(folder_.At("read.xml"), record), S_OK);
    return record;
  }
  /// Of reading what holds no record: the handle stays.
  HRESULT Status(const std::string& text, const std::string& name = "read.xml") {
    folder_.Put("read.xml", text);
    Record record = Plain();
    const Record before = record;
    const HRESULT status = handler_->ReadLRDFile(folder_.At(name), record);
    EXPECT_EQ(record, before);
    return status;
  }
  /// A selected record of the oldest format with that record file.
  Record At(const std::string& path, const std::string& phid = "P", const std::string& flag = "selected='true'") const {
    Record record = Made<QELXVARDOSFullLRDObject>("<o phid='" + phid + "' " + flag + "/>");
    record->SetLRDFilePath(QELVARDOSPath(folder_.At(path)));
    return record;
  }

  ScratchFolder folder_;
  const ZYMHandle<QELXVARDOSLRDXMLHandler> handler_ = ZYMMakeComponent<QELXVARDOSLRDXMLHandler>();
};

std::string Object(const std::string& phid, const std::string& nested = "") {
  return "<object>" + Core(phid) + nested + "</object>";
}
/// What is written of a record of At.
std::string Written(const std::string& phid) {
  return "<object><phid>" + phid +
         "</phid><objectChangeStamp></objectChangeStamp><ceStamp></ceStamp><hashcode></hashcode></object>";
}

TEST_F(RecordFileTest, nested_elements_go_to_the_lists_of_their_kind_and_other_elements_are_passed_over) {
  const Record record =
      Read("<object>text<!--c-->" + Core("top") + "<rel id='1'><phid>R1</phid><structure>" + Core("deep") +
           "</structure></rel><cadobject/><structure>" + Core("K1") + "</structure><other>" + Object("hidden") +
           "</other><composition>" + Core("C") + "</composition>" + Object("O", Object("below")) +
           "<rel><phid>R2</phid></rel><structure>" + Core("K2") + "</structure></object>");
  EXPECT_EQ(Phids(record->GetChildren()), "R1 K1 C O R2 K2 ");
  EXPECT_EQ(Phids(record->GetChildRelationships()), "R1 R2 ");
  EXPECT_EQ(Phids(record->GetRelatedChildren()), "K1 K2 ");
  EXPECT_EQ(Phids(record->GetChildren()[1]->GetRelatedChildren()), "deep ");
  EXPECT_EQ(Phids(record->GetChildren()[4]->GetChildren()), "below ");
  Record composition;
  record->GetCompositionLRDObject(composition);
  EXPECT_TRUE(composition.IsNull());
  EXPECT_EQ(record->GetRelatedChildren()[1]->GetParentRelationships().Size(), 0);
}

TEST_F(RecordFileTest, records_nested_deeper_than_256_are_refused_wherever_they_stand) {
  std::string nested;
  for (int depth = 0; depth <= 256; ++depth) {
    nested = Object("P", nested);
  }
  std::string deepest;
  std::string end;
  for (int depth = 0; depth < 100'000; ++depth) {
    deepest += "<object>" + (depth < 300 ? Core() : std::string());
    end += "</object>";
  }
  EXPECT_FALSE(Read(nested).IsNull());
  for (const std::string& text : {Object("P", nested), Object("P", nested + Object("good")),
                                  Object("P", Object("good") + nested), deepest + end, deepest + end + "<!---->"}) {
    EXPECT_EQ(Status(text), E_FAIL);
    EXPECT_EQ(QELVARDOSSystemUtils::LastError(), folder_.At("read.xml") + ": records are nested too deep");
  }
}

TEST_F(RecordFileTest,
       what_holds_no_record_leaves_the_handle_and_fails_when_it_does_not_parse_or_raises_when_it_lacks) {
  const TraceLines trace;
  for (const std::string& text :
       {"<object version='5.0'>" + Object("P") + "</object>", "<objects>" + Object("P") + "</objects>"}) {
    EXPECT_EQ(Status(text), S_OK) << text;
  }
  for (const std::string& text :
       {std::string(), Object("P").substr(0, 40), "<!DOCTYPE object [<!ENTITY e 'x'>]>" + Object("P")}) {
    EXPECT_EQ(Status(text), E_FAIL) << text;
  }
  EXPECT_EQ(Status("", "none.xml"), E_FAIL);
  EXPECT_THAT(trace.all, Contains("Failed in ZYMIXMLDOMDocumentBuilder::Parse").Times(4));
  const std::string incomplete = "<structure><phid/><ceStamp/><hashcode/></structure>";
  for (const std::string& text : {incomplete, Object("P", incomplete), std::string("<object/>")}) {
    EXPECT_THROW(Status(text), ZYMNullHandleError) << text;
  }
}

TEST_F(RecordFileTest, records_are_written_as_deep_as_they_can_be_read) {
  using Maker = Record (*)();
  const Maker full = [] { return FullV4("<o/>"); };
  // A plain record nests what is to be written alone.
  const Maker plain = [] {
    Record record = Plain();
    record->CopyFromLRDObject(FullV4("<o/>"));
    return record;
  };
  /// The first and the last of a chain of records.
  const auto chain = [](Maker make, int length) {
    const Record top = make();
    Record last = top;
    for (int made = 1; made < length; ++made) {
      const Record next = make();
      last->AddChild(next);
      last = next;
    }
    return std::pair{top, last};
  };
  ZYMIDOMElement_var element;
  for (const Maker make : {full, plain}) {
    for (const auto& [depth, written] : {std::pair{256, true}, std::pair{257, false}, std::pair{10'000, false}}) {
      const auto [top, last] = chain(make, depth);
      last->AddChild(Made<QELXVARDOSChildLRDObject_V4>("<o/>", ZYMUnicodeString("deepest")));
      const std::string name = std::to_string(depth) + top->IsA();
      top->SetLRDFilePath(QELVARDOSPath(folder_.At(name)));
      QELVARDOSSystemUtils::SetLastError("none");
      EXPECT_EQ(top->GetXMLFormat({}, element), written ? S_OK : E_FAIL) << name;
      EXPECT_EQ(QELVARDOSSystemUtils::LastError(), written ? "none" : "records are nested too deep");
      handler_->WriteToFile(Records{top});
      ASSERT_EQ(std::filesystem::exists(folder_.At(name)), written) << name;
      Record read;
      EXPECT_EQ(handler_->ReadLRDFile(folder_.At(name), read), written ? S_OK : E_FAIL) << name;
      int deep = 0;
      for (; read && read->GetChildren().Size() != 0; read = Record(read->GetChildren()[1])) {
        ++deep;
      }
      EXPECT_EQ(deep, written ? 256 : 0);
      EXPECT_EQ(written ? read->GetId() : "deepest", "deepest");
    }
    // A circle ends where it began; one that is longer ends like a chain.
    for (const auto& [length, status] : {std::pair{257, S_OK}, std::pair{258, E_FAIL}}) {
      const auto [top, last] = chain(make, length);
      last->AddChild(top);
      EXPECT_EQ(top->GetXMLFormat({}, element), status) << length << top->IsA();
      last->CopyFromLRDObject(Plain());
    }
  }
}

TEST_F(RecordFileTest, a_failing_step_of_reading_or_writing_leaves_neither_components_nor_a_changed_file) {
  const std::string text =
      "<object version=\"4.0\">" + Core("P", "1", MacroAndXS) + "<rel id=\"r\"><phid>R</phid></rel></object>";
  const Record record = Read(text);
  folder_.Put("old.xml", "old");
  record->SetLRDFilePath(QELVARDOSPath(folder_.At("old.xml")));
  ZYMObserveCheckFailures([](std::string_view, std::string_view, int) {});
  int failures = 0;
  FailingDom::FailEach([&](const FailingDom& /*dom*/) {
    Record read;
    try {
      failures +=
          FAILED(ZYMMakeComponent<QELXVARDOSLRDXMLHandler>()->ReadLRDFile(folder_.At("read.xml"), read)) ? 1 : 0;
    } catch (const ZYMNullHandleError&) {
      EXPECT_TRUE(read.IsNull());
    }
  });
  EXPECT_EQ(failures, 2) << "to parse and to find the root";
  FailingDom::FailEach([&](const FailingDom& dom) {
    HRESULT status = S_OK;
    try {
      status = ZYMMakeComponent<QELXVARDOSLRDXMLHandler>()->WriteToFile(Records{record});
    } catch (const ZYMNullHandleError&) {
      EXPECT_TRUE(dom.HasFailed());
    }
    EXPECT_EQ(status, S_OK);
    EXPECT_EQ(folder_.File("old.xml"), dom.HasFailed() ? "old" : text);
  });
  ZYMObserveCheckFailures(nullptr);
}

TEST_F(RecordFileTest, a_list_of_records_is_written_whatever_becomes_of_one_of_them) {
  folder_.Put("childless.xml", "old");
  folder_.Put("forbidden.xml", "old");
  std::filesystem::create_directories(folder_.At(".KORVANTHEMIX/deeper"));
  std::filesystem::create_directories(folder_.At("folder"));
  const TraceLines trace;
  const Record childless = Plain();
  childless->SetLRDFilePath(QELVARDOSPath(folder_.At("childless.xml")));
  const Record forbidden = At("forbidden.xml");
  forbidden->SetHashcode("\x01");
  const std::string leaving = ".KORVANTHEMIX/../out.xml";
  EXPECT_EQ(handler_->WriteToFile(Records{At("folder/../first.xml", "1"), forbidden, At("vanished/file.xml"), childless,
                                          At(leaving), At(".KORVANTHEMIX/deeper//../out.xml"), At("twice.xml", "2"),
                                          At("twice.xml", "last"), At(".KORVANTHEMIX/../first.xml"),
                                          At(".KORVANTHEMIX/..dots.xml", "dots")}),
            S_OK);
  EXPECT_EQ(folder_.File("first.xml"), Written("1"));
  EXPECT_EQ(folder_.File("twice.xml"), Written("last"));
  EXPECT_EQ(folder_.File(".KORVANTHEMIX/..dots.xml"), Written("dots"));
  EXPECT_EQ(folder_.File("forbidden.xml") + folder_.File("childless.xml"), "oldold");
  EXPECT_EQ(folder_.FileCount(), 5) << "nothing else is left";
  EXPECT_THAT(trace.all, Contains("Refused to leave the record folder : " + folder_.At(leaving)));
  EXPECT_THAT(trace.all, Contains("Wrinting into file : " + folder_.At("vanished/file.xml")));
  EXPECT_THAT(trace.all, Contains(HasSubstr("U+0001")));
  EXPECT_EQ(handler_->WriteToFile({}), S_OK);
}

TEST_F(RecordFileTest, the_same_bytes_leave_the_file_untouched) {
  const Records records{At("same.xml"), At("changed.xml")};
  handler_->WriteToFile(records);
  const auto written = std::filesystem::last_write_time(folder_.At("same.xml"));
  records[2]->SetHashcode("new");
  const TestLayer layer;
  handler_->WriteToFile(records);
  EXPECT_THAT(layer.Changes(),
              ElementsAre(HasSubstr("WriteNew"), HasSubstr("MakeDurable"), "Rename " + folder_.At("changed.xml"),
                          "MakeFoldersDurable " + folder_.Root()));
  EXPECT_EQ(std::filesystem::last_write_time(folder_.At("same.xml")), written);
}

class SmallRecords : public TestConfiguration {
 public:
  std::uint64_t GetLargestRecordFile() override { return 400; }
};

TEST_F(RecordFileTest, what_is_larger_than_can_be_read_is_neither_read_nor_written) {
  const auto handler =
      ZYMMakeComponent<QELXVARDOSLRDXMLHandler>(QELIVARDOSGlobalConfigObject_var(ZYMMakeComponent<SmallRecords>()));
  folder_.Put("read.xml", Object(std::string(400, 'P')));
  Record record;
  EXPECT_EQ(handler->ReadLRDFile(folder_.At("read.xml"), record), E_FAIL);
  EXPECT_EQ(QELVARDOSSystemUtils::LastError(), folder_.At("read.xml") + ": File too large");
  EXPECT_EQ(handler_->ReadLRDFile(folder_.At("read.xml"), record), S_OK);
  folder_.Put("large.xml", "old");
  const TraceLines trace;
  handler->WriteToFile(Records{At("large.xml", std::string(400, 'P')), At("small.xml")});
  EXPECT_EQ(folder_.File("large.xml"), "old");
  EXPECT_EQ(folder_.File("small.xml"), Written("P"));
  EXPECT_THAT(trace.all, Contains("Failed to write file : " + folder_.At("large.xml") + ": File too large"));
}

TEST_F(RecordFileTest, an_observer_hears_of_records_of_formats_to_come) {
  class Formats : public QELXIVARDOSObserver {
   public:
    void UnknownFormat(const ZYMUnicodeString& recordFile, const ZYMUnicodeString& version) override {
      heard.push_back(recordFile.Str() + " " + version.Str());
    }
    std::vector<std::string> heard;
  };
  Formats formats;
  handler_->SetObserver(&formats);
  const std::string path = folder_.At("read.xml");
  EXPECT_EQ(Status("<object version='9.9'/>"), S_OK);
  EXPECT_THAT(formats.heard, ElementsAre(path + " 9.9"));
  EXPECT_EQ(Status("<strange version='9.9'/>"), S_OK);
  folder_.Put("known.xml", Object("old"));
  folder_.Put("broken.xml", "<object version='9.9'");
  handler_->WriteToFile(Records{At("read.xml"), At("known.xml"), At("new.xml"), At("broken.xml")});
  EXPECT_THAT(formats.heard, ElementsAre(path + " 9.9")) << "the strange element is no record";
  folder_.Put("read.xml", "<object version='5.0'/>");
  handler_->WriteToFile(Records{At("read.xml")});
  handler_->WriteToFile(Records{At("read.xml")});
  EXPECT_THAT(formats.heard, ElementsAre(path + " 9.9", path + " 5.0"));
}

TEST_F(RecordFileTest, the_records_before_one_that_raises_are_written) {
  const Record raising = At("raising.xml");
  raising->AddChild(nullptr);
  EXPECT_THROW(handler_->WriteToFile(Records{At("before.xml"), raising, At("behind.xml")}), ZYMNullHandleError);
  EXPECT_EQ(folder_.File("before.xml"), Written("P"));
  EXPECT_EQ(folder_.FileCount(), 1);
}

TEST_F(RecordFileTest, folders_are_made_and_hidden_for_selected_records_with_a_file_of_their_own) {
  const std::string a = folder_.At("a/.KORVANTHEMIX");
  const std::string b = folder_.At("b/.KORVANTHEMIX");
  const Records records{At("a/.KORVANTHEMIX/1.xml"),      At("a/.KORVANTHEMIX/2.xml"),
                        At("c/1.xml", "P", ""),           At("c/2.xml"),
                        At("a/.KORVANTHEMIX/../c/1.xml"), At("b/.KORVANTHEMIX/1.xml", "P", "download='true'")};
  records[4]->AddTypeClass("TYPE_OBJECT_WITHOUT_FILE");
  records[6]->AddTypeClass("TYPE_KORVANTHEMIX_LIKE");
  std::filesystem::create_directory(folder_.At("a"));
  std::filesystem::create_directory(folder_.At("b"));
  const TestLayer layer;
  const TraceLines trace;
  EXPECT_EQ(handler_->CreateAndHideLRDFolder(records), S_OK);
  EXPECT_THAT(layer.Changes(), ElementsAre("MakeFolder " + a, "HideFolder " + a, "MakeFolder " + b, "HideFolder " + b,
                                           "MakeFoldersDurable " + folder_.At("a ") + folder_.At("b")));
  EXPECT_THAT(trace.all, ElementsAre("QELXVARDOSLRDXMLHandler::CreateAndHideLRDFolder", "Directory Created : " + a,
                                     "Directory is marked hidden : " + a, "Directory is already on disc: " + a,
                                     "Refused to leave the record folder : " + a + "/../c", "Directory Created : " + b,
                                     "Directory is marked hidden : " + b, "returns 0"));
}

TEST_F(RecordFileTest, of_folders_that_cannot_be_made_or_may_be_lost_the_last_one_to_be_made_decides_the_status) {
  folder_.Put("file", "in the way");
  const auto status = [this](const std::string& unflushable, const std::string& first, const std::string& last) {
    for (const std::string& folder : {first, last}) {
      std::filesystem::create_directory(folder_.At(folder));
    }
    TestLayer layer;
    layer.failing["MakeFoldersDurable " + folder_.At(unflushable)] = std::errc::io_error;
    return handler_->CreateAndHideLRDFolder(
        Records{At("file/.KORVANTHEMIX/1.xml"), At(first + "/.KORVANTHEMIX/1.xml"), At(last + "/.KORVANTHEMIX/1.xml")});
  };
  EXPECT_EQ(status("none", "a", "b"), S_OK);
  EXPECT_EQ(status("none", "a", "b"), E_FAIL) << "those two are there";
  EXPECT_EQ(status("c", "c", "d"), S_OK);
  EXPECT_EQ(status("f", "e", "f"), E_FAIL);
  EXPECT_EQ(handler_->CreateAndHideLRDFolder({}), S_OK);
}

TEST_F(RecordFileTest, a_builder_that_cannot_be_made_is_reported_with_the_constructor_that_wanted_it) {
  static std::vector<std::string> reports;
  ZYMObserveCheckFailures([](std::string_view text, std::string_view source, int) {
    reports.push_back(std::string(text) + " " + std::string(source));
  });
  {
    const FailingDom dom(0);
    Record record;
    EXPECT_THROW(ZYMMakeComponent<QELXVARDOSLRDXMLHandler>()->ReadLRDFile("x", record), ZYMNullHandleError);
  }
  ZYMObserveCheckFailures(nullptr);
  EXPECT_THAT(reports, ElementsAre("ExpressionCheck:SUCCEEDED(::CreateZYMIXMLDOMDocumentBuilder(_DocumentBuilder)) "
                                   "QELXVARDOSLRDXMLHandler"));
}

}  // namespace
