// The module comes and goes at run time, in a process that knows nothing of it but the file and the registry.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "component/QELXIVARDOSLRDXMLHandler.h"
#include "component/QELXIVARDOSRecognitionHandler.h"
#include "platform/ZYMBaseUnknown.h"
#include "platform/ZYMFillDictionary.h"
#include "platform/ZYMHandle.h"
#include "tests/support/Trees.h"

namespace {

constexpr const char* Handler = "QELXVARDOSRecognitionHandler";
constexpr const char* HandlerInterface = "QELXIVARDOSRecognitionHandler";

std::vector<std::string>& Events() {
  static std::vector<std::string> events;
  return events;
}

void Observe(ZYMDictionaryEvent event, const char* name) {
  const std::map<ZYMDictionaryEvent, std::string> words = {{ZYMDictionaryEvent::MetaObjectAdded, "+class "},
                                                           {ZYMDictionaryEvent::MetaObjectRemoved, "-class "},
                                                           {ZYMDictionaryEvent::CreationAdded, "+creation "},
                                                           {ZYMDictionaryEvent::CreationRemoved, "-creation "}};
  Events().push_back(words.at(event) + name);
}

/// What has to happen to undo the events, in that order.
std::vector<std::string> Undone(std::vector<std::string> events) {
  std::reverse(events.begin(), events.end());
  for (std::string& event : events) {
    event.front() = '-';
  }
  return events;
}

class Load : public testing::Test {
 protected:
  void SetUp() override {
    // The root's own meta-object belongs to the platform and stays; it must not count as an event of the module.
    ZYMBaseUnknown::MetaObject();
    Events().clear();
    ZYMObserveDictionary(&Observe);
  }
  void TearDown() override { ZYMObserveDictionary(nullptr); }
};

TEST_F(Load, ComesAndGoesTwiceInARow) {
  for (int round = 1; round <= 2; ++round) {
    SCOPED_TRACE(round);
    Events().clear();
    void* module = dlopen(LRD_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    const std::vector<std::string> loading = Events();
    EXPECT_THAT(loading,
                testing::ElementsAre("+class QELXIVARDOSLRDObject", "+class QELXIVARDOSLRDXMLHandler",
                                     "+class QELXIVARDOSRecognitionHandler", "+class QELXVARDOSRecognitionHandler",
                                     "+creation QELXVARDOSRecognitionHandler"));

    // Loading what is loaded only counts.
    ASSERT_EQ(dlopen(LRD_MODULE, RTLD_NOW | RTLD_LOCAL), module);
    EXPECT_EQ(dlclose(module), 0);
    EXPECT_EQ(Events(), loading);

    Events().clear();
    EXPECT_EQ(dlclose(module), 0);
    EXPECT_EQ(Events(), Undone(loading));
    EXPECT_EQ(dlopen(LRD_MODULE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "the module is still in the process";
  }
}

TEST_F(Load, TheHandlerServesAHostThatLinksThePlatformAlone) {
  const std::int64_t living = ZYMBaseUnknown::LivingComponents();
  EXPECT_EQ(ZYMCreateByName(Handler), nullptr);
  void* module = dlopen(LRD_MODULE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(module, nullptr) << dlerror();
  {
    const auto component = ZYMBaseUnknown_var::Adopt(ZYMCreateByName(Handler));
    EXPECT_STREQ(component->IsA(), Handler);
    EXPECT_TRUE(component->IsAKindOf(HandlerInterface));
    const QELXIVARDOSRecognitionHandler_var handler(component);
    ASSERT_FALSE(handler.IsNull());
    EXPECT_TRUE(QELXIVARDOSLRDXMLHandler_var(component).IsNull());

    const ZYMIDOMElement_var request = Tree("<command><cadobjectlist><cadobject phid='1'/></cadobjectlist></command>");
    QELXIVARDOSLRDObject_varZYMUnicodeStringDico records;
    EXPECT_EQ(handler->Recognize(request, records), S_OK);
    EXPECT_EQ(Show(Tagged(request, "cadobject"), {"status"}), "status=EXISTS");

    // The error says which interface was missed, also when the host has nothing but the headers of it.
    EXPECT_THAT([&] { records["none"]->GetPhysicalId(); },
                testing::ThrowsMessage<ZYMNullHandleError>(testing::HasSubstr("QELXIVARDOSLRDObject")));
    EXPECT_THAT([&] { QELXIVARDOSRecognitionHandler_var()->GetLRDMap(request, records); },
                testing::ThrowsMessage<ZYMNullHandleError>(testing::HasSubstr(HandlerInterface)));
  }
  EXPECT_EQ(ZYMBaseUnknown::LivingComponents(), living);
  EXPECT_EQ(dlclose(module), 0);
  EXPECT_EQ(ZYMCreateByName(Handler), nullptr);
  EXPECT_EQ(ZYMFindMetaObject(HandlerInterface), nullptr);
  EXPECT_EQ(dlopen(LRD_MODULE, RTLD_NOW | RTLD_NOLOAD), nullptr)
      << "what the host used keeps the module in the process";
}

}  // namespace
