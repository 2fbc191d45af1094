// Whole jobs of a client, with every line of their trace in its place, and what became of their trees, records and
// files. Support reads the lines and compares them with those of other builds, so that even their misspellings are
// kept.
//
// In traces/, NAME.1.xml and those behind it are the trees of job NAME, "$" being the folder of the CAD files; NAME.txt
// is what it leaves. After a change that is meant, LRD_WRITE_TRACES=1 recognition_test --gtest_filter='*TraceTest*'
// makes the latter again; read what changed before it is kept.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <ostream>
#include <sstream>
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

std::string Slurp(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

/// Without line ends and the blanks behind them.
std::string WithoutLineEnds(std::string text) {
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;) {
    const std::size_t next = text.find_first_not_of(' ', at + 1);
    text.erase(at, next == std::string::npos ? next : next - at);
  }
  return text;
}

/// In the order of QELXVARDOSReason::Kind.
constexpr std::array ReasonNames = {
    "PhysicalIdGiven",     "NoPhysicalId",      "MarkedAsModified",       "MarkedAsNew",   "StampsAgree",
    "FileNewer",           "FileOlder",         "RecordWithoutStamp",     "StampIsNoTime", "ObjectFileGone",
    "EntryOfRelationship", "EntryOfIdentifier", "EntryWithoutPhysicalId", "NoSuchEntry",   "NoRecord",
    "NoKnownRecord",       "RecordDamaged",     "CannotBeLookedAt",       "NoIdentifier",  "UnknownFormat"};

/// Notes what is told of each object: its status, and the reason with its facts.
class Listener : public QELXIVARDOSObserver {
 public:
  void Decided(const ZYMIDOMElement_var& object, const QELXVARDOSReason& reason) override {
    std::string line =
        Show(object, {"cadid", "status"}) + " reason=" + ReasonNames.at(static_cast<std::size_t>(reason.kind));
    for (const auto& [name, fact] : {std::pair<const char*, ZYMUnicodeString>{" record=", reason.recordFile},
                                     {" fileStamp=", reason.fileStamp ? std::to_string(*reason.fileStamp) : ""},
                                     {" recordStamp=", reason.recordStamp},
                                     {" identifier=", reason.identifier},
                                     {" relationship=", reason.relationship},
                                     {" failure=", reason.failure}}) {
      line += fact.IsEmpty() ? "" : name + fact.Str();
    }
    for (const ZYMUnicodeString& path : reason.missingRecordFiles) {
      line += " missing=" + path.Str();
    }
    told.push_back(line);
  }

  Lines told;
};

/// What a job has to work with.
struct Client {
  Client(const ScratchFolder& files, const std::string& job, const std::string& cadName, Wrapping wrapping)
      : folder(files) {
    config->cadName = cadName;
    for (int number = 1;; ++number) {
      const std::string text = Slurp(TRACES "/" + job + "." + std::to_string(number) + ".xml");
      if (text.empty()) {
        break;
      }
      // The files have line ends for the eye alone.
      trees.push_back(wrapping(Tree(WithoutLineEnds(Replaced(text, "$", folder.Root())))));
    }
  }
  QELXIVARDOSRecognitionHandler_var Handler(const ZYMIDOMElement_var& tree) {
    ZYMUnicodeString command;
    tree->getAttribute("cname", command);
    QELXIVARDOSRecognitionHandler_var handler;
    QELXVARDOSRecognitionFactory(ZYMMakeComponent<Context>()).GetRecognitionHandler(command, config, tree, handler);
    if (handler) {
      handler->SetObserver(&listener);
    }
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
  /// What else the job asked for.
  std::vector<RecordMap> maps;
  Listener listener;
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
  layer.Hide(client.folder.At("unseen.prt.1"), std::errc::io_error);
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
    client.Handler(tree)->GetLRDMap(tree, client.maps.emplace_back());
  }
}

