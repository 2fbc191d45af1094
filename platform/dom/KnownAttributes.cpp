#include "platform/dom/KnownAttributes.h"

#include <cstring>
#include <string_view>

namespace ZYMDom {

pugi::xml_attribute KnownAttributes::Find(pugi::xml_node element, const char* name) {
  if (element_ != element) {
    element_ = element;
    count_ = 0;
  }
  const std::string_view initials(initials_.data(), count_);
  for (std::size_t i = 0; (i = initials.find(*name, i)) != std::string_view::npos; ++i) {
    if (std::strcmp(attributes_[i].name, name) == 0) {
      return attributes_[i].attribute;
    }
  }
  pugi::xml_attribute next =
      count_ == 0 ? element.first_attribute() : attributes_[count_ - 1].attribute.next_attribute();
  for (; next; next = next.next_attribute()) {
    const char* const found = next.name();
    Know({found, next});
    if (*found == *name && std::strcmp(found, name) == 0) {
      return next;
    }
  }
  return {};
}

pugi::xml_attribute KnownAttributes::Add(pugi::xml_node element, const char* name) {
  const pugi::xml_attribute added = element.append_attribute(name);
  Know({added.name(), added});
  return added;
}

void KnownAttributes::Know(const Attribute& attribute) {
  if (count_ < Most) {
    initials_[count_] = *attribute.name;
    attributes_[count_] = attribute;
    ++count_;
  }
}

}  // namespace ZYMDom
