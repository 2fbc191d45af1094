// The trace of whole jobs, each line in its place. Support reads these lines and compares them with those of other
// builds, so that even their misspellings are kept.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "recognition/QELXVARDOSRecognitionFactory.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "tests/support/FailingDom.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestConfiguration.h"
#include "tests/support/TestLayer.h"
#include "tests/support/TraceLines.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

namespace {

using Lines = std::vector<std::string>;
using Wrapping = ZYMIDOMElement_var (*)(const ZYMIDOMElement_var& tree);
using CacheInformation = ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico;

class Context : public QELIVARDOSClientContext {
 public:
  ZYMUnicodeStringList GetCommandsWithoutLRD() override { return {"export"}; }
};

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
    text.replace(at, what.size(), by);
  }
  return text;
}

/// What a job has to work with.
struct Client {
  /// texts: its trees; "$" is the folder of the CAD files.
  Client(const ScratchFolder& files, const std::string& cadName, const std::vector<std::string>& texts)
      : folder(files) {
    config->cadName = cadName;
    for (const std::string& text : texts) {
      trees.push_back(Tree(Replaced(text, "$", folder.Root())));
    }
  }
  QELXIVARDOSRecognitionHandler_var Handler(const ZYMIDOMElement_var& tree) const {
    ZYMUnicodeString command;
    tree->getAttribute("cname", command);
    QELXIVARDOSRecognitionHandler_var handler;
    QELXVARDOSRecognitionFactory(ZYMMakeComponent<Context>()).GetRecognitionHandler(command, config, tree, handler);
    return handler;
  }
  Record Read(const std::string& objectFile) const {
    QELXIVARDOSLRDXMLHandler_var files;
    QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(config, files);
    Record record;
    files->ReadLRDFile(folder.At(".KORVANTHEMIX/" + objectFile + ".xml"), record);
    return record;
  }

  const ScratchFolder& folder;
  TestConfiguration_var config = ZYMMakeComponent<TestConfiguration>();
  std::vector<ZYMIDOMElement_var> trees;
  RecordMap records;
};

void Recognize(Client& client) {
  for (const ZYMIDOMElement_var& request : client.trees) {
    client.Handler(request)->Recognize(request, client.records);
  }
}

/// The answer to a check-out, recorded by a client that has no records of its own.
void CheckOut(Client& client) {
  for (const ZYMIDOMElement_var& response : client.trees) {
    client.Handler(response)->CreateOrUpdateLRD(response, client.records);
  }
}

/// A request is recognised; the answers that follow it bring its records up to date.
void CheckIn(Client& client) {
  const QELXIVARDOSRecognitionHandler_var handler = client.Handler(client.trees[0]);
  handler->Recognize(client.trees[0], client.records);
  for (std::size_t answer = 1; answer < client.trees.size(); ++answer) {
    handler->CreateOrUpdateLRD(client.trees[answer], client.records);
  }
}

void CheckOutWithFaults(Client& client) {
  TestLayer layer;
  layer.Hide(client.folder.At("unseen.prt.1"), std::errc::io_error);
  layer.failing["Rename " + client.folder.At(".KORVANTHEMIX/changed.prt.xml")] = std::errc::io_error;
  CheckOut(client);
}

void RecognizeWithFaults(Client& client) {
  TestLayer layer;
  layer.Hide(client.folder.At("own.prt.2"), std::errc::permission_denied);
  Recognize(client);
}

/// Every other operation of the handler that does without records leaves no line.
void WithoutRecords(Client& client) {
  Recognize(client);
  const QELXIVARDOSRecognitionHandler_var handler = client.Handler(client.trees[0]);
  handler->GetLRDMap(client.trees[0], client.records);
  handler->CreateOrUpdateLRD(client.trees[0], client.records);
  handler->CreateOrUpdateLRD(Records());
  handler->GetPhidLRDMap(client.trees[0], client.records);
  handler->UpdateInformationFromCache(client.trees[0], client.records);
  handler->CreateAndHideLRDFolder(Records());
  handler->GetCadidLRDMap(client.trees[0], client.records, client.records, {});
  handler->UpdateRequestAndLRDObjects(client.trees[0], client.records, CacheInformation());
  handler->GetCadidLRDMapForCache(client.trees[0], client.records, client.records);
  handler->UpdateLRDObjects(client.trees[0], client.records);
}

void Maps(Client& client) {
  for (const ZYMIDOMElement_var& tree : client.trees) {
    RecordMap byCadId;
    client.Handler(tree)->GetLRDMap(tree, byCadId);
  }
}

