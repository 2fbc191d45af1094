#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "tests/support/FailingDom.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestConfiguration.h"

using testing::HasSubstr;

namespace {

using CacheInformation = ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico;

class WriteBackTest : public ModuleTest {
 protected:
  /// Records with these CAD ids; the physical id of a is "PHa", so that each key is found in its own map alone.
  static RecordMap ByCadId(const std::string& ids) { return Map(ids, ""); }
  static RecordMap ByPhid(const std::string& ids) { return Map(ids, "PH"); }
  std::string Object(const std::string& id, const std::string& attributes = "") const {
    return "<cadobject cadid='" + id + "' phid='PH" + id + "' dirname='" + folder_.Root() + "' " + attributes + "/>";
  }
  static ZYMIDOMElement_var InRoot(const std::string& objects) {
    return Tree("<command cname='checkinEx'><cadobjectlist>text" + objects + "</cadobjectlist></command>");
  }
  static RecordMap Map(const std::string& ids, const std::string& beforeKeys) {
    RecordMap map;
    for (const char id : ids) {
      map.Insert(beforeKeys + id, WithId(std::string(1, id)));
    }
    return map;
  }
  static Record WithId(const std::string& id) {
    return FullV4("<o cadid='" + id + "' phid='PH" + id + "' hashcode='H" + id + "' mxtype='T" + id + "' filename='" +
                  id + ".prt.2' dirname='/old'/>");
  }

