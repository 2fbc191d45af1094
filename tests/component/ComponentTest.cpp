#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "component/QELXIVARDOSLRDXMLHandler.h"
#include "component/QELXIVARDOSRecognitionHandler.h"
#include "platform/ZYMFillDictionary.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"

using testing::HasSubstr;
using testing::ThrowsMessage;

namespace {

class ComponentTest : public ModuleTest {};

Record Named(const std::string& cadId) { return Plain("<o cadid='" + cadId + "'/>"); }

std::string CadIds(const Records& records) {
  std::string ids;
  for (const Record& record : records) {
    ids += (record.IsNull() ? "null" : record->GetCadId().Str()) + " ";
  }
  return ids;
}

std::string Keys(const RecordMap& map) {
  std::string keys;
  for (auto key = map.begin_key(); key != map.end_key(); ++key) {
    keys += key->Str() + " ";
  }
  return keys;
}

TEST_F(ComponentTest, a_handle_narrows_to_what_the_component_offers_and_a_null_handle_names_its_interface) {
  const Record record = Named("a");
  const ZYMBaseUnknown_var component(record);
  EXPECT_EQ(Record(component), record);
  EXPECT_TRUE(QELXIVARDOSLRDXMLHandler_var(component).IsNull() && ZYMIDOMNode_var(record).IsNull());
  EXPECT_THAT([] { Record()->GetId(); }, ThrowsMessage<ZYMNullHandleError>(HasSubstr("QELXIVARDOSLRDObject")));
  EXPECT_THAT([] { *ZYMIDOMElement_var(); }, ThrowsMessage<ZYMNullHandleError>(HasSubstr("ZYMIDOMElement")));

  void* object = nullptr;
  ASSERT_EQ(record->QueryInterface(QELXIVARDOSLRDObject::ClassId(), &object), S_OK);
  EXPECT_EQ(object, static_cast<ZYMBaseUnknown*>(record.Get()));
  ASSERT_EQ(record->QueryInterface("ZYMBaseUnknown", &object), S_OK);
  EXPECT_EQ(record->Release(), 3U) << "each has added a reference";
  EXPECT_EQ(record->Release(), 2U);
  for (const char* name : {"QELXVARDOSLRDObject", "QELXIVARDOSRecognitionHandler", ""}) {
    object = &object;
    EXPECT_EQ(record->QueryInterface(name, &object), E_FAIL) << name;
    EXPECT_EQ(object, nullptr);
  }
  EXPECT_EQ(record->QueryInterface(QELXIVARDOSRecognitionHandler::ClassId(), &object), E_FAIL);
}

TEST_F(ComponentTest, a_record_is_of_the_kinds_of_its_class_its_bases_and_the_interface_and_of_no_other) {
  std::vector<std::string> names;
  for (const std::string kind : {"Full", "Child", "Composition", "Rel"}) {
    for (const std::string version : {"", "_V1", "_V2", "_V3", "_V4"}) {
      names.push_back(std::string("QELXVARDOS").append(kind).append("LRDObject").append(version));
    }
  }
  int classes = 0;
  for (const std::string& name : names) {
    const Record record = FromFile(name, "<object>" + Core() + "</object>");
    if (record.IsNull()) {
      continue;
    }
    ++classes;
    const std::string family = name.substr(0, name.find("_V"));
    std::set<std::string> kinds = {name, family};
    if (family != name && family != "QELXVARDOSRelLRDObject") {
      kinds.insert(family + "_V1");
    }
    EXPECT_EQ(record->IsA(), name);
    for (const std::string& other : names) {
      EXPECT_EQ(record->IsAKindOf(other.c_str()), kinds.contains(other)) << name << " " << other;
    }
    EXPECT_TRUE(record->IsAKindOf("QELXVARDOSLRDObject") && record->IsAKindOf("QELXIVARDOSLRDObject"));
    EXPECT_FALSE(record->IsAKindOf("QELXIVARDOSLRDXMLHandler"));
  }
  EXPECT_EQ(classes, 12);
}

TEST_F(ComponentTest, a_handler_is_created_by_name_with_one_reference_and_works_without_a_configuration) {
  EXPECT_EQ(ZYMCreateByName("QELXVARDOSLRDXMLHandler"), nullptr);
  const auto handler =
      QELXIVARDOSRecognitionHandler_var(ZYMBaseUnknown_var::Adopt(ZYMCreateByName("QELXVARDOSRecognitionHandler")));
  EXPECT_EQ(handler->AddRef(), 2U);
  EXPECT_EQ(handler->Release(), 1U);
  const ZYMIDOMElement_var request = Tree("<command><cadobjectlist><cadobject phid='1'/></cadobjectlist></command>");
  RecordMap records;
  EXPECT_EQ(handler->Recognize(request, records), S_OK);
  EXPECT_THAT(Text(request), HasSubstr("status=\"EXISTS\""));
}

TEST_F(ComponentTest, a_list_counts_from_one_and_passes_over_positions_out_of_range) {
  Records list;
  EXPECT_TRUE(list.Pop().IsNull() && list.Peek().IsNull());
  list.Push(Named("b"));
  list.Prepend(Named("a"));
  list.InsertAt(0, Named("x"));
  list.InsertAt(4, Named("x"));
  list.InsertAt(3, Named("c"));
  list.AppendList(list);
  for (const int position : {-1, 0, 7}) {
    EXPECT_TRUE(list[position].IsNull());
    list.RemovePosition(position);
  }
  list.RemovePosition(1);
  EXPECT_EQ(list.Pop()->GetCadId(), "c");
  EXPECT_EQ(list.Peek()->GetCadId(), "b");
  EXPECT_EQ(CadIds(list), "b c a b ");
}

TEST_F(ComponentTest, lists_and_dictionaries_take_what_lies_in_themselves) {
  Records list{Named("a"), Named("b"), Named("c")};
  RecordMap map;
  for (const Record& record : list) {
    record->AddChild(Named("below " + record->GetCadId().Str()));
    map.Insert(record->GetCadId(), record);
  }
  for (int count = 0; count < 9; ++count) {
    list.Append(list.begin()[0]);
    list.Prepend(list.begin()[2]);
    list.InsertAt(2, list.begin()[1]);
  }
  list.AppendList(list);
  EXPECT_EQ(list.Size(), 60);
  for (const Record& record : std::as_const(list)) {
    ASSERT_EQ(record->GetChildren().Size(), 1);
  }
  list.RemoveAll();
  map.Insert("d", *map.Find("a"));
  map.Insert(map.begin()->first, map.begin()->second);
  map.Insert(*map.begin_key(), *map.Find("a"));
  EXPECT_EQ(Keys(map), "c d a b ");
  EXPECT_EQ(map["b"]->GetCadId(), "a");
  map.Insert("c", *map["c"]->GetChildren().begin());
  EXPECT_EQ(map["c"]->GetCadId(), "below c");
  EXPECT_TRUE(map.Erase(map.begin()->first));
  EXPECT_EQ(Keys(map), "a b c ");

  // Only the list itself holds the record whose list it becomes.
  list.Append(Named("parent"));
  list[1]->AddChild(Named("child"));
  list = (*list.begin())->GetChildren();
  EXPECT_EQ(CadIds(list), "child ");
}

TEST_F(ComponentTest, locate_finds_the_first_equal_component_in_short_and_long_lists_whatever_changed_before) {
  for (const int size : {3, 1000}) {
    Records list;
    for (int number = 0; number < size; ++number) {
      list.Append(Named("same"));
    }
    const std::vector<Record> records(list.begin(), list.begin() + 3);
    list.Append(nullptr);
    list.Append(records[1]);
    EXPECT_EQ(list.Locate(records[1]), 2);
    *list.begin() = records[1];
    EXPECT_EQ(list.Locate(records[1]), 1);
    EXPECT_EQ(list.Locate(records[0]), 0);
    EXPECT_EQ(list.Locate(records[1], 3), size + 2);
    EXPECT_EQ(list.Locate(nullptr), size + 1);
    list.RemovePosition(1);
    list.Prepend(records[0]);
    EXPECT_EQ(list.Locate(records[2]), 3);
    list.begin()[0] = records[2];
    EXPECT_EQ(list.Locate(records[2]), 1);
    const Records copy = list;
    list.Sort();
    EXPECT_EQ(list.Locate(nullptr), 1);
    EXPECT_EQ(copy.Locate(nullptr), size + 1);
    list.RemoveAll();
    EXPECT_EQ(list.Locate(nullptr), 0);
  }
}

TEST_F(ComponentTest, sorting_puts_nulls_first_then_orders_by_cad_id_physical_id_and_hash_code) {
  Records sorted;
  Records list;
  for (const char* const xml :
       {"<o/>", "<o hashcode='2'/>", "<o phid='1' hashcode='9'/>", "<o cadid='B' phid='5'/>",
        "<o cadid='a' phid='10' hashcode='3'/>", "<o cadid='a' phid='9'/>", "<o cadid='aa'/>"}) {
    sorted.Append(Plain(xml));
    list.Prepend(sorted.Peek());
  }
  sorted.Append(Plain("<o cadid='aa'/>"));
  list.Append(sorted.Peek());
  for (int nulls = 0; nulls < 2; ++nulls) {
    sorted.Prepend(nullptr);
    list.Append(nullptr);
  }
  list.Sort();
  EXPECT_TRUE(list == sorted) << CadIds(list);
}

TEST_F(ComponentTest, a_dictionary_iterates_in_the_order_of_insertion_and_a_replaced_key_moves_to_the_end) {
  RecordMap map(1);
  for (const char* key : {"b", "", "a", "c"}) {
    map.Insert(key, Named(key));
  }
  const Record replacement = Named("new");
  map.Insert(*map.begin_key(), replacement);
  map.InsertDico(map);
  EXPECT_EQ(Keys(map), " a c b ");
  EXPECT_EQ(map["b"], replacement);
  RecordMap other;
  other.Insert("z", Named("z"));
  other.Insert("a", replacement);
  map.InsertDico(other);
  EXPECT_EQ(Keys(map), " c b z a ");
  EXPECT_EQ(map["a"], replacement);
  EXPECT_TRUE(map["none"].IsNull());
  EXPECT_FALSE(map.HasKey("none") || map.Erase("none"));
  EXPECT_TRUE(map.Erase(""));
  const RecordMap copy = map;
  map.RemoveAll();
  EXPECT_EQ(Keys(copy) + Keys(map), "c b z a ");
}

TEST_F(ComponentTest, strings_compare_exactly_but_where_they_are_told_to_ignore_ascii_case) {
  for (const auto& [a, b, compared] : Rows<3>{{"", "", "2"},
                                              {"x", "x", "2"},
                                              {"CadObject", "cADoBJECT", "1"},
                                              {"a", "aa", "0"},
                                              {"ä", "Ä", "0"},
                                              {"[", "{", "0"}}) {
    EXPECT_EQ(std::to_string(ZYMUnicodeString(a).Compare(b)), compared) << a << " " << b;
  }
  EXPECT_LT(ZYMUnicodeString("Z").SortCompare("a"), 0);
  EXPECT_GT(ZYMUnicodeString("ä").SortCompare("z"), 0);
}

TEST_F(ComponentTest, a_string_is_built_from_a_number_in_integer_formats_and_stays_for_any_other) {
  ZYMUnicodeString built;
  for (const auto& [format, text] : Rows<2>{
           {"%I64d", "-9223372036854775808"}, {"<%lld>", "<-9223372036854775808>"}, {"%I64x", "8000000000000000"}}) {
    EXPECT_EQ(built.BuildFromNum(INT64_MIN, format.c_str()), S_OK);
    EXPECT_EQ(built, text);
  }
  for (const char* format : {"", "5", "%s", "%d %d", "%", "%n", "%%", "%f", "%*d"}) {
    EXPECT_EQ(built.BuildFromNum(1, format), E_FAIL) << format;
    EXPECT_EQ(built, "8000000000000000");
  }
}

ZYMBaseUnknown* MakeNothing() { return nullptr; }
class Something : public ZYMBaseUnknown {};
ZYMBaseUnknown* MakeSomething() { return new Something; }

TEST(RegistryTest, of_two_creations_of_one_name_the_one_that_stays_is_in_use) {
  const auto made = [] { return static_cast<bool>(ZYMBaseUnknown_var::Adopt(ZYMCreateByName("Twice"))); };
  ZYMFillDictionary::RegisterFunctionCreation("Twice", MakeSomething);
  ZYMFillDictionary::RegisterFunctionCreation("Twice", MakeNothing);
  EXPECT_FALSE(made());
  ZYMFillDictionary::UnregisterFunctionCreation("Twice", MakeNothing);
  EXPECT_TRUE(made());
  ZYMFillDictionary::RegisterFunctionCreation("Twice", MakeNothing);
  ZYMFillDictionary::RegisterFunctionCreation("Twice", MakeSomething);
  ZYMFillDictionary::UnregisterFunctionCreation("Twice", MakeSomething);
  EXPECT_FALSE(made()) << "the one that was registered last is gone, not the first";
  ZYMFillDictionary::UnregisterFunctionCreation("Twice", MakeNothing);
  ZYMFillDictionary::UnregisterFunctionCreation("Twice", MakeSomething);
  EXPECT_FALSE(made());
}

}  // namespace