/// The first tree tells the details, the others ask for them.
void Details(Client& client) {
  const QELXIVARDOSRecognitionHandler_var handler = client.Handler(client.trees[0]);
  handler->GetPhidLRDMap(client.trees[0], client.records);
  const ZYMIDOMElement_var& request = client.trees[1];
  RecordMap byCadId;
  handler->GetCadidLRDMap(request, client.records, byCadId, {"skipped"});
  RecordMap ofCache;
  handler->GetCadidLRDMapForCache(request, client.records, ofCache);
  handler->UpdateInformationFromCache(client.trees[2], client.records);
}

void Update(Client& client) {
  const QELXIVARDOSRecognitionHandler_var handler = client.Handler(client.trees[0]);
  handler->GetLRDMap(client.trees[0], client.records);
  CacheInformation cache;
  ZYMUnicodeStringZYMUnicodeStringDico known;
  known.Insert("hashcode", "CACHED");
  cache.Insert("stream", known);
  for (const ZYMIDOMElement_var& tree : client.trees) {
    handler->UpdateRequestAndLRDObjects(tree, client.records, cache);
    handler->UpdateLRDObjects(tree, client.records);
  }
}

/// Records of every format are read and written again as they were.
void Rewrite(Client& client) {
  Records read;
  for (const std::string version : {"0", "1", "2", "3", "4"}) {
    read.Append(client.Read("v" + version + ".prt"));
    read[read.Size()]->SetLRDFilePath(QELVARDOSPath(client.folder.At("copy" + version + ".xml")));
  }
  const QELXIVARDOSRecognitionHandler_var handler = client.Handler(client.trees[0]);
  handler->GetLRDMap(client.trees[0], client.records);
  Records folders;
  for (const auto& entry : client.records) {
    folders.Append(entry.second);
  }
  handler->CreateAndHideLRDFolder(folders);
  handler->CreateOrUpdateLRD(read);
}

/// What no job comes to by itself.
void SingleOperations(Client& client) {
  const auto handler = ZYMMakeComponent<QELXVARDOSRecognitionHandler>(ZYMUnicodeString("CREO"),
                                                                      QELIVARDOSGlobalConfigObject_var(client.config));
  ZYMIDOMNode_varZYMUnicodeStringDico nodes;
  handler->getCadidObjectNodeMap(Tagged(client.trees[0], "cadobjectlist"), nodes);
  ZYMUnicodeStringZYMUnicodeStringDico paths;
  for (const char* cadId : {"child", "orphan"}) {
    handler->GetObjectFileLRDFileFromParent(nodes[cadId], nodes, paths);
  }
  const Record own = client.Read("own.prt");
  Record entry;
  handler->GetchildLRDObjStructureLrdList(own->GetChildRelationships(), own->GetChildRelationships(), entry);
  handler->UpdateRelNode(client.trees[0], own);
  ZYMUnicodeString stamp;
  handler->GetFileTimeStamp(stamp, client.folder.At("own.prt.2"));
  handler->CreateOrUpdateLRD(client.trees[0], client.records);
  handler->Recognize(TextNode(), client.records);
  client.Read("damaged.prt");
  client.Read("none.prt");

  own->GetChildObject("inner", entry);
  own->updateLRDObjectCEStampOnly(entry);
  const Record plain = Plain("<o cadid='plain'/>");
  plain->CopyFromLRDObject(own);
  plain->GetChildLRDObject(entry);
  plain->GetCompositionLRDObject(entry);
  plain->UpdateLRDObjectFromXML(client.trees[0]);
  ZYMIDOMDocument_var document;
  plain->GetRootDocument(document);
  ZYMIDOMElement_var element;
  plain->GetXMLFormat({}, element);
}

/// One job of a client.
struct Flow {
  /// Of the test, and of the file with its lines.
  std::string name;
  std::string cadName;
  std::vector<std::string> trees;
  void (*run)(Client& client);
};

void PrintTo(const Flow& flow, std::ostream* out) { *out << flow.name; }

std::string Object(const std::string& cadId, const std::string& fileName, const std::string& attributes = "") {
  return "<cadobject cadid='" + cadId + "' filename='" + fileName + "' dirname='$' " + attributes + "/>";
}
std::string List(const std::string& objects) { return "<cadobjectlist>" + objects + "</cadobjectlist>"; }
std::string Command(const std::string& attributes, const std::string& objects, const std::string& behind = "") {
  return "<command " + attributes + ">" + List(objects) + behind + "</command>";
}
std::string Response(const std::string& attributes, const std::string& objects, const std::string& behind = "") {
  return "<response " + attributes + "><info>" + List(objects) + behind + "</info></response>";
}

