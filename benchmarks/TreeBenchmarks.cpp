// Records made from the trees of commands: nothing is written.

#include "benchmarks/Client.h"
#include "benchmarks/Comparison.h"
#include "benchmarks/Floors.h"
#include "benchmarks/Parts.h"
#include "benchmarks/Trees.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

namespace {

using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;
using CheckRecords = std::function<void(const RecordMap& records)>;

class ReadWithModule : public Variant {
 public:
  ReadWithModule(std::string file, CheckRecords check) : file_(std::move(file)), check_(std::move(check)) {}

  void Prepare() override {
    records_.RemoveAll();
    tree_ = Client::Parse(file_);
    QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(Client::Configuration(), Client::RootOf(tree_), handler_);
  }
  void Run() override { status_ = handler_->GetLRDObjects(Client::RootOf(tree_), records_); }
  void Check() override {
    Expect(status_ == S_OK, "the status of GetLRDObjects");
    check_(records_);
  }

 private:
  std::string file_;
  CheckRecords check_;
  ZYMIDOMDocument_var tree_;
  QELXIVARDOSLRDXMLHandler_var handler_;
  RecordMap records_;
  HRESULT status_ = E_FAIL;
};

class ReadWithFloor : public Variant {
 public:
  ReadWithFloor(std::string file, int elements) : file_(std::move(file)), elements_(elements) {}

  void Prepare() override { Expect(tree_.load_file(file_.c_str()), "a tree that can be read"); }
  void Run() override { seen_ = Floors::TakeAll(tree_); }
  void Check() override { Expect(seen_ >= elements_, "elements of the tree: " + std::to_string(seen_)); }

 private:
  std::string file_;
  int elements_;
  pugi::xml_document tree_;
  int seen_ = 0;
};

Comparison Reading(const std::string& work, int count, const std::function<std::string()>& file,
                   const CheckRecords& check) {
  const Reference floor{"", 0, [=] { return std::make_unique<ReadWithFloor>(file(), count); }};
  return {work,   count,           [=] { return std::make_unique<ReadWithModule>(file(), check); }, {floor}, nullptr, 0,
          100000, RepeatsOf(count)};
}

/// A check-in of count parts, numbered from 0. structure: of the parts, by number.
std::string CheckIn(const std::string& root, int count, const std::string& structure) {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<command cname=\"checkinEx\"><cadobjectlist>";
  std::string relationships;
  for (int part = 0; part < count; ++part) {
    text += "<cadobject" + Parts::AnswerAttributes(root, part) + "/>";
    relationships += "<relationship rid=\"" + std::to_string(part) + "\" reluuid=\"" + Parts::RelationshipId(part) +
                     "\" topnode=\"dpt\"/>";
  }
  return text + "</cadobjectlist><relationshiplist>" + relationships + "</relationshiplist><structure>" + structure +
         "</structure></command>";
}

std::string OpenObject(int part) {
  return "<cadobject cadid=\"" + Parts::CadId(part) + "\">" +
         (part == 0 ? "" : "<relationship rid=\"" + std::to_string(part) + "\"/>");
}

int ChildrenOf(const RecordMap& records, int part) { return records[Parts::CadId(part)]->GetChildren().Size(); }

Comparison WideCheckIn(const Settings& settings, int count) {
  const auto file = [=] {
    std::string structure = OpenObject(0);
    for (int part = 1; part < count; ++part) {
      structure += OpenObject(part) + "</cadobject>";
    }
    const std::string root = Trees::ObjectsWithRecords(settings.data, count);
    return Trees::File(settings.data, "checkin.xml", CheckIn(root, count, structure + "</cadobject>"));
  };
  return Reading("records of a check-in", count, file, [=](const RecordMap& records) {
    Expect(records.Size() == count, "records: " + std::to_string(records.Size()));
    Expect(ChildrenOf(records, 0) == 2 * (count - 1), "children of the assembly");
  });
}

Comparison DeepStructure(const Settings& settings, int count) {
  const auto file = [=] {
    std::string structure;
    std::string end;
    for (int part = 0; part < count; ++part) {
      structure += OpenObject(part);
      end += "</cadobject>";
    }
    const std::string root = Trees::ObjectsWithRecords(settings.data, count);
    return Trees::File(settings.data, "deep.xml", CheckIn(root, count, structure + end));
  };
  return Reading("a structure as deep as its objects", count, file, [=](const RecordMap& records) {
    Expect(records.Size() == count, "records: " + std::to_string(records.Size()));
    for (int part = 0; part < count; ++part) {
      Expect(ChildrenOf(records, part) == (part + 1 < count ? 2 : 0), "children of " + Parts::CadId(part));
    }
  });
}

/// The last part belongs to the compositions of all others.
Comparison ManyMembers(const Settings& settings, int count) {
  const auto file = [=] {
    std::string members;
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<command cname=\"checkinEx\"><cadobjectlist>";
    const std::string root = Trees::ObjectsWithRecords(settings.data, count);
    for (int part = 0; part < count; ++part) {
      const bool last = part + 1 == count;
      text +=
          "<cadobject" + Parts::AnswerAttributes(root, part) + (last ? " composerid=\"" + members + "\"" : "") + "/>";
      members += (part == 0 ? "" : ",") + Parts::CadId(part);
    }
    return Trees::File(settings.data, "members.xml", text + "</cadobjectlist></command>");
  };
  return Reading("a composition of all objects", count, file, [=](const RecordMap& records) {
    Expect(records.Size() == count, "records: " + std::to_string(records.Size()));
    for (int part = 0; part < count; ++part) {
      Expect(ChildrenOf(records, part) == (part + 1 < count ? 1 : 0), "compositions in " + Parts::CadId(part));
    }
  });
}

}  // namespace

std::vector<Comparison> TreeComparisons(const Settings& settings) {
  std::vector<Comparison> all;
  for (const auto make : {WideCheckIn, ManyMembers, DeepStructure}) {
    for (const int count : settings.sizes) {
      all.push_back(make(settings, count));
    }
  }
  return all;
}