/// The first tree tells the details, the others ask for them.
void Details(Client& client) {
  const QELXIVARDOSRecognitionHandler_var handler = client.Handler(client.trees[0]);
  handler->GetPhidLRDMap(client.trees[0], client.records);
  const ZYMIDOMElement_var& request = client.trees[1];
  handler->GetCadidLRDMap(request, client.records, client.maps.emplace_back(), {"skipped"});
  handler->GetCadidLRDMapForCache(request, client.records, client.maps.emplace_back());
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
struct Job {
  const char* name;
  void (*run)(Client& client);
  const char* cadName = "CREO";
  bool isTraced = true;
};

void PrintTo(const Job& job, std::ostream* out) { *out << job.name; }

const std::vector<Job> Jobs = {{"recognize", Recognize},
                               {"recognize_formats", Recognize},
                               {"recognize_entries", Recognize},
                               {"recognize_verdicts", Recognize, "CREO", false},
                               {"recognize_damaged", Recognize},
                               {"recognize_lacking", Recognize},
                               {"recognize_unseen", RecognizeWithFaults},
                               {"recognize_unserved", Recognize},
                               {"recognize_without_records", WithoutRecords},
                               {"check_out", CheckOut},
                               {"check_out_with_failures", CheckOutWithFaults},
                               {"check_out_of_another_cad", CheckOut, "OTHER"},
                               {"check_in", CheckIn},
                               {"by_path", CheckIn},
                               {"maps", Maps},
                               {"details", Details},
                               {"update", Update},
                               {"rewrite", Rewrite},
                               {"single_operations", SingleOperations}};

class TraceTest : public ModuleTest, public testing::WithParamInterface<Job> {
 protected:
  /// A folder for all jobs: "own" is as its record says, "changed" is newer, "fresh" has none, "below" is no file but
  /// an entry of "own"; "v0" to "v4" have records of all formats; "f" and "g" have entries alone, no files.
  TraceTest() {
    const std::string entries = "<rel id='U1'><phid>R1</phid><childPhid>B</childPhid></rel><structure id='below'>" +
                                Core("B") + Macro + "</structure><structure id='inner'>" + Core("I") +
                                "</structure><composition id='c'>" + Core("C") + "</composition>";
    folder_.PutRecord("own.prt", RecordOf("4.0", entries));
    folder_.PutRecord("changed.prt", RecordOf("4.0", ""));
    folder_.PutRecord("strange.prt", RecordOf("9.9", ""));
    folder_.PutRecord("f.prt", RecordOf("4.0", Entry("x", "X") + Entry("empty", "") + Entry("", "nameless")));
    folder_.PutRecord("g.prt", RecordOf("4.0", Entry("x", "late") + Entry("y", "Y")));
    folder_.PutRecord(
        "bare.prt",
        "<object version='1.0'><phid/><objectChangeStamp>100</objectChangeStamp><ceStamp/><hashcode/></object>");
    folder_.PutRecord("damaged.prt", "<object>");
    folder_.PutRecord("lacking.prt", "<object version='4.0'><phid>P</phid></object>");
    for (const std::string stamp : {"", "99", "101", "100 s", "0100"}) {
      folder_.PutFile("stamp " + stamp, 100);
      folder_.PutRecord("stamp " + stamp, "<object version='4.0'>" + Core("P", stamp, MacroAndXS) + "</object>");
    }
    for (const std::string version : {"0", "1", "2", "3", "4"}) {
      folder_.PutFile("v" + version + ".prt.1", 100);
      folder_.PutRecord("v" + version + ".prt", RecordOf(version + ".0", entries));
    }
    for (const std::string name :
         {"own.prt.2", "fresh.prt.1", "strange.prt.1", "damaged.prt.1", "lacking.prt.1", "unseen.prt.1", "bare.prt"}) {
      folder_.PutFile(name, 100);
    }
    folder_.PutFile("changed.prt.1", 101);
    folder_.Put(".KORVANTHEMIX/folder.prt.xml/stands", "in the way");
    folder_.Put("blocked/.KORVANTHEMIX", "a file where the folder should be");
  }

  /// What the job leaves, with "$" for the folder of the CAD files: the lines of its trace, with the name of their
  /// channel unless it is the usual one, what raised, what its observer was told, its trees, its records, and the
  /// record files that it wrote.
  Lines Left(const Job& job, Wrapping wrapping) const {
    const std::map<std::string, std::string> before = RecordFiles();
    Client client(folder_, job.name, job.cadName, wrapping);
    Lines lines;
    std::string raised;
    {
      const TraceLines trace;
      if (!job.isTraced) {
        QELVARDOSClientTrace::TurnOff();
      }
      try {
        job.run(client);
      } catch (const ZYMNullHandleError& error) {
        raised = std::string("RAISED ") + error.what();
      }
      for (std::size_t at = 0; at < trace.all.size(); ++at) {
        const std::string& channel = trace.channels[at];
        lines.push_back((channel == "QELVARDOSDetails" ? "" : channel + ": ") + trace.all[at]);
      }
    }
    if (!raised.empty()) {
      lines.push_back(raised);
    }
    if (!client.listener.told.empty()) {
      lines.push_back("DECIDED");
      lines.insert(lines.end(), client.listener.told.begin(), client.listener.told.end());
    }
    for (const ZYMIDOMElement_var& tree : client.trees) {
      lines.push_back("TREE");
      std::istringstream elements(Replaced(Text(FailingDom::Inner(tree)), "><", ">\n<"));
      for (std::string line; std::getline(elements, line);) {
        lines.push_back(line);
      }
    }
    client.maps.push_back(client.records);
    for (const RecordMap& map : client.maps) {
      lines.push_back("RECORDS");
      for (const auto& [key, record] : map) {
        lines.push_back(key.Str() + ": " + Fields(record) + " in " + record->GetLRDFilePath().Str());
      }
    }
    for (const auto& [file, text] : RecordFiles()) {
      if (!before.contains(file) || before.at(file) != text) {
        lines.push_back("FILE ");
        lines.back().append(file).append(" ").append(text);
      }
    }
    std::ranges::transform(lines, lines.begin(),
                           [this](const std::string& line) { return Replaced(line, folder_.Root(), "$"); });
    return lines;
  }

 private:
  static std::string RecordOf(const std::string& version, const std::string& entries) {
    return "<object version='" + version + "'>" + Core("P", "100", MacroAndXS) + entries + "</object>";
  }
  static std::string Entry(const std::string& id, const std::string& phid) {
    return "<structure id='" + id + "'>" + Core(phid, "1", MacroAndXS) + "</structure>";
  }
  std::map<std::string, std::string> RecordFiles() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.Root())) {
      const std::string path = entry.path();
      if (entry.is_regular_file() && path.ends_with(".xml")) {
        files[path] = folder_.File(path.substr(folder_.Root().size() + 1));
      }
    }
    return files;
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
                  << Excerpt(expected, same) << "  but left was\n"
                  << Excerpt(traced, same);
  }
}

TEST_P(TraceTest, a_job_leaves_every_line_in_its_place) {
  const Lines left = Left(GetParam(), [](const ZYMIDOMElement_var& tree) { return tree; });
  const std::string file = TRACES "/" + std::string(GetParam().name) + ".txt";
  if (std::getenv("LRD_WRITE_TRACES") != nullptr) {
    std::ofstream text(file);
    for (const std::string& line : left) {
      text << line << "\n";
    }
  }
  ExpectSame(left, file);
}

TEST_P(TraceTest, the_trees_of_a_host_that_go_the_long_way_leave_the_same) {
  if (GetParam().run == CheckOutWithFaults) {
    GTEST_SKIP() << "a builder that writes files by itself fails in its own words";
  }
  const FailingDom neverFails(std::numeric_limits<int>::max());
  ExpectSame(Left(GetParam(), FailingDom::Wrap), TRACES "/" + std::string(GetParam().name) + ".txt");
}

INSTANTIATE_TEST_SUITE_P(Jobs, TraceTest, testing::ValuesIn(Jobs),
                         [](const testing::TestParamInfo<Job>& job) { return std::string(job.param.name); });

}  // namespace