const std::string Selected = "type='part' selected='true' ";
const std::string Stamps = "ceStamp='CE' macroceStamp='MC' xsStamp='XS' hashcode='HC' ";
/// Object below under object top, and beside it, the other way round, object below above object user.
const std::string Structure =
    "<relationshiplist><relationship rid='1' reluuid='U1' phid='R1' topnode='dpt'/>"
    "<relationship rid='2' reluuid='U2' phid='R2' topnode='dpe'/>"
    "<relationship rid='3' cadrelationship='shows'/></relationshiplist>"
    "<structure><active><cadobject cadid='top'><cadobject cadid='below'><relationship rid='1'/></cadobject>"
    "<cadobject cadid='lost'><relationship rid='none'/></cadobject><cadobject cadid='loose'/></cadobject></active>"
    "<family><cadobject cadid='user'><cadobject cadid='below'><relationship rid='2'/></cadobject></cadobject></family>"
    "</structure>";

// After a change of lines that is meant, LRD_WRITE_TRACES=1 recognition_test --gtest_filter='*TraceTest*' makes the
// expected files again; read what changed before it is kept.
const std::vector<Flow> Flows = {
    {"recognize",
     "CREO",
     {Command("cname='checkinEx'",
              "text" + Object("own", "own.prt.2", "type='part'") + Object("changed", "changed.prt.1", "type='part'") +
                  Object("known", "own.prt.2", "phid='P' modified='TRUE'") + Object("fresh", "fresh.prt.1") +
                  Object("as new", "own.prt.2", "recognizeasnew='TRUE'") +
                  Object("bare", "own.prt.2", "type='bare' name='b'") + Object("shown", "own.prt.2", "type='preview'"),
              "<relationshiplist><relationship rid='1' reluuid='U1'/></relationshiplist>")},
     Recognize},
    {"recognize_formats",
     "CREO",
     {Command("cname='checkinEx'", Object("0", "v0.prt.1") + Object("1", "v1.prt.1") + Object("2", "v2.prt.1") +
                                       Object("3", "v3.prt.1") + Object("strange", "strange.prt.1"))},
     Recognize},
    {"recognize_entries",
     "CREO",
     {Command("cname='checkinEx'",
              Object("top", "own.prt.2") + Object("below", "below.prt", "type='part' composerid='top'") +
                  Object("named", "", "type='instance' name='inner' familyid='fresh,top'") +
                  Object("missing", "", "type='instance' name='other' familyid='top' parentid='top'") +
                  Object("fresh", "fresh.prt.1"),
              Structure)},
     Recognize},
    {"recognize_damaged",
     "CREO",
     {Command("cname='checkinEx'", Object("bad", "damaged.prt.1") + Object("own", "own.prt.2"))},
     Recognize},
    {"recognize_unseen",
     "CREO",
     {Command("cname='checkinEx'", Object("own", "own.prt.2", "type='part'") + Object("behind", "changed.prt.1"))},
     RecognizeWithFaults},
    {"recognize_unserved", "CREO", {Command("cname='print'", Object("own", "own.prt.2"))}, Recognize},
    {"recognize_without_records",
     "CREO",
     {Command("cname='export'", "text" + Object("known", "own.prt.2", "phid='P'") + Object("own", "own.prt.2") +
                                    Object("changed", "own.prt.2", "phid='P' modified='TRUE'") +
                                    Object("as new", "own.prt.2", "phid='P' recognizeasnew='true'")),
      Command("cname='checkinEx' downloadfileonly='TRUE'", Object("known", "own.prt.2", "phid='P'"))},
     WithoutRecords},
    {"check_out",
     "CREO",
     {Response("cname='checkoutEx'",
               Object("top", "own.prt.2", Selected + Stamps + "phid='T' familyid='user'") +
                   Object("below", "below.prt.1", "download='true' type='part' phid='B' " + Stamps) +
                   Object("user", "user.prt.1", Selected + "phid='U'") +
                   Object("bare", "bare.prt.1", "type='bare' selected='true'") +
                   Object("platform", "platform.prt", Selected + "cadorigin=''") +
                   Object("unselected", "unselected.prt", "type='part'"),
               Structure),
      Response("cname='checkoutEx'", Object("top", "own.prt.2", Selected + "phid='T'"))},
     CheckOut},
    {"check_out_with_failures",
     "CREO",
     {Response("cname='checkoutEx'",
               Object("outside", "../outside.prt", Selected) + Object("folder", "folder.prt", Selected) +
                   Object("unseen", "unseen.prt.1", Selected) + Object("changed", "changed.prt.1", Selected) +
                   Object("good", "good.prt", Selected) +
                   "<cadobject cadid='blocked' filename='b.prt' dirname='$/blocked' selected='true'/>")},
     CheckOutWithFaults},
    {"check_out_of_another_cad",
     "OTHER",
     {Response("cname='synclocalrecognition'", Object("own", "own.prt.2", Selected + "phid='P'"))},
     CheckOut},
    {"check_in",
     "CREO",
     {Command("cname='checkinEx'",
              Object("top", "own.prt.2", Selected + Stamps + "action='setcadorigin'") +
                  Object("below", "below.prt.1", Selected + "familyid='top'") + Object("user", "fresh.prt.1", Selected),
              Structure),
      Response("cname='checkinEx'",
               Object("top", "own.prt.2", Selected + Stamps + "phid='T' cadorigin='O'") +
                   Object("below", "below.prt.1", Stamps + "phid='B'") + Object("unasked", "unasked.prt", "phid='X'"),
               "<relationshiplist><relationship rid='1' phid='R'/></relationshiplist>"),
      "<response cname='checkinEx'/>"},
     CheckIn},
    {"by_path",
     "CREO",
     {"<response cname='checkoutEx' mode='path'><info mode='path' nocompletion='true'>" +
          List(Object("top", "own.prt.2", Selected + "familyid='part' action='setcadorigin'") +
               Object("part", "fresh.prt.1", Selected)) +
          "</info></response>",
      Response("cname='checkoutEx' mode='path'", Object("other", "other.prt.1", Selected)),
      Response("cname='checkinEx'", Object("top", "own.prt.2", Stamps + "phid='T' cadorigin='O'"))},
     CheckIn},
    {"maps",
     "CREO",
     {Command("cname='checkinEx' mode='import'",
              "text" + Object("", "nameless.prt") + Object("bare", "", "type='bare' name='b'") +
                  Object("instance", "", "type='instance' name='i'") +
                  Object("embedded", "", "type='embedded' name='e'") + Object("shown", "p.jpg", "type='preview'") +
                  Object("platform", "own.prt.2", "cadorigin=''")),
      "<command cname='lockunlockEx'/>", "<response cname='cadobjdetails'/>"},
     Maps},
    {"details",
     "CREO",
     {Response("cname='cadobjdetails'", Object("1", "own.prt.2", "phid='P' mxtype='MX' " + Stamps) +
                                            Object("2", "fresh.prt.1", "phid='Q'") +
                                            Object("3", "p.jpg", "phid='D' type='preview'")),
      Command("cname='cadobjdetails'", Object("a", "own.prt.2", "phid='P'") + Object("skipped", "x", "phid='Q'") +
                                           Object("stream", "s", "phid='Q' streamkind='k'") +
                                           Object("shown", "p.jpg", "phid='D'")),
      Command("cname='cadobjdetails'", Object("a", "", "phid='P'") + Object("b", "", "phid='Q'"))},
     Details},
    {"update",
     "CREO",
     {Command("cname='checkinEx'", Object("own", "own.prt.2", "mxtype='MX' " + Stamps) +
                                       Object("stream", "fresh.prt.1", "streamkind='k' mxtype='MS'")),
      Response("cname='checkinEx'", "text<cadobject cadid='own' dirname='$'/>" + Object("unknown", "u.prt")),
      "<command/>"},
     Update},
    {"rewrite",
     "CREO",
     {Command("cname='checkinEx'", Object("here", "own.prt.2", Selected) +
                                       "<cadobject cadid='new' filename='n' dirname='$/n' " + Selected +
                                       "/><cadobject cadid='new too' filename='o' dirname='$/n' " + Selected + "/>")},
     Rewrite},
    {"single_operations",
     "CREO",
     {Command("cname='checkinEx'",
              Object("own", "own.prt.2") + Object("none", "none.prt") + Object("child", "c", "parentid='own,none'") +
                  Object("orphan", "o", "parentid='none' familyid='own'"),
              "<relationshiplist><relationship rid='1' reluuid='U1'/></relationshiplist>")},
     SingleOperations},
};

