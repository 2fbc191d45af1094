#include "benchmarks/Floors.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

namespace Floors {

namespace {

constexpr std::array<const char*, 6> Texts = {"phid",         "objectChangeStamp", "ceStamp",
                                              "macroceStamp", "xsStamp",           "hashcode"};

/// The six texts of a record or of an entry in one.
struct Facts {
  explicit Facts(pugi::xml_node element) {
    for (std::size_t i = 0; i < Texts.size(); ++i) {
      texts[i] = element.child_value(Texts[i]);
    }
  }
  std::array<const char*, 6> texts{};
};

using Buffer = std::array<char, 16384>;

/// Reads a whole file of less than the buffer's size. Answers its length, 0 when it cannot be read.
std::size_t ReadSmall(const char* path, Buffer& buffer) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return 0;
  }
  const ssize_t got = read(file, buffer.data(), buffer.size());
  close(file);
  return got < 0 ? 0 : static_cast<std::size_t>(got);
}

bool IsStampOf(std::string_view stamp, const struct stat& file) {
  std::array<char, 24> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), file.st_mtim.tv_sec).ptr;
  return stamp == std::string_view(text.data(), static_cast<std::size_t>(end - text.data()));
}

void Set(pugi::xml_node object, const char* name, const char* value) {
  pugi::xml_attribute attribute = object.attribute(name);
  (attribute ? attribute : object.append_attribute(name)).set_value(value);
}

void SetFacts(pugi::xml_node object, const char* status, const Facts& facts) {
  const char* const ownXsStamp = object.attribute("xsStamp").value();
  const bool sameXsStamp = std::strcmp(ownXsStamp, facts.texts[4]) == 0;
  Set(object, "status", status);
  Set(object, "phid", facts.texts[0]);
  Set(object, "lrdversion", "4.0");
  Set(object, "macroceStamp", facts.texts[3]);
  Set(object, "xsStamp", facts.texts[4]);
  Set(object, "hashcodefromlrd", facts.texts[5]);
  if (*facts.texts[1] != '\0') {
    Set(object, "objectChangeStamp", facts.texts[1]);
  }
  Set(object, "ceStamp", sameXsStamp ? object.attribute("ceStamp").value() : facts.texts[2]);
}

/// "bracket.prt.3" has the record "bracket.prt.xml".
std::string RecordFileOf(const std::string& folder, const char* fileName) {
  const std::string_view name(fileName);
  return folder + "/.KORVANTHEMIX/" + std::string(name.substr(0, name.rfind('.'))) + ".xml";
}

}  // namespace

int Recognize(pugi::xml_document& request) {
  int exist = 0;
  Buffer buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init): clearing it would be work that nobody has to do
  for (pugi::xml_node object : request.document_element().child("cadobjectlist")) {
    const std::string folder = object.attribute("dirname").value();
    const char* const fileName = object.attribute("filename").value();
    struct stat file {};
    stat((folder + "/" + fileName).c_str(), &file);
    const std::size_t length = ReadSmall(RecordFileOf(folder, fileName).c_str(), buffer);
    pugi::xml_document record;
    record.load_buffer_inplace(buffer.data(), length);
    const Facts facts(record.document_element());
    const bool same = IsStampOf(facts.texts[1], file);
    SetFacts(object, same ? "EXISTS" : "MODIFIED", facts);
    exist += same && *object.attribute("cadid").value() != '\0' ? 1 : 0;
  }
  return exist;
}

int RecognizeInParent(pugi::xml_document& request, const std::string& recordFile) {
  pugi::xml_document record;
  record.load_file(recordFile.c_str());
  std::unordered_map<std::string_view, pugi::xml_node> entries;
  for (const pugi::xml_node entry : record.document_element().children("composition")) {
    entries.emplace(entry.attribute("id").value(), entry);
  }
  int exist = 0;
  for (pugi::xml_node object : request.document_element().child("cadobjectlist")) {
    const char* const fileName = object.attribute("filename").value();
    struct stat file {};
    stat((std::string(object.attribute("dirname").value()) + "/" + fileName).c_str(), &file);
    if (const auto entry = entries.find(fileName); entry != entries.end()) {
      SetFacts(object, "EXISTS", Facts(entry->second));
      exist += *object.attribute("familyid").value() != '\0' ? 1 : 0;
    }
  }
  return exist;
}

