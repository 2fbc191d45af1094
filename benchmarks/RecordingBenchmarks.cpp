// Writing of record files. Each pass that writes new files does so in a fresh tree, and nothing is deleted in between:
// both would otherwise be paid for by the next pass.

#include <sys/stat.h>

#include <filesystem>

#include "benchmarks/Client.h"
#include "benchmarks/Comparison.h"
#include "benchmarks/Floors.h"
#include "benchmarks/Parts.h"
#include "benchmarks/Trees.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"
#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

namespace {

namespace fs = std::filesystem;

using Records = std::vector<Floors::Record>;

std::string FreshTree(const std::string& data) {
  static int number = 0;
  fs::create_directories(data + "/written");
  std::string root;
  do {
    root = data + "/written/" + std::to_string(number++);
  } while (fs::exists(root));
  return root;
}

Records RecordsIn(const std::string& root, int count, int edition = 0) {
  Records records;
  for (int part = 0; part < count; ++part) {
    records.push_back(Parts::Record(root, part, edition));
  }
  return records;
}

/// Throws unless the record files of the tree are exactly these.
void ExpectWritten(const std::string& root, const Records& records) {
  for (const Floors::Record& record : records) {
    const std::string path = record.folder + "/" + record.file;
    Expect(Parts::ReadTextFile(path) == Parts::RecordText(record), "the content of " + path);
  }
  std::size_t files = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
    files += entry.is_regular_file() && entry.path().parent_path().filename() == ".KORVANTHEMIX" ? 1 : 0;
  }
  Expect(files == records.size(), "files in the record folders: " + std::to_string(files));
}

/// Everything that shows whether a file was touched.
std::vector<std::pair<ino_t, long>> StateOf(const Records& records) {
  std::vector<std::pair<ino_t, long>> state;
  for (const Floors::Record& record : records) {
    struct stat file {};
    stat((record.folder + "/" + record.file).c_str(), &file);
    state.emplace_back(file.st_ino, file.st_mtim.tv_nsec);
  }
  return state;
}

/// The module's records for count parts, numbered from 0, made from a server's answer.
QELXIVARDOSLRDObject_varList ModuleRecords(const std::string& data, int count) {
  std::string text = "<info><cadobjectlist>";
  for (int part = 0; part < count; ++part) {
    text += "<cadobject" + Parts::AnswerAttributes("/cad", part) + "/>";
  }
  const ZYMIDOMDocument_var answer = Client::Parse(Trees::File(data, "answer.xml", text + "</cadobjectlist></info>"));
  QELXIVARDOSLRDObject_varZYMUnicodeStringDico byCadId;
  ZYMMakeComponent<QELXVARDOSLRDXMLHandler>(Client::Configuration())
      ->ReadCadObjectNode(Client::RootOf(answer), byCadId);
  QELXIVARDOSLRDObject_varList records;
  for (const auto& entry : byCadId) {
    records.Append(entry.second);
  }
  Expect(records.Size() == count, "records of the answer: " + std::to_string(records.Size()));
  return records;
}

/// What all the ways to write one list of records share: the tree and what is to stand in it.
class WriteList : public Variant {
 public:
  WriteList(std::string data, int count) : data_(std::move(data)), count_(count) {}

 protected:
  void TakeFreshTree() {
    root_ = FreshTree(data_);
    Parts::MakeRecordFolders(root_, count_);
  }
  void TakeEdition(int edition) {
    edition_ = edition;
    expected_ = RecordsIn(root_, count_, edition);
  }
  void Settle() const { Parts::FlushDiskOf(data_); }

  std::string data_;
  int count_;
  std::string root_;
  int edition_ = 0;
  Records expected_;
};

class WriteWithModule : public WriteList {
 public:
  WriteWithModule(const std::string& data, int count) : WriteList(data, count), records_(ModuleRecords(data, count)) {}

