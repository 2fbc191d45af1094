// Recognition of requests.

#include "benchmarks/Client.h"
#include "benchmarks/Comparison.h"
#include "benchmarks/Floors.h"
#include "benchmarks/Parts.h"
#include "benchmarks/Trees.h"
#include "recognition/QELXVARDOSRecognitionFactory.h"

namespace {

using CheckTree = std::function<void(const pugi::xml_document& request)>;

class RecognizeWithModule : public Variant {
 public:
  RecognizeWithModule(std::string request, CheckTree check) : file_(std::move(request)), check_(std::move(check)) {}

  void Prepare() override {
    records_.RemoveAll();
    request_ = Client::Parse(file_);
    QELXVARDOSRecognitionFactory().GetRecognitionHandler("synclocalrecognition", Client::Configuration(),
                                                         Client::RootOf(request_), handler_);
  }
  void Run() override { status_ = handler_->Recognize(Client::RootOf(request_), records_); }
  void Check() override {
    Expect(status_ == S_OK, "the status of Recognize");
    pugi::xml_document request;
    Client::Copy(request_, request);
    check_(request);
  }

 private:
  std::string file_;
  CheckTree check_;
  ZYMIDOMDocument_var request_;
  QELXIVARDOSRecognitionHandler_var handler_;
  QELXIVARDOSLRDObject_varZYMUnicodeStringDico records_;
  HRESULT status_ = E_FAIL;
};

class RecognizeWithFloor : public Variant {
 public:
  using Floor = std::function<int(pugi::xml_document& request)>;
  RecognizeWithFloor(std::string request, Floor floor, CheckTree check)
      : file_(std::move(request)), floor_(std::move(floor)), check_(std::move(check)) {}

  void Prepare() override { Expect(request_.load_file(file_.c_str()), "a request that can be read"); }
  void Run() override { exist_ = floor_(request_); }
  void Check() override {
    Expect(exist_ > 0, "objects that exist");
    check_(request_);
  }

 private:
  std::string file_;
  Floor floor_;
  CheckTree check_;
  pugi::xml_document request_;
  int exist_ = 0;
};

/// Sets the attributes that recognition sets.
class GrowRequest : public Variant {
 public:
  /// values: of the attributes of one object.
  using Values = std::vector<std::pair<const char*, std::string>>;
  GrowRequest(std::string request, Values values) : file_(std::move(request)), values_(std::move(values)) {}

  void Prepare() override { request_ = Client::Parse(file_); }
  void Run() override {
    ZYMIDOMNodeList_var found;
    ZYMIDOMNode_var list;
    ZYMIDOMNodeList_var objects;
    int count = 0;
    Client::RootOf(request_)->getElementsByTagName("cadobjectlist", found);
    found->item(0, list);
    list->getChildNodes(objects);
    objects->getLength(count);
    for (int i = 0; i < count; ++i) {
      ZYMIDOMNode_var object;
      objects->item(i, object);
      for (const auto& [name, value] : values_) {
        ZYMIDOMElement_var(object)->setAttribute(name, value);
      }
    }
  }
  void Check() override {}