int RecognizeWithoutRecords(pugi::xml_document& request) {
  int exist = 0;
  for (pugi::xml_node object : request.document_element().child("cadobjectlist")) {
    const bool known = *object.attribute("phid").value() != '\0';
    const bool modified = std::strcmp(object.attribute("modified").value(), "TRUE") == 0;
    Set(object, "status", !known ? "UNKNOWN" : modified ? "MODIFIED" : "EXISTS");
    Set(object, "lrdversion", "4.0");
    for (const char* stamp : {"ceStamp", "macroceStamp", "xsStamp"}) {
      Set(object, stamp, object.attribute(stamp).value());
    }
    exist += known && !modified ? 1 : 0;
  }
  return exist;
}

namespace {

void TakeOne(pugi::xml_node element, std::vector<std::string>& taken) {
  for (const pugi::xml_attribute attribute : element.attributes()) {
    taken.emplace_back(attribute.value());
  }
  if (const pugi::xml_attribute fileName = element.attribute("filename")) {
    struct stat file {};
    stat((std::string(element.attribute("dirname").value()) + "/" + fileName.value()).c_str(), &file);
    taken.push_back(std::to_string(file.st_mtim.tv_sec));
  }
}

}  // namespace

int TakeAll(const pugi::xml_document& tree) {
  struct Walker : pugi::xml_tree_walker {
    bool for_each(pugi::xml_node& node) override {
      ++elements;
      TakeOne(node, taken);
      return true;
    }
    int elements = 0;
    std::vector<std::string> taken;
  } walker;
  tree.document_element().traverse(walker);
  return walker.elements;
}

namespace {

struct StringWriter : pugi::xml_writer {
  void write(const void* data, std::size_t size) override { text.append(static_cast<const char*>(data), size); }
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
};

pugi::xml_node Append(pugi::xml_node parent, const Element& element) {
  pugi::xml_node node = parent.append_child(element.name.c_str());
  if (!element.id.empty()) {
    node.append_attribute("id").set_value(element.id.c_str());
  }
  for (const auto& [tag, value] : element.texts) {
    node.append_child(tag).append_child(pugi::node_pcdata).set_value(value.c_str());
  }
  return node;
}

std::string Serialise(const Record& record) {
  pugi::xml_document document;
  pugi::xml_node object = document.append_child("object");
  object.append_attribute("version").set_value("4.0");
  for (const auto& [tag, value] : record.object.texts) {
    object.append_child(tag).append_child(pugi::node_pcdata).set_value(value.c_str());
  }
  for (const Element& nested : record.nested) {
    Append(object, nested);
  }
  if (!record.objectFile.empty()) {
    struct stat file {};
    stat(record.objectFile.c_str(), &file);
    object.child("objectChangeStamp").text().set(std::to_string(file.st_mtim.tv_sec).c_str());
  }
  StringWriter writer;
  document.save(writer, "", pugi::format_raw | pugi::format_no_declaration);
  return std::move(writer.text);
}

void WriteFile(const std::string& path, const std::string& text) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file < 0 || write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("the floor cannot write " + path);
  }
  close(file);
}

/// For many files on a quiet disk nothing durable is cheaper.
void FlushDiskOf(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0 || syncfs(file) != 0) {
    throw std::runtime_error("the floor cannot flush the disk of " + path);
  }
  close(file);
}

}  // namespace

void Write(const std::vector<Record>& records, Folders folders) {
  std::vector<std::string> temporaries;
  temporaries.reserve(records.size());
  const std::string* folder = nullptr;
  for (const Record& record : records) {
    if (folders == Folders::Make && (folder == nullptr || *folder != record.folder)) {
      mkdir(record.folder.c_str(), 0777);
      folder = &record.folder;
    }
    temporaries.push_back(record.folder + "/.new" + std::to_string(temporaries.size()));
    WriteFile(temporaries.back(), Serialise(record));
  }
  FlushDiskOf(temporaries.front());
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (rename(temporaries[i].c_str(), (records[i].folder + "/" + records[i].file).c_str()) != 0) {
      throw std::runtime_error("the floor cannot rename " + temporaries[i]);
    }
  }
}

std::size_t Read(const std::vector<Record>& records) {
  std::size_t bytes = 0;
  Buffer buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init): clearing it would be work that nobody has to do
  for (const Record& record : records) {
    bytes += ReadSmall((record.folder + "/" + record.file).c_str(), buffer);
  }
  return bytes;
}

}  // namespace Floors
