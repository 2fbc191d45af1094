#include "benchmarks/Parts.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Parts {

namespace {

template <typename... Values>
std::string Text(const char* format, Values... values) {
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), format, values...);
  return text.data();
}

std::string Attribute(const char* name, const std::string& value) {
  return std::string(" ") + name + "=\"" + value + '"';
}

std::string Markup(const Floors::Element& element) {
  std::string text = "<" + element.name + (element.id.empty() ? "" : Attribute("id", element.id)) + ">";
  for (const auto& [tag, value] : element.texts) {
    text += std::string("<") + tag + ">" + value + "</" + tag + ">";
  }
  return text + "</" + element.name + ">";
}

int Create(const std::string& path) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) {
    throw std::runtime_error("cannot make " + path);
  }
  return file;
}

/// Nobody reads it, so it takes no room: an empty place is made and removed many times as fast as a filled one.
void CreateObjectFile(const std::string& path, std::int64_t time) {
  const int file = Create(path);
  const std::array<timespec, 2> times = {timespec{time, 0}, timespec{time, 0}};
  if (ftruncate(file, 4096) != 0 || futimens(file, times.data()) != 0 || close(file) != 0) {
    throw std::runtime_error("cannot make " + path);
  }
}

}  // namespace

std::string Folder(const std::string& root, int part) { return root + Text("/f%04d", part / PerFolder); }
std::string RecordFolder(const std::string& root, int part) { return Folder(root, part) + "/.KORVANTHEMIX"; }
std::string FileName(int part) { return Text("part%06d.prt.3", part); }
std::string RecordName(int part) { return Text("part%06d.prt.xml", part); }
std::string CadId(int part) { return Text("%d", 1000000 + part); }
std::string Phid(int part) { return Text("6A7E5A5C0000E8D45F6B2C3D%08X", part); }
std::string RelationshipId(int part) { return Text("b3d9f1c2-7e55-4c0a-9d1e-5a2f%08x", part); }
std::string RelationshipPhid(int part) { return Text("6A7E5A5C0000E8D46F6B2C3D%08X", part); }
std::int64_t Time(int part) { return 1700000000 + part; }

Floors::Element Facts(int part, const char* elementName, int edition) {
  return {elementName,
          {},
          {{"phid", Phid(part)},
           {"objectChangeStamp", std::to_string(Time(part))},
           {"ceStamp", Text("0E8D45F6B2C3D00%04X%08X", edition, part)},
           {"macroceStamp", Text("1E8D45F6B2C3D000000%08X", part)},
           {"xsStamp", Text("2E8D45F6B2C3D000000%08X", part)},
           {"hashcode", Text("9f86d081884c7d659a2feaa0%08x", part)}}};
}

Floors::Element Relationship(int part) { return {"rel", RelationshipId(part), {{"phid", RelationshipPhid(part)}}}; }

Floors::Record Record(const std::string& root, int part, int edition) {
  return {RecordFolder(root, part), RecordName(part), Facts(part, "object", edition), {}, {}};
}

std::string RecordText(const Floors::Record& record) {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<object version=\"4.0\">";
  for (const auto& [tag, value] : record.object.texts) {
    text += std::string("<") + tag + ">" + value + "</" + tag + ">";
  }
  for (const Floors::Element& nested : record.nested) {
    text += Markup(nested);
  }
  return text + "</object>";
}

std::string RequestAttributes(const std::string& root, int part) {
  const Floors::Element facts = Facts(part, "object");
  return Attribute("cadid", CadId(part)) + Attribute("type", "part") + Attribute("filename", FileName(part)) +
         Attribute("dirname", Folder(root, part)) + Attribute("xsStamp", facts.texts[4].second) +
         Attribute("ceStamp", facts.texts[2].second);
}

std::string AnswerAttributes(const std::string& root, int part) {
  std::string attributes =
      RequestAttributes(root, part) + Attribute("mxtype", "CADPart") + Attribute("selected", "true");
  const Floors::Element facts = Facts(part, "object");
  for (const std::size_t text : {std::size_t{0}, std::size_t{3}, std::size_t{5}}) {
    attributes += Attribute(facts.texts[text].first, facts.texts[text].second);
  }
  return attributes;
}

void MakeFolders(const std::string& root, int count) {
  mkdir(root.c_str(), 0777);
  for (int part = 0; part < count; part += PerFolder) {
    mkdir(Folder(root, part).c_str(), 0777);
  }
}

void MakeRecordFolders(const std::string& root, int count) {
  MakeFolders(root, count);
  for (int part = 0; part < count; part += PerFolder) {
    mkdir(RecordFolder(root, part).c_str(), 0777);
  }
}

void MakeObjectFiles(const std::string& root, int count) {
  for (int part = 0; part < count; ++part) {
    CreateObjectFile(Folder(root, part) + "/" + FileName(part), Time(part));
  }
}

void MakeRecordFiles(const std::string& root, int count, bool withRelationships) {
  for (int part = 0; part < count; ++part) {
    Floors::Record record = Record(root, part);
    if (withRelationships) {
      record.nested.push_back(Relationship(part));
    }
    WriteTextFile(record.folder + "/" + record.file, RecordText(record));
  }
}

void WriteTextFile(const std::string& path, std::string_view text) {
  const int file = Create(path);
  if (write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()) || close(file) != 0) {
    throw std::runtime_error("cannot write " + path);
  }
}

void FlushDiskOf(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0 || syncfs(file) != 0 || close(file) != 0) {
    throw std::runtime_error("cannot flush the disk of " + path);
  }
}

std::string ReadTextFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

}  // namespace Parts
