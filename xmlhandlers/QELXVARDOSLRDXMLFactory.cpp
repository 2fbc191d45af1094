#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

#include <array>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "xmlhandlers/QELXVARDOSLRDCadObjDetailsResponseXMLHandler.h"
#include "xmlhandlers/QELXVARDOSLRDCheckinExResponseXMLHandler.h"
#include "xmlhandlers/QELXVARDOSLRDCheckoutExPathXMLHandler.h"
#include "xmlhandlers/QELXVARDOSLRDCheckoutExXMLHandler.h"
#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

QELXVARDOS_TRACED_HERE;

namespace {

using Handler = QELXIVARDOSLRDXMLHandler_var;
using Config = QELIVARDOSGlobalConfigObject_var;

template <typename Class>
Handler Make(const Config& config) {
  return ZYMMakeComponent<Class>(config);
}

struct Served {
  const ZYMUnicodeString& rootName;
  const ZYMUnicodeString& command;
  Handler (*make)(const Config& config);
};

// Which handler serves which tree; the first that fits. A new response is a row.
const std::array<Served, 8> ServedTrees = {{
    {Word::Command, Word::CheckinEx, Make<QELXVARDOSLRDXMLHandler>},
    {Word::Command, Word::CadObjDetails, Make<QELXVARDOSLRDXMLHandler>},
    {Word::Command, Word::LockUnlockEx, Make<QELXVARDOSLRDXMLHandler>},
    {Word::Response, Word::CheckinEx, Make<QELXVARDOSLRDCheckinExResponseXMLHandler>},
    {Word::Response, Word::CadObjDetails, Make<QELXVARDOSLRDCadObjDetailsResponseXMLHandler>},
    {Word::Response, Word::CheckoutEx, Make<QELXVARDOSLRDCheckoutExXMLHandler>},
    {Word::Response, Word::SyncLocalRecognition, Make<QELXVARDOSLRDCheckoutExXMLHandler>},
    {Word::Response, Word::CheckoutExPath, Make<QELXVARDOSLRDCheckoutExPathXMLHandler>},
}};

ZYMUnicodeString CommandOf(const ZYMIDOMElement_var& root) {
  const bool byPath = Attribute(root, Word::Mode).Matches(Word::Path);
  return byPath ? Word::CheckoutExPath : Attribute(root, Word::CName);
}

// The joined strings are compared, so a root and a command that only together spell a key are served too.
Handler HandlerFor(const ZYMUnicodeString& key, const Config& config) {
  for (const Served& served : ServedTrees) {
    if (key.Matches(served.rootName + served.command)) {
      return served.make(config);
    }
  }
  return {};
}

}  // namespace

HRESULT QELXVARDOSLRDXMLFactory::GetLRDXMLHandler(const QELIVARDOSGlobalConfigObject_var& config,
                                                  QELXIVARDOSLRDXMLHandler_var& handler) {
  const Step step(Trace, "QELXVARDOSLRDXMLFactory::GetLRDXMLHandler");
  handler = Make<QELXVARDOSLRDXMLHandler>(config);
  Trace.Write("xml handler of type : ", handler);
  return step.Return(S_OK);
}

HRESULT QELXVARDOSLRDXMLFactory::GetLRDXMLHandler(const QELIVARDOSGlobalConfigObject_var& config,
                                                  const ZYMIDOMNode_var& node, QELXIVARDOSLRDXMLHandler_var& handler) {
  const Step step(Trace, "QELXVARDOSLRDXMLFactory::GetLRDXMLHandler");
  const ZYMUnicodeString name = NodeName(node);
  if (const ZYMIDOMElement_var root(node); root) {
    if (const Handler made = HandlerFor(name + CommandOf(root), config); made) {
      handler = made;
    }
  }
  if (handler) {
    Trace.Write("xml handler of type : ", handler);
  }
  return step.Return(S_OK);
}
