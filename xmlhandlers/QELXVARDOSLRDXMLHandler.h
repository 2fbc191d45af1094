#pragma once

#include <cstdint>
#include <vector>

#include "component/QELXIVARDOSLRDXMLHandler.h"
#include "platform/QELIVARDOSGlobalConfigObject.h"
#include "platform/QELVARDOSPath.h"
#include "xmlhandlers/RecordFileReader.h"
#include "xmlhandlers/RecordFileWriter.h"

class CompositionMembers;

/// The base of all XML handlers and the handler of plain commands: reads and writes record files, and turns the lists
/// and the structure of a tree into linked records. A handler serves one call sequence of one caller.
class QELXVARDOSLRDXMLHandler : public QELXIVARDOSLRDXMLHandler {
  ZYM_DECLARE_COMPONENT(QELXVARDOSLRDXMLHandler);

 public:
  /// Without a configuration: for record files alone.
  QELXVARDOSLRDXMLHandler();
  /// Keeps a reference to the configuration. When no document builder can be made, both constructors report a failed
  /// check and go on without; the first read or write raises ZYMNullHandleError.
  explicit QELXVARDOSLRDXMLHandler(const QELIVARDOSGlobalConfigObject_var& config);
  ~QELXVARDOSLRDXMLHandler() override;

  HRESULT ReadLRDFile(const ZYMUnicodeString& path, QELXIVARDOSLRDObject_var& record) override;
  /// E_NOTIMPL: the handler of a plain command only reads.
  HRESULT CreateOrUpdateLRD(const ZYMIDOMNode_var& root,
                            const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) override;
  HRESULT GetLRDObjects(const ZYMIDOMNode_var& root, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) override;
  void SetObserver(QELXIVARDOSObserver* observer) override { observer_ = observer; }

  /// Keeps to the limits of a configuration, null for the usual ones, without using it for anything else.
  void SetLimitsOf(const QELIVARDOSGlobalConfigObject_var& config);
  /// Reads record files as this handler does.
  RecordFileReader Reader() const;
  /// Writes each record to its file, whose folder must exist. Every file is replaced in whole or stays; all that are
  /// written are durable together. What cannot be written is traced and does not stop the others. 0, or E_ABORT when
  /// the observer ended it.
  HRESULT WriteToFile(const QELXIVARDOSLRDObject_varList& records);
  /// Makes and hides the record folder of each selected record that has a file of its own. The status is that of the
  /// last folder that had to be made, so a later success hides an earlier failure.
  HRESULT CreateAndHideLRDFolder(const QELXIVARDOSLRDObject_varList& records);

  /// The records of the first "cadobjectlist" below root, by CAD id, compositions prepared. Always 0.
  HRESULT ReadCadObjectNode(const ZYMIDOMNode_var& root, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records);
  /// The relationship records of the first "relationshiplist" below root, by "rid".
  HRESULT ReadRelationshipListNode(const ZYMIDOMNode_var& root,
                                   QELXIVARDOSLRDObject_varZYMUnicodeStringDico& relationships);
  /// A record for each element of list that is no derived output; of equal keys the last stays.
  HRESULT GetCadIdLrdObject(const ZYMIDOMNode_var& root, const ZYMIDOMNode_var& list,
                            QELXIVARDOSLRDObject_varZYMUnicodeStringDico& out);
  /// Whether the element's type, or without a type its relationship type, is one of a derived output.
  bool IsDerivedOutputLike(const ZYMIDOMElement_var& element);
  /// Gives each composition record to the records of its members. A member without record raises ZYMNullHandleError.
  HRESULT PrepareComposition(const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records);
  /// Links the records along the first "structure" below root.
  HRESULT PrepareStructure(const ZYMIDOMNode_var& root, const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records,
                           const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& relationships);
  /// Links what stands below node to it, innermost first; node itself is linked to nothing. outer is not used. Always
  /// 0.
  HRESULT BuildStructureUnderNode(const ZYMIDOMNode_var& node, const ZYMIDOMNode_var& outer,
                                  const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records,
                                  const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& relationships);
  /// The same for one object, and then links it to its parent.
  HRESULT Build(const ZYMIDOMNode_var& object, const ZYMIDOMNode_var& parent,
                const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records,
                const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& relationships);
  /// Links the records of object and parent through the first "relationship" below object. E_FAIL when a record is
  /// missing.
  HRESULT createRelationship(const ZYMIDOMNode_var& object, const ZYMIDOMNode_var& parent,
                             const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records,
                             const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& relationships);

 protected:
  /// Brings the stamps of those records up to date that are selected, have a file of their own and are not the
  /// platform's, and writes them, folders included. 0, or E_ABORT when the observer ended it.
  static void ComputeStamps(const QELXIVARDOSLRDObject_varList& records);
  HRESULT WriteSelected(const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records);

 private:
  class StructureWalk;

  /// What came of making record folders.
  struct Folders {
    HRESULT status = S_OK;
    /// The new ones, with the folders above them that were made for them.
    std::vector<QELVARDOSPath> made;
    RefusedFolders refused;
  };
  static Folders MakeFolders(const QELXIVARDOSLRDObject_varList& records);
  HRESULT WriteToFile(const QELXIVARDOSLRDObject_varList& records, const RefusedFolders& refused);

  void CreateBuilder(int line);
  HRESULT Link(const ZYMIDOMElement_var& object, const ZYMIDOMNode_var& parent, const ZYMIDOMElement_var& relationship,
               const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records,
               const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& relationships, CompositionMembers& members);

  QELIVARDOSGlobalConfigObject_var config_;
  ZYMIXMLDOMDocumentBuilder_var builder_;
  QELXIVARDOSObserver* observer_ = nullptr;
  std::uint64_t largestRecordFile_ = QELIVARDOSGlobalConfigObject::UsualLargestRecordFile;
};