  void Run() override { handler_->WriteToFile(records_); }
  void Check() override { ExpectWritten(root_, expected_); }

 protected:
  void Bring(int edition) {
    TakeEdition(edition);
    for (int part = 0; part < count_; ++part) {
      const Floors::Record& record = expected_[static_cast<std::size_t>(part)];
      records_[part + 1]->SetLRDFilePath(ZYMUnicodeString(record.folder + "/" + record.file));
      records_[part + 1]->SetObjectChangeStamp(record.object.texts[1].second);
      records_[part + 1]->SetCEStamp(record.object.texts[2].second);
    }
  }

 private:
  QELXIVARDOSLRDObject_varList records_;
  ZYMHandle<QELXVARDOSLRDXMLHandler> handler_ = ZYMMakeComponent<QELXVARDOSLRDXMLHandler>(Client::Configuration());
};

class WriteNewWithModule : public WriteWithModule {
 public:
  using WriteWithModule::WriteWithModule;
  void Prepare() override {
    TakeFreshTree();
    Bring(0);
    Settle();
  }
};

class WriteChangedWithModule : public WriteWithModule {
 public:
  using WriteWithModule::WriteWithModule;
  void Prepare() override {
    if (root_.empty()) {
      TakeFreshTree();
      Floors::Write(RecordsIn(root_, count_), Floors::Folders::Exist);
    }
    Bring(edition_ + 1);
    Settle();
  }
};

class WriteUnchangedWithModule : public WriteWithModule {
 public:
  using WriteWithModule::WriteWithModule;
  void Prepare() override {
    if (root_.empty()) {
      TakeFreshTree();
      Bring(0);
      Floors::Write(expected_, Floors::Folders::Exist);
      before_ = StateOf(expected_);
    }
    Settle();
  }
  void Check() override {
    WriteWithModule::Check();
    Expect(StateOf(expected_) == before_, "record files that nobody touched");
  }

 private:
  std::vector<std::pair<ino_t, long>> before_;
};

class WriteWithFloor : public WriteList {
 public:
  using WriteList::WriteList;
  void Run() override { Floors::Write(expected_, Floors::Folders::Exist); }
  void Check() override { ExpectWritten(root_, expected_); }
};

class WriteNewWithFloor : public WriteWithFloor {
 public:
  using WriteWithFloor::WriteWithFloor;
  void Prepare() override {
    TakeFreshTree();
    TakeEdition(0);
    Settle();
  }
};

class WriteChangedWithFloor : public WriteWithFloor {
 public:
  using WriteWithFloor::WriteWithFloor;
  void Prepare() override {
    if (root_.empty()) {
      TakeFreshTree();
      Floors::Write(RecordsIn(root_, count_), Floors::Folders::Exist);
    }
    TakeEdition(edition_ + 1);
    Settle();
  }
};

class ReadWithFloor : public WriteList {
 public:
  using WriteList::WriteList;
  void Prepare() override {
    if (root_.empty()) {
      TakeFreshTree();
      TakeEdition(0);
      Floors::Write(expected_, Floors::Folders::Exist);
    }
    Settle();
  }
  void Run() override { bytes_ = Floors::Read(expected_); }
  void Check() override {
    Expect(bytes_ == expected_.size() * Parts::RecordText(expected_.front()).size(), "the bytes of all records");
  }

 private:
  std::size_t bytes_ = 0;
};

/// The answer to the check-out of an assembly, the first part, with all other parts below it.
class CheckOut : public Variant {
 public:
  CheckOut(std::string data, int count) : data_(std::move(data)), count_(count) {}

  void Prepare() override {
    root_ = FreshTree(data_);
    Parts::MakeFolders(root_, count_);
    Parts::MakeObjectFiles(root_, count_);
    expected_ = RecordsIn(root_, count_);
    for (int part = 1; part < count_; ++part) {
      expected_.front().nested.push_back(Parts::Relationship(part));
      expected_.front().nested.push_back(Parts::Facts(part, "structure"));
      expected_.front().nested.back().id = "part" + Parts::RecordName(part).substr(4, 10);
    }
    Take();
    Parts::FlushDiskOf(data_);
  }
  void Check() override { ExpectWritten(root_, expected_); }

