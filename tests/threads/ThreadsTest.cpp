#include <gtest/gtest.h>

#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "platform/QELVARDOSParallelFileLayer.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMFillDictionary.h"
#include "platform/ZYMIDOMLook.h"
#include "tests/support/Client.h"

namespace {

constexpr int Threads = 4;

/// Lets run(number) run in each of several threads, all of them from the same moment on.
template <typename Run>
void AtOnce(const Run& run) {
  std::latch start(Threads);
  std::vector<std::thread> threads;
  threads.reserve(Threads);
  for (int number = 0; number < Threads; ++number) {
    threads.emplace_back([&, number] {
      start.arrive_and_wait();
      run(number);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

// The folders differ in their last six letters alone.
std::string WithoutFolder(std::string text, const std::string& folder) {
  for (std::size_t at = 0; (at = text.find(folder)) != std::string::npos;) {
    text.erase(at, folder.size());
  }
  return text;
}

// Everything that a class makes on its first use is first used here.
TEST(ThreadsTest, each_thread_records_recognises_and_fails_with_objects_of_its_own) {
  std::vector<std::string> results(Threads);
  AtOnce([&results](int number) {
    const Client client;
    const std::string missing = client.folder.At("missing.xml");
    for (int round = 0; round < 5; ++round) {
      EXPECT_EQ(client.RecordAnswer(client.Root("answer.xml")), S_OK);
      const ZYMIDOMElement_var request = client.Root("request.xml");
      EXPECT_EQ(client.Recognize(request), S_OK);
      QELXIVARDOSLRDObject_var record;
      EXPECT_EQ(client.ReadRecord(client.folder.At(".KORVANTHEMIX/a.prt.xml"), record), S_OK);
      EXPECT_EQ(record->GetPhysicalId(), "A");
      EXPECT_EQ(client.ReadRecord(missing, record), E_FAIL);
      std::this_thread::yield();
      EXPECT_EQ(QELVARDOSSystemUtils::LastError(), missing + ": No such file or directory");
      // A comment makes the file one for the other parser.
      client.folder.Put("missing.xml.not", "<!---->");
      EXPECT_EQ(client.ReadRecord(client.folder.At("missing.xml.not"), record), E_FAIL);
      results[static_cast<std::size_t>(number)] =
          WithoutFolder(client.folder.Record("a.prt") + client.folder.Record("b.prt") + Client::TextOf(request),
                        client.folder.Root());
    }
  });
  EXPECT_NE(results[0].find("status=\"EXISTS\" phid=\"B\""), std::string::npos) << results[0];
  for (const std::string& result : results) {
    EXPECT_EQ(result, results[0]);
  }
}

TEST(ThreadsTest, callers_whose_looks_are_taken_ahead_see_what_they_would_see_by_themselves) {
  constexpr int Objects = 300;
  QELVARDOSParallelFileLayer disk(QELVARDOSFileLayer::System(), 8);
  const QELVARDOSUseFileLayer use(disk);
  AtOnce([](int number) {
    const Client client("CE" + std::to_string(number));
    std::string objects;
    for (int object = 0; object < Objects; ++object) {
      const std::string name = "p" + std::to_string(object) + ".prt";
      client.folder.PutFile(name, 100);
      objects.append("<cadobject cadid='").append(name).append("' type='part' filename='").append(name);
      objects.append("' dirname='").append(client.folder.Root()).append("' selected='true' ceStamp='");
      objects.append(std::to_string(number)).append("'/>");
    }
    client.folder.Put("many.xml", "<response cname='checkoutEx'><info><cadobjectlist>" + objects +
                                      "</cadobjectlist></info></response>");
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(client.RecordAnswer(client.Root("many.xml")), S_OK);
      const ZYMIDOMElement_var list = FirstElement(client.Root("many.xml"), "cadobjectlist");
      EXPECT_EQ(client.Recognize(FirstElement(client.Root("many.xml"), "info")), S_OK);
      ForEachChildElement(list, [&](const ZYMIDOMElement_var& object) {
        EXPECT_NE(client.folder.Record(Attribute(object, "cadid").Str()).find(">" + std::to_string(number) + "<"),
                  std::string::npos);
        return true;
      });
    }
  });
}

class Made : public ZYMBaseUnknown {};
ZYMBaseUnknown* Make() { return new Made; }

/// Registers, finds and forgets classes, one of its own and one that all threads register.
void UseRegistry(const std::string& own, const std::string& shared) {
  {
    const ZYMRegisteredMetaObject meta(own.c_str(), ZYMBaseUnknown::MetaObject(), nullptr);
    EXPECT_EQ(ZYMFindMetaObject(own), meta.Get());
    // Whoever comes first registers it; all get the same one, as long as one of them keeps it.
    const ZYMRegisteredMetaObject first(shared.c_str(), nullptr, nullptr);
    EXPECT_EQ(ZYMFindMetaObject(shared), first.Get());
    EXPECT_EQ(fct_RetrieveMetaObject(shared, nullptr, "", ""), first.Get());
  }
  EXPECT_EQ(ZYMFindMetaObject(own), nullptr);

  ZYMFillDictionary::RegisterFunctionCreation(own.c_str(), &Make);
  EXPECT_TRUE(ZYMBaseUnknown_var::Adopt(ZYMCreateByName(own.c_str())));
  ZYMFillDictionary::UnregisterFunctionCreation(own.c_str(), nullptr);
  EXPECT_TRUE(ZYMBaseUnknown_var::Adopt(ZYMCreateByName(own.c_str()))) << "another's is left alone";
  ZYMFillDictionary::UnregisterFunctionCreation(own.c_str(), &Make);
  EXPECT_EQ(ZYMCreateByName(own.c_str()), nullptr);
}

TEST(ThreadsTest, classes_come_are_asked_for_and_go_in_several_threads) {
  // One thread does one thing alone: nothing but that one's own lock keeps it apart from what the others do.
  const std::vector<void (*)(const char* name)> alone = {
      [](const char* name) { ZYMFindMetaObject(name); },
      [](const char* name) { const ZYMRegisteredMetaObject meta(name, nullptr, nullptr); },
      [](const char* name) { ZYMCreateByName(name); },
      [](const char* name) { ZYMFillDictionary::RegisterFunctionCreation(name, nullptr); },
      [](const char* name) { ZYMFillDictionary::UnregisterFunctionCreation(name, nullptr); },
  };
  constexpr int Rounds = 50;
  const auto shared = [](int round) { return "shared " + std::to_string(round); };
  for (const auto& only : alone) {
    AtOnce([&](int number) {
      for (int round = 0; round < Rounds; ++round) {
        const std::string own = std::to_string(number) + " " + std::to_string(round);
        number == 0 ? only(own.c_str()) : UseRegistry(own, shared(round));
      }
    });
    for (int round = 0; round < Rounds; ++round) {
      EXPECT_EQ(ZYMFindMetaObject(shared(round)), nullptr);
      ZYMFillDictionary::UnregisterFunctionCreation(("0 " + std::to_string(round)).c_str(), nullptr);
    }
  }
}

}  // namespace
