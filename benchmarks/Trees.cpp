#include "benchmarks/Trees.h"

#include "benchmarks/Comparison.h"
#include "benchmarks/Parts.h"

namespace Trees {

namespace {

std::string TreeOf(const std::string& data, const std::string& name, int count, bool withRelationships) {
  std::string root = data + "/" + name + std::to_string(count);
  const std::string whole = root + ".whole";
  // A tree that an earlier run left is as good as a new one when its parts look the same.
  const std::string look = Parts::RequestAttributes("", 0) + Parts::RecordText(Parts::Record("", 0));
  if (Parts::ReadTextFile(whole) != look) {
    Parts::MakeRecordFolders(root, count);
    Parts::MakeObjectFiles(root, count);
    Parts::MakeRecordFiles(root, count, withRelationships);
    Parts::WriteTextFile(whole, look);
  }
  return root;
}

}  // namespace

std::string ObjectsWithRecords(const std::string& data, int count) { return TreeOf(data, "own", count, false); }
std::string ObjectsWithRelationships(const std::string& data, int count) { return TreeOf(data, "linked", count, true); }

std::string File(const std::string& data, const std::string& name, const std::string& text) {
  std::string path = data + "/" + name;
  // Another process may be reading it.
  if (Parts::ReadTextFile(path) != text) {
    Parts::WriteTextFile(path, text);
  }
  return path;
}

std::string Request(const std::string& root, int count, Relationships relationships) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<command cname=\"synclocalrecognition\"><cadobjectlist>";
  for (int part = 0; part < count; ++part) {
    text += "<cadobject" + Parts::RequestAttributes(root, part) + "/>";
  }
  text += "</cadobjectlist>";
  if (relationships == Relationships::With) {
    text += "<relationshiplist>";
    for (int part = 0; part < count; ++part) {
      text += "<relationship rid=\"" + std::to_string(part) + "\" reluuid=\"" + Parts::RelationshipId(part) +
              "\" topnode=\"dpt\"/>";
    }
    text += "</relationshiplist>";
  }
  return text + "</command>";
}

void ExpectRecognized(const pugi::xml_document& request, int count) {
  int part = 0;
  for (const pugi::xml_node object : request.document_element().child("cadobjectlist")) {
    const Floors::Element facts = Parts::Facts(part, "object");
    const auto expect = [&](const char* attribute, const std::string& value) {
      Expect(object.attribute(attribute).value() == value,
             Parts::FileName(part) + " has " + attribute + " = " + object.attribute(attribute).value());
    };
    expect("status", "EXISTS");
    expect("lrdversion", "4.0");
    expect("hashcodefromlrd", facts.texts[5].second);
    for (std::size_t text = 0; text < 5; ++text) {
      expect(facts.texts[text].first, facts.texts[text].second);
    }
    ++part;
  }
  Expect(part == count, "objects of the request: " + std::to_string(part));
}

}  // namespace Trees