 protected:
  virtual void Take() = 0;

  std::string data_;
  int count_;
  std::string root_;
  Records expected_;
};

class CheckOutWithModule : public CheckOut {
 public:
  using CheckOut::CheckOut;
  void Run() override { status_ = handler_->CreateOrUpdateLRD(Client::RootOf(response_), none_); }
  void Check() override {
    Expect(status_ == S_OK, "the status of CreateOrUpdateLRD");
    CheckOut::Check();
  }

 protected:
  void Take() override {
    response_ = Client::Parse(Trees::File(data_, "response.xml", Response()));
    QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(Client::Configuration(), Client::RootOf(response_), handler_);
  }

 private:
  std::string Response() const {
    std::string objects;
    std::string relationships;
    std::string structure;
    for (int part = 0; part < count_; ++part) {
      objects += "<cadobject" + Parts::AnswerAttributes(root_, part) + "/>";
      if (part > 0) {
        const std::string rid = " rid=\"" + std::to_string(part) + "\"";
        relationships += "<relationship" + rid + " reluuid=\"" + Parts::RelationshipId(part) + "\" phid=\"" +
                         Parts::RelationshipPhid(part) + "\" topnode=\"dpt\"/>";
        structure += "<cadobject cadid=\"" + Parts::CadId(part) + "\"><relationship" + rid + "/></cadobject>";
      }
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<response cname=\"checkoutEx\"><info><cadobjectlist>" +
           objects + "</cadobjectlist><relationshiplist>" + relationships +
           "</relationshiplist><structure><cadobject cadid=\"" + Parts::CadId(0) + "\">" + structure +
           "</cadobject></structure></info></response>";
  }

  ZYMIDOMDocument_var response_;
  QELXIVARDOSLRDXMLHandler_var handler_;
  QELXIVARDOSLRDObject_varZYMUnicodeStringDico none_;
  HRESULT status_ = E_FAIL;
};

class CheckOutWithFloor : public CheckOut {
 public:
  using CheckOut::CheckOut;
  void Run() override { Floors::Write(records_, Floors::Folders::Make); }

 protected:
  void Take() override {
    records_ = expected_;
    for (int part = 0; part < count_; ++part) {
      records_[static_cast<std::size_t>(part)].objectFile = Parts::Folder(root_, part) + "/" + Parts::FileName(part);
    }
  }

 private:
  Records records_;
};

template <typename WithModule, typename WithFloor>
void Add(std::vector<Comparison>& all, const Settings& settings, int most, const std::string& work, double goal) {
  const std::string data = settings.data;
  for (const int count : settings.sizes) {
    if (count <= most) {
      const Reference floor{"", count < 10000 ? 0 : goal, [=] { return std::make_unique<WithFloor>(data, count); }};
      all.push_back({work, count, [=] { return std::make_unique<WithModule>(data, count); }, {floor}});
    }
  }
}

}  // namespace

std::vector<Comparison> RecordingComparisons(const Settings& settings) {
  std::vector<Comparison> all;
  Add<WriteNewWithModule, WriteNewWithFloor>(all, settings, settings.mostRecorded, "write new records", 1.25);
  Add<WriteChangedWithModule, WriteChangedWithFloor>(all, settings, settings.mostReplaced, "write changed records", 0);
  Add<WriteUnchangedWithModule, ReadWithFloor>(all, settings, settings.mostRecorded, "write unchanged records", 1.6);
  Add<CheckOutWithModule, CheckOutWithFloor>(all, settings, settings.mostRecorded, "check-out of one assembly", 1.5);
  return all;
}
