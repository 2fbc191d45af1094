#pragma once

#include "platform/ZYMIDOM.h"
#include "records/QELXVARDOSLRDConstants.h"

/// The first "info" below an element. info is null when there is none.
struct InfoSearch {
  static InfoSearch Below(const ZYMIDOMElement_var& root) {
    InfoSearch result;
    ZYMIDOMNodeList_var found;
    result.search = root->getElementsByTagName(Word::Info, found);
    if (found) {
      result.item = found->item(0, result.info);
    }
    return result;
  }

  HRESULT search = S_OK;
  HRESULT item = S_OK;
  ZYMIDOMNode_var info;
};
