#pragma once

#include <string>
#include <utility>

#include "component/QELXIVARDOSLRDObject_varZYMUnicodeStringDico.h"
#include "records/QELXVARDOSChildLRDObject.h"
#include "records/QELXVARDOSCompositionLRDObject.h"
#include "records/QELXVARDOSFullLRDObject.h"
#include "records/QELXVARDOSLRDFactory.h"
#include "records/QELXVARDOSRelLRDObject.h"
#include "tests/support/Trees.h"

using Record = QELXIVARDOSLRDObject_var;
using Records = QELXIVARDOSLRDObject_varList;
using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

/// The four elements that every record file must have, and those of later formats.
inline std::string Core(const std::string& phid = "P", const std::string& stamp = "100",
                        const std::string& later = "") {
  return "<phid>" + phid + "</phid><objectChangeStamp>" + stamp + "</objectChangeStamp><ceStamp>CE</ceStamp>" + later +
         "<hashcode>H</hashcode>";
}
inline const std::string Macro = "<macroceStamp>M</macroceStamp>";
inline const std::string MacroAndXS = Macro + "<xsStamp>XS</xsStamp>";

/// A record of that class from an object's element.
template <typename Class, typename... Arguments>
Record Made(const std::string& xml, Arguments&&... arguments) {
  return ZYMMakeComponent<Class>(ZYMIDOMNode_var(Tree(xml)), std::forward<Arguments>(arguments)...);
}
inline Record FullV4(const std::string& xml) { return Made<QELXVARDOSFullLRDObject_V4>(xml, ZYMUnicodeString("4.0")); }
inline Record Plain(const std::string& xml = "<o/>") { return Made<QELXVARDOSLRDObject>(xml); }

/// A record of that class from an element of a record file; nested records are not read.
inline Record FromFile(const std::string& className, const ZYMIDOMNode_var& element) {
  Record record;
  bool fromFile = true;
  EXPECT_EQ(QELXVARDOSLRDFactory().CreateObject(className, element, fromFile, record), S_OK);
  return record;
}
inline Record FromFile(const std::string& className, const std::string& xml) { return FromFile(className, Tree(xml)); }

/// What the record writes.
inline std::string Xml(const Record& record) {
  ZYMIDOMElement_var element;
  EXPECT_EQ(record->GetXMLFormat({}, element), S_OK);
  return Text(element);
}

/// The strings of a list, each followed by a blank.
inline std::string Joined(const ZYMUnicodeStringList& list) {
  std::string joined;
  for (const ZYMUnicodeString& text : list) {
    joined += text.Str() + " ";
  }
  return joined;
}
inline std::string Phids(const Records& records) {
  std::string phids;
  for (const Record& record : records) {
    phids += record->GetPhysicalId().Str() + " ";
  }
  return phids;
}

/// Every field of the record that is not empty.
inline std::string Fields(const Record& record) {
  std::string fields;
  const std::pair<const char*, ZYMUnicodeString> all[] = {
      {"phid", record->GetPhysicalId()},
      {"stamp", record->GetObjectChangeStamp()},
      {"ce", record->GetCEStamp()},
      {"macro", record->GetMacroCEStamp()},
      {"xs", record->GetXSStamp()},
      {"hash", record->GetHashcode()},
      {"version", record->GetVersion()},
      {"id", record->GetId()},
      {"childPhid", record->GetChildPhid()},
      {"cadid", record->GetCadId()},
      {"type", record->GetType()},
      {"mxtype", record->GetMxType()},
      {"selected", record->GetSelectedFlag()},
      {"origin", record->GetCadOrigin()},
      {"top", record->GetTopNode()},
      {"members", Joined(record->GetCompositionList())},
      {"flags", std::string(record->GetWriteFlag() ? "write" : "") + (record->GetStateFlag() ? "state" : "")}};
  for (const auto& [name, value] : all) {
    fields += value.IsEmpty() ? "" : (fields.empty() ? "" : " ") + std::string(name) + "=" + value.Str();
  }
  return fields;
}
