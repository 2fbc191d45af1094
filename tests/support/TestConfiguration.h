#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>

#include "platform/QELIVARDOSGlobalConfigObject.h"

/// A configuration object that answers what a test puts into its fields.
class TestConfiguration : public QELIVARDOSGlobalConfigObject {
 public:
  ZYMUnicodeString GetCADName() override { return cadName; }
  ZYMUnicodeString GetIdentifierAttribute(const ZYMUnicodeString& type) override { return identifiers[type.Str()]; }
  bool IsTypeInCategory(const ZYMUnicodeString& type, const ZYMUnicodeString& category) override {
    return classes.contains({type.Str(), category.Str()});
  }
  bool IsRelTypeInCategory(const ZYMUnicodeString& type, const ZYMUnicodeString& category) override {
    return classes.contains({type.Str(), category.Str()});
  }

  std::string cadName = "CREO";
  std::map<std::string, std::string> identifiers = {
      {"part", "filename"}, {"instance", "name"}, {"bare", "name"}, {"embedded", "name"}};
  /// Of types and of relationship types.
  std::set<std::pair<std::string, std::string>> classes = {{"bare", "TYPE_OBJECT_WITHOUT_FILE"},
                                                           {"preview", "TYPE_VISUALIZATION_LIKE"},
                                                           {"shows", "REL_VISUALIZATION_LIKE"},
                                                           {"instance", "TYPE_FAMILY_ITEM_LIKE"},
                                                           {"embedded", "TYPE_EMBEDDED_COMPONENT_LIKE"}};
};

using TestConfiguration_var = ZYMHandle<TestConfiguration>;