class TraceTest : public ModuleTest, public testing::WithParamInterface<Flow> {
 protected:
  /// A folder for all jobs: "own" is as its record says, "changed" is newer, "fresh" has none, "below" is no file but
  /// an entry of "own"; "v0" to "v4" have records of all formats.
  TraceTest() {
    const std::string entries = "<rel id='U1'><phid>R1</phid><childPhid>B</childPhid></rel><structure id='below'>" +
                                Core("B") + Macro + "</structure><structure id='inner'>" + Core("I") +
                                "</structure><composition id='c'>" + Core("C") + "</composition>";
    folder_.PutRecord("own.prt", RecordOf("4.0", entries));
    folder_.PutRecord("changed.prt", RecordOf("4.0", ""));
    folder_.PutRecord("strange.prt", RecordOf("9.9", ""));
    folder_.PutRecord("damaged.prt", "<object>");
    for (const std::string version : {"0", "1", "2", "3", "4"}) {
      folder_.PutFile("v" + version + ".prt.1", 100);
      folder_.PutRecord("v" + version + ".prt", RecordOf(version + ".0", entries));
    }
    for (const std::string name : {"own.prt.2", "fresh.prt.1", "strange.prt.1", "damaged.prt.1", "unseen.prt.1"}) {
      folder_.PutFile(name, 100);
    }
    folder_.PutFile("changed.prt.1", 101);
    folder_.Put(".KORVANTHEMIX/folder.prt.xml/stands", "in the way");
    folder_.Put("blocked/.KORVANTHEMIX", "a file where the folder should be");
  }

