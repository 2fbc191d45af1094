#pragma once

#include <pugixml.hpp>
#include <string>

#include "platform/QELIVARDOSGlobalConfigObject.h"
#include "platform/ZYMIDOM.h"

/// What a client brings when it calls the module.
namespace Client {

/// A Creo client, whose objects are told apart by their file names.
QELIVARDOSGlobalConfigObject_var Configuration();
ZYMIDOMDocument_var Parse(const std::string& file);
ZYMIDOMElement_var RootOf(const ZYMIDOMDocument_var& document);
/// The tree as pugixml reads what the module's side writes.
void Copy(const ZYMIDOMDocument_var& from, pugi::xml_document& to);

}  // namespace Client
