#include "lrd/Configuration.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "lrd/HostError.h"
#include "lrd/XmlFile.h"

namespace lrd {

namespace {

struct Type {
  std::string identifier;
  std::set<std::string, std::less<>> classes;
};

using Types = std::map<std::string, Type, std::less<>>;

bool BelongsTo(const Types& types, const ZYMUnicodeString& name, const ZYMUnicodeString& category) {
  const auto type = types.find(name.View());
  return type != types.end() && type->second.classes.contains(category.View());
}

class FileConfiguration : public QELIVARDOSGlobalConfigObject {
 public:
  FileConfiguration(std::string cad, std::string identifier, Types types, Types relationships)
      : cad_(std::move(cad)),
        identifier_(std::move(identifier)),
        types_(std::move(types)),
        relationships_(std::move(relationships)) {}

  ZYMUnicodeString GetCADName() override { return cad_; }
  ZYMUnicodeString GetIdentifierAttribute(const ZYMUnicodeString& type) override {
    const auto listed = types_.find(type.View());
    return listed == types_.end() ? identifier_ : listed->second.identifier;
  }
  bool IsTypeInCategory(const ZYMUnicodeString& type, const ZYMUnicodeString& category) override {
    return BelongsTo(types_, type, category);
  }
  bool IsRelTypeInCategory(const ZYMUnicodeString& type, const ZYMUnicodeString& category) override {
    return BelongsTo(relationships_, type, category);
  }

 private:
  std::string cad_;
  std::string identifier_;
  Types types_;
  Types relationships_;
};

class FileContext : public QELIVARDOSClientContext {
 public:
  explicit FileContext(ZYMUnicodeStringList commands) : commands_(std::move(commands)) {}
  ZYMUnicodeStringList GetCommandsWithoutLRD() override { return commands_; }

 private:
  ZYMUnicodeStringList commands_;
};

/// Reads one configuration file; each complaint names the file and what in it is wrong.
class Reader {
 public:
  explicit Reader(std::string file) : file_(std::move(file)) {}

  Configuration Read() {
    const ZYMIDOMElement_var root = RootElement(ParseXml(file_));
    if (NodeName(root).Str() != "configuration") {
      Refuse("the document element is <" + NodeName(root).Str() + ">, not <configuration>");
    }
    Allow(root, {"cad", "identifier"});
    const std::string cad = Required(root, "cad");
    identifier_ = Attribute(root, "identifier").Str();
    ForEachChildElement(root, [this](const ZYMIDOMElement_var& element) {
      ReadElement(element);
      return true;
    });
    return Result(cad);
  }

 private:
  void ReadElement(const ZYMIDOMElement_var& element) {
    const std::string name = NodeName(element).Str();
    if (name == "type") {
      Allow(element, {"name", "identifier", "classes"});
      AddType(types_, element);
    } else if (name == "relationship") {
      Allow(element, {"name", "classes"});
      AddType(relationships_, element);
    } else if (name == "withoutrecords") {
      Allow(element, {"command"});
      commands_.Append(Required(element, "command"));
    } else {
      Refuse("unknown element <" + name + ">");
    }
    ForEachChildElement(element, [&](const ZYMIDOMElement_var& nested) -> bool {
      Refuse("unknown element <" + NodeName(nested).Str() + "> in <" + name + ">");
    });
  }

  void AddType(Types& types, const ZYMIDOMElement_var& element) const {
    const std::string name = Required(element, "name");
    Type type{HasAttribute(element, "identifier") ? Attribute(element, "identifier").Str() : identifier_, {}};
    std::istringstream classes(Attribute(element, "classes").Str());
    for (std::string category; classes >> category;) {
      type.classes.insert(category);
    }
    if (!types.emplace(name, std::move(type)).second) {
      Refuse("<" + NodeName(element).Str() + " name=\"" + name + "\"> is given twice");
    }
  }

  Configuration Result(const std::string& cad) {
    Configuration configuration;
    configuration.object =
        ZYMMakeComponent<FileConfiguration>(cad, identifier_, std::move(types_), std::move(relationships_));
    if (commands_.Size() > 0) {
      configuration.context = ZYMMakeComponent<FileContext>(commands_);
    }
    return configuration;
  }

  void Allow(const ZYMIDOMElement_var& element, std::initializer_list<std::string_view> known) const {
    ZYMUnicodeStringList names;
    element->getAttributeNames(names);
    for (const ZYMUnicodeString& name : std::as_const(names)) {
      if (std::find(known.begin(), known.end(), name.View()) == known.end()) {
        Refuse("unknown attribute \"" + name.Str() + "\" of <" + NodeName(element).Str() + ">");
      }
    }
  }

  std::string Required(const ZYMIDOMElement_var& element, const char* name) const {
    if (!HasAttribute(element, name)) {
      Refuse("<" + NodeName(element).Str() + "> lacks the attribute \"" + name + "\"");
    }
    return Attribute(element, name).Str();
  }

  [[noreturn]] void Refuse(const std::string& reason) const { throw HostError(UnusableInput, file_ + ": " + reason); }

  std::string file_;
  std::string identifier_;
  Types types_;
  Types relationships_;
  ZYMUnicodeStringList commands_;
};

}  // namespace

Configuration ReadConfiguration(const std::string& file) { return Reader(file).Read(); }

}  // namespace lrd