  /// The lines of the job, with "$" for the folder of the CAD files and the name of their channel unless it is the
  /// usual one.
  Lines Traced(
      const Flow& flow, Wrapping wrapping = [](const ZYMIDOMElement_var& tree) { return tree; }) const {
    Client client(folder_, flow.cadName, flow.trees);
    std::ranges::transform(client.trees, client.trees.begin(), wrapping);
    const TraceLines trace;
    flow.run(client);
    Lines lines;
    for (std::size_t at = 0; at < trace.all.size(); ++at) {
      const std::string& channel = trace.channels[at];
      lines.push_back((channel == "QELVARDOSDetails" ? "" : channel + ": ") +
                      Replaced(trace.all[at], folder_.Root(), "$"));
    }
    return lines;
  }

 private:
  static std::string RecordOf(const std::string& version, const std::string& entries) {
    return "<object version='" + version + "'>" + Core("P", "100", MacroAndXS) + entries + "</object>";
  }

  ScratchFolder folder_;
};

Lines LinesOf(const std::string& file) {
  Lines lines;
  std::ifstream text(file);
  for (std::string line; std::getline(text, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// A few lines of a trace from a place on.
std::string Excerpt(const Lines& lines, std::size_t from) {
  constexpr std::size_t Count = 5;
  std::string excerpt;
  for (std::size_t at = from; at < std::min(from + Count, lines.size()); ++at) {
    excerpt += "    " + lines[at] + "\n";
  }
  return excerpt.empty() ? "    (the end)\n" : excerpt;
}

void ExpectSame(const Lines& traced, const std::string& file) {
  const Lines expected = LinesOf(file);
  const auto [at, other] = std::ranges::mismatch(expected, traced);
  const std::size_t same = static_cast<std::size_t>(at - expected.begin());
  if (at != expected.end() || other != traced.end()) {
    ADD_FAILURE() << file << ":" << same + 1 << ": expected\n"
                  << Excerpt(expected, same) << "  but traced was\n"
                  << Excerpt(traced, same);
  }
}

TEST_P(TraceTest, every_line_of_a_job_stands_in_its_place) {
  const Lines traced = Traced(GetParam());
  const std::string file = TRACES "/" + GetParam().name + ".txt";
  if (std::getenv("LRD_WRITE_TRACES") != nullptr) {
    std::ofstream text(file);
    for (const std::string& line : traced) {
      text << line << "\n";
    }
  }
  ExpectSame(traced, file);
}

TEST_P(TraceTest, the_trees_of_a_host_that_go_the_long_way_leave_the_same_lines) {
  if (GetParam().run == CheckOutWithFaults) {
    GTEST_SKIP() << "a builder that writes files by itself fails in its own words";
  }
  const FailingDom neverFails(std::numeric_limits<int>::max());
  ExpectSame(Traced(GetParam(), FailingDom::Wrap), TRACES "/" + GetParam().name + ".txt");
}

INSTANTIATE_TEST_SUITE_P(Jobs, TraceTest, testing::ValuesIn(Flows),
                         [](const testing::TestParamInfo<Flow>& flow) { return flow.param.name; });

}  // namespace
