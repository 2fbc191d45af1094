#pragma once

#include <string>

#include "platform/ZYMIDOM.h"
#include "recognition/QELXVARDOSRecognitionFactory.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestConfiguration.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

/// A client with all that is its own: a folder with the files of two objects, one above the other, the answer to their
/// check-out, a request for both, and the objects to serve these with. It touches nothing that clients share.
class Client {
 public:
  /// ceStamp: what the server told of the first object.
  explicit Client(const std::string& ceStamp = "CE") {
    folder.PutFile("a.prt", 100);
    folder.PutFile("b.prt", 200);
    folder.Put("answer.xml",
               "<response cname='checkoutEx'><info>" +
                   Objects("phid='A' selected='true' ceStamp='" + ceStamp + "'", "phid='B' selected='true'") +
                   "</info></response>");
    folder.Put("request.xml", "<command cname='synclocalrecognition'>" + Objects("", "") + "</command>");
  }

  ZYMIDOMElement_var Root(const std::string& file) const {
    ZYMIDOMDocument_var document;
    ZYMIDOMElement_var root;
    EXPECT_EQ(Builder()->Parse(folder.At(file), {}, {}, document), S_OK);
    document->getDocumentElement(root);
    return root;
  }
  static std::string TextOf(const ZYMIDOMNode_var& node) {
    std::string text;
    Builder()->Serialize(node, [&text](std::string_view piece) { return !(text += piece).empty(); });
    return text;
  }

  HRESULT RecordAnswer(const ZYMIDOMElement_var& answer) const {
    const Records none;
    return Handler("checkoutEx", answer)->CreateOrUpdateLRD(answer, none);
  }
  HRESULT Recognize(const ZYMIDOMElement_var& request) const {
    Records records;
    return Handler("synclocalrecognition", request)->Recognize(request, records);
  }
  HRESULT ReadRecord(const std::string& path, QELXIVARDOSLRDObject_var& record) const {
    QELXIVARDOSLRDXMLHandler_var reader;
    QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(config_, reader);
    return reader->ReadLRDFile(path, record);
  }

  ScratchFolder folder;

 private:
  using Records = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

  static ZYMIXMLDOMDocumentBuilder_var Builder() {
    ZYMIXMLDOMDocumentBuilder_var builder;
    CreateZYMIXMLDOMDocumentBuilder(builder);
    return builder;
  }
  QELXIVARDOSRecognitionHandler_var Handler(const char* command, const ZYMIDOMElement_var& root) const {
    QELXIVARDOSRecognitionHandler_var handler;
    QELXVARDOSRecognitionFactory().GetRecognitionHandler(command, config_, root, handler);
    return handler;
  }
  std::string Objects(const std::string& ofA, const std::string& ofB) const {
    const auto object = [this](const std::string& name, const std::string& attributes) {
      return "<cadobject cadid='" + name + "' type='part' filename='" + name + ".prt' dirname='" + folder.Root() +
             "' " + attributes + "/>";
    };
    return "<cadobjectlist>" + object("a", ofA) + object("b", "familyid='a' " + ofB) +
           "</cadobjectlist><relationshiplist><relationship rid='1' reluuid='U' phid='R' topnode='dpt'/>"
           "</relationshiplist><structure><cadobject cadid='a'><cadobject cadid='b'><relationship rid='1'/>"
           "</cadobject></cadobject></structure>";
  }

  QELIVARDOSGlobalConfigObject_var config_ = ZYMMakeComponent<TestConfiguration>();
};