 private:
  std::string file_;
  Values values_;
  ZYMIDOMDocument_var request_;
};

GrowRequest::Values RecognizedValues() {
  const Floors::Element facts = Parts::Facts(0, "object");
  GrowRequest::Values values = {
      {"status", "EXISTS"}, {"lrdversion", "4.0"}, {"hashcodefromlrd", facts.texts[5].second}};
  values.insert(values.end(), facts.texts.begin(), facts.texts.begin() + 5);
  return values;
}

/// What one kind of request is about.
struct Request {
  std::string work;
  int count = 0;
  double goal = 0;
  std::function<std::string()> file;
  RecognizeWithFloor::Floor floor;
  CheckTree check;
  CheckTree checkFloor;
  GrowRequest::Values values;
  double mostBytes = 0;
  int leastGrowthGoal = 100000;
};

Comparison Recognition(const Request& request) {
  const Reference floor{
      "", request.goal,
      [request] { return std::make_unique<RecognizeWithFloor>(request.file(), request.floor, request.checkFloor); }};
  return {request.work,
          request.count,
          [request] { return std::make_unique<RecognizeWithModule>(request.file(), request.check); },
          {floor},
          [request] { return std::make_unique<GrowRequest>(request.file(), request.values); },
          request.mostBytes,
          request.leastGrowthGoal,
          RepeatsOf(request.count)};
}

Comparison OwnRecords(const Settings& settings, int count) {
  const auto file = [=] {
    const std::string root = Trees::ObjectsWithRecords(settings.data, count);
    return Trees::File(settings.data, "own" + std::to_string(count) + ".xml", Trees::Request(root, count));
  };
  const auto check = [=](const auto& request) { Trees::ExpectRecognized(request, count); };
  return Recognition(
      {"recognize", count, count < 10000 ? 0 : 1.30, file, Floors::Recognize, check, check, RecognizedValues(), 400});
}

void ExpectRelationships(const pugi::xml_document& request, int count) {
  int part = 0;
  for (const pugi::xml_node relationship : request.document_element().child("relationshiplist")) {
    Expect(relationship.attribute("phid").value() == Parts::RelationshipPhid(part++), "a relationship's physical id");
  }
  Expect(part == count, "relationships");
}

// The floor leaves the relationships as they are: looking for them is what the higher goal leaves room for.
Comparison WithRelationships(const Settings& settings, int count) {
  const auto file = [=] {
    const std::string root = Trees::ObjectsWithRelationships(settings.data, count);
    return Trees::File(settings.data, "linked" + std::to_string(count) + ".xml",
                       Trees::Request(root, count, Trees::Relationships::With));
  };
  const auto checkFloor = [=](const auto& request) { Trees::ExpectRecognized(request, count); };
  const auto check = [=](const auto& request) {
    Trees::ExpectRecognized(request, count);
    ExpectRelationships(request, count);
  };
  return Recognition({"recognize with relationships", count, count < 100000 ? 0 : 1.45, file, Floors::Recognize, check,
                      checkFloor, RecognizedValues()});
}

std::string InstanceAttributes(const std::string& folder, int part) {
  return " cadid=\"" + Parts::CadId(part) + "\" type=\"instance\" filename=\"" + "instance" + std::to_string(part) +
         ".prt\" dirname=\"" + folder + "\" familyid=\"generic\" xsStamp=\"" +
         Parts::Facts(part, "object").texts[4].second + "\" ceStamp=\"" + Parts::Facts(part, "object").texts[2].second +
         "\"";
}

/// A family table: count instances without files, all in the record of their generic.
struct FamilyTable {
  FamilyTable(const std::string& data, int count) : folder(data + "/family" + std::to_string(count)) {
    Parts::MakeRecordFolders(folder, 1);
    folder = Parts::Folder(folder, 0);
    Floors::Record record{folder + "/.KORVANTHEMIX", "generic.prt.xml", Parts::Facts(0, "object"), {}, {}};
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<command cname=\"synclocalrecognition\">"
        "<cadobjectlist>";
    for (int part = 0; part < count; ++part) {
      text += "<cadobject" + InstanceAttributes(folder, part) + "/>";
      Floors::Element entry = Parts::Facts(part, "composition");
      entry.id = "instance" + std::to_string(part) + ".prt";
      entry.texts[1].second.clear();
      record.nested.push_back(std::move(entry));
    }
    text += "<cadobject cadid=\"generic\" type=\"part\" filename=\"generic.prt.1\" dirname=\"" + folder + "\" phid=\"" +
            Parts::Phid(0) + "\"/></cadobjectlist></command>";
    recordFile = record.folder + "/" + record.file;
    Parts::WriteTextFile(recordFile, Parts::RecordText(record));
    request = Trees::File(data, "family" + std::to_string(count) + ".xml", text);
  }
  std::string folder;
  std::string recordFile;
  std::string request;
};

void ExpectInstances(const pugi::xml_document& request, int count) {
  int part = 0;
  for (const pugi::xml_node object : request.document_element().child("cadobjectlist")) {
    if (std::string_view(object.attribute("type").value()) == "instance") {
      Expect(std::string_view(object.attribute("status").value()) == "EXISTS", "an instance that exists");
      Expect(object.attribute("phid").value() == Parts::Phid(part++), "the physical id of an instance");
    }
  }
  Expect(part == count, "instances");
}

Comparison ChildrenInParent(const Settings& settings, int count) {
  const auto recordFile = std::make_shared<std::string>();
  const auto file = [=] {
    const FamilyTable table(settings.data, count);
    *recordFile = table.recordFile;
    return table.request;
  };
  const auto floor = [=](auto& request) { return Floors::RecognizeInParent(request, *recordFile); };
  const auto check = [=](const auto& request) { ExpectInstances(request, count); };
  GrowRequest::Values values = RecognizedValues();
  std::erase_if(values, [](const auto& value) { return std::string_view(value.first) == "objectChangeStamp"; });
  return Recognition({"children in one record", count, 0, file, floor, check, check, values, 0, 10000});
}

Comparison WithoutRecords(const Settings& settings, int count) {
  const auto file = [=] {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<command cname=\"synclocalrecognition\" downloadfileonly=\"TRUE\"><cadobjectlist>";
    for (int part = 0; part < count; ++part) {
      text += "<cadobject" + Parts::RequestAttributes("/cad", part) + " phid=\"" + Parts::Phid(part) + "\"/>";
    }
    return Trees::File(settings.data, "norecords" + std::to_string(count) + ".xml",
                       text + "</cadobjectlist></command>");
  };
  const auto check = [=](const pugi::xml_document& request) {
    int exist = 0;
    for (const pugi::xml_node object : request.document_element().child("cadobjectlist")) {
      exist += std::string_view(object.attribute("status").value()) == "EXISTS" ? 1 : 0;
    }
    Expect(exist == count, "objects that exist: " + std::to_string(exist));
  };
  return Recognition({"recognize without records",
                      count,
                      0,
                      file,
                      Floors::RecognizeWithoutRecords,
                      check,
                      check,
                      {{"status", "EXISTS"}, {"lrdversion", "4.0"}, {"macroceStamp", ""}}});
}

}  // namespace

std::vector<Comparison> RecognitionComparisons(const Settings& settings) {
  std::vector<Comparison> all;
  for (const auto make : {OwnRecords, WithRelationships, ChildrenInParent, WithoutRecords}) {
    for (const int count : settings.sizes) {
      all.push_back(make(settings, count));
    }
  }
  return all;
}
