// What the module tells the framework when it is loaded, in the order of ZYMLoadOrder, and takes back when it is
// unloaded.

#include "component/QELXIVARDOSLRDXMLHandler.h"
#include "component/QELXIVARDOSRecognitionHandler.h"
#include "platform/ZYMFillDictionary.h"
#include "platform/ZYMLoadOrder.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"

namespace {

struct InterfaceRegistration {
  InterfaceRegistration() {
    QELXIVARDOSLRDObject::MetaObject();
    QELXIVARDOSLRDXMLHandler::MetaObject();
    QELXIVARDOSRecognitionHandler::MetaObject();
  }
};

// Named without the vocabulary, which is not loaded yet.
constexpr const char* HandlerClass = "QELXVARDOSRecognitionHandler";
constexpr auto Create = &CreateBOAQELXIVARDOSRecognitionHandlerQELXVARDOSRecognitionHandler;

struct CreationRegistration {
  CreationRegistration() {
    QELXVARDOSRecognitionHandler::MetaObject();
    ZYMFillDictionary::RegisterFunctionCreation(HandlerClass, Create);
  }
  ~CreationRegistration() { ZYMFillDictionary::UnregisterFunctionCreation(HandlerClass, Create); }
  CreationRegistration(const CreationRegistration&) = delete;
  CreationRegistration& operator=(const CreationRegistration&) = delete;
};

ZYM_LOADED_AS(InterfaceMetaObjects) const InterfaceRegistration Interfaces;
ZYM_LOADED_AS(CreationFunctions) const CreationRegistration Creation;

}  // namespace