  ScratchFolder folder_;
  const TestConfiguration_var config_ = ZYMMakeComponent<TestConfiguration>();
  const ZYMHandle<QELXVARDOSRecognitionHandler> handler_ = ZYMMakeComponent<QELXVARDOSRecognitionHandler>(
      ZYMUnicodeString("CREO"), QELIVARDOSGlobalConfigObject_var(config_));
};

TEST_F(WriteBackTest, a_failing_search_for_the_information_is_the_status_and_leaves_all_as_it_was) {
  const RecordMap records = ByCadId("a");
  const RecordMap byPhid = ByPhid("a");
  const ZYMIDOMElement_var tree = InRoot(Object("a"));
  const std::string before = Text(tree);
  const auto expect = [&](HRESULT status, const ZYMIDOMNode_var& root) {
    RecordMap out;
    const auto failing = [](const auto& run) {
      const FailingDom dom(0, "getElementsByTagName");
      return run();
    };
    EXPECT_EQ(failing([&] { return handler_->UpdateRequestAndLRDObjects(root, records, CacheInformation()); }), status);
    EXPECT_EQ(failing([&] { return handler_->UpdateLRDObjects(root, records); }), status);
    EXPECT_EQ(failing([&] { return handler_->GetCadidLRDMap(root, byPhid, out, {}); }), status);
    EXPECT_EQ(failing([&] { return handler_->GetCadidLRDMapForCache(root, byPhid, out); }), status);
    EXPECT_EQ(out.Size(), 0);
  };
  expect(FailingDom::Status, FailingDom::Wrap(tree));
  expect(S_OK, TextNode());
  EXPECT_EQ(handler_->UpdateInformationFromCache(TextNode(), byPhid), S_OK);
  EXPECT_EQ(Text(tree), before);
  EXPECT_EQ(records["a"]->GetObjectFilePath().ToString(), "/old/a.prt.2");
}

TEST_F(WriteBackTest, a_value_that_the_tree_does_not_take_is_the_status_and_the_others_are_written) {
  const RecordMap records = ByCadId("ab");
  const RecordMap byPhid = ByPhid("ab");
  const auto describe = [&](const ZYMIDOMElement_var& root) {
    return handler_->UpdateRequestAndLRDObjects(root, records, CacheInformation());
  };
  const auto fill = [&](const ZYMIDOMElement_var& root) { return handler_->UpdateInformationFromCache(root, byPhid); };
  const auto failEach = [&](int values, const auto& operation) {
    for (int before = 0; before <= values; ++before) {
      const ZYMIDOMElement_var tree = InRoot(Object("a") + Object("b"));
      const FailingDom dom(before, "setAttribute");
      EXPECT_EQ(operation(FailingDom::Wrap(tree)), before < values ? FailingDom::Status : S_OK) << before;
      EXPECT_EQ(Show(tree, "b", {"mxtype"}) == "mxtype=Tb", before != 5) << "the sixth value";
    }
  };
  failEach(6, describe);
  failEach(8, fill);
}

TEST_F(WriteBackTest, requests_are_described_from_the_cache_by_physical_id) {
  const RecordMap records = ByPhid("ab");
  records["PHb"]->SetObjectFilePath("/old/plain");
  const ZYMIDOMElement_var root = InRoot(Object("a", "filename='mine' oid='old'") + Object("b"));
  EXPECT_EQ(handler_->UpdateInformationFromCache(root, records), S_OK);
  EXPECT_EQ(Show(root, "a", {"filename", "mxtype", "oid", "hashcode"}),
            "filename=a.prt.2 mxtype=Ta oid=PHa hashcode=Ha");
  EXPECT_EQ(Show(root, "b", {"filename"}), "filename=plain.");
  EXPECT_THROW(handler_->UpdateInformationFromCache(InRoot(Object("unknown")), records), ZYMNullHandleError);
}

TEST_F(WriteBackTest, the_map_for_the_cache_shares_plain_records_and_copies_those_of_streams) {
  const RecordMap records = ByPhid("a");
  std::string objects;
  for (const char* attributes :
       {"cadid='1' phid='PHa'", "cadid='2' phid='PHa'", "cadid='3' phid='PHa' streamkind='k'",
        "cadid='4' phid='PHa' streamkind='k'", "cadid='5' phid='z'", "cadid='6' streamkind='k'"}) {
    objects += Element("cadobject", attributes);
  }
  RecordMap out;
  EXPECT_EQ(handler_->GetCadidLRDMapForCache(InRoot(objects), records, out), S_OK);
  EXPECT_EQ(out.Size(), 4);
  EXPECT_TRUE(out["1"] == records["PHa"] && out["2"] == records["PHa"]);
  EXPECT_FALSE(out["3"] == out["4"] || out["3"] == records["PHa"]);
  EXPECT_EQ(Fields(out["4"]), "phid=PHa hash=Ha cadid=a mxtype=Ta flags=write");
}

TEST_F(WriteBackTest, records_are_written_by_list_and_by_the_handler_of_a_response) {
  const RecordMap records = ByCadId("a");
  records["a"]->SetLRDFilePath(QELVARDOSPath(folder_.At("a.xml")));
  EXPECT_EQ(handler_->CreateOrUpdateLRD(Records{records["a"]}), S_OK);
  EXPECT_THAT(folder_.File("a.xml"), HasSubstr("<phid>PHa</phid>"));
  EXPECT_THROW(handler_->CreateOrUpdateLRD(Tree("<response cname='print'/>"), records), ZYMNullHandleError);
  EXPECT_EQ(handler_->CreateOrUpdateLRD(Tree("<command cname='checkinEx'/>"), records), E_NOTIMPL);

  folder_.PutFile("b.prt.2", 100);
  const ZYMIDOMElement_var response =
      Tree("<response cname='checkoutEx'><info><cadobjectlist>" + Object("b", "selected='true' filename='b.prt.2'") +
           "</cadobjectlist></info></response>");
  EXPECT_EQ(handler_->CreateOrUpdateLRD(response, RecordMap()), S_OK);
  const ZYMIDOMElement_var request =
      InRoot("<cadobject cadid='b' filename='b.prt.2' dirname='" + folder_.Root() + "'/>");
  RecordMap again;
  EXPECT_EQ(handler_->Recognize(request, again), S_OK);
  EXPECT_EQ(Show(request, "b", {"status", "phid"}), "status=EXISTS phid=PHb");

  const Record made = FullV4("<o selected='true' filename='x' dirname='" + folder_.At("new") + "'/>");
  EXPECT_EQ(handler_->CreateAndHideLRDFolder(Records{made}), S_OK);
  EXPECT_TRUE(std::filesystem::is_directory(folder_.At("new/.KORVANTHEMIX")));
}

}  // namespace
